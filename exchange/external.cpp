#include "exchange/external.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/text.h"
#include "include/quorvant/external.h"

namespace qv {

namespace {

std::string LibraryFile(std::string_view name) {
  return "lib" + std::string(name) + ".so";
}

bool IsFile(const std::string& path) {
  struct stat st {};
  return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// The data folder's plugins/ first, so a user's own build wins; then the system's library
// path (a bare file name makes the dynamic loader search it).
void* OpenPlugin(const PluginPlaces& places, std::string_view name) {
  if (!ValidPluginName(name)) return nullptr;
  const std::string file = LibraryFile(name);
  if (!places.data_folder.empty()) {
    const std::string own = places.data_folder + "/plugins/" + file;
    if (IsFile(own))
      if (void* handle = dlopen(own.c_str(), RTLD_NOW | RTLD_LOCAL)) return handle;
  }
  return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

template <typename Entry>
Entry LookUp(void* library, const char* name) {
  return reinterpret_cast<Entry>(dlsym(library, name));
}

const char* EntryName(int event) {
  switch (event) {
    case kInitExternal:
      return "INITEXTERNAL";
    case kSaveExternal:
      return "SAVEEXTERNAL";
    case kSelectExternal:
      return "SELECTEXTERNAL";
    default:
      return nullptr;
  }
}

void PutText(char* out, std::size_t size, std::string_view text) {
  PutCString(reinterpret_cast<std::uint8_t*>(out), size, text);
}

// The schema part both blocks share: field slot, database name, every slot's type and name.
template <typename Block>
void FillSchema(Block& block, int field, const Database& db) {
  block.field = field;
  PutText(block.database, sizeof block.database, db.header.Name());
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    ConstFieldDefinition f = db.definition().field(slot);
    block.types[slot] = static_cast<std::int32_t>(f.type());
    PutText(block.names[slot], sizeof block.names[slot], f.name());
  }
}

bool TextLike(unsigned type) {
  switch (type) {
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
    case kFloat:
    case kCalculated:
    case kPopUp:
    case kExternal:
    case kRelationship:
      return true;
    default:
      return false;
  }
}

// A buffer as the value it now holds: texts up to their NUL (one is put at the end of a full
// buffer), a Linked block's text likewise after its 24 bytes, every other type the whole buffer.
Bytes BufferValue(unsigned type, const Bytes& buffer) {
  std::size_t start = type == kLinked ? std::min<std::size_t>(24, buffer.size()) : 0;
  if (!TextLike(type) && type != kLinked) return buffer;
  if (start == buffer.size()) return buffer;
  const auto* text = buffer.data() + start;
  std::size_t room = buffer.size() - start;
  std::size_t length = std::min(CStringAt(text, room).size(), room - 1);
  Bytes value(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(start + length));
  value.push_back(0);
  return value;
}

}  // namespace

bool ValidPluginName(std::string_view name) {
  return !name.empty() && name.size() < field_settings::kPluginNameSize &&
         name.find_first_of("/\\") == std::string_view::npos;
}

int CallExternal(const PluginPlaces& places, int field, int event, const Database& db,
                 std::uint16_t position, RecordValues& record) {
  if (field < 0 || field >= kFieldSlots) return 0;
  const char* entry_name = EntryName(event);
  if (entry_name == nullptr) return 0;
  ConstFieldDefinition external = db.definition().field(field);
  // Deliberately never unloaded: plug-ins may keep state from record to record, and a record
  // editor calls them for every record it shows.
  void* library = OpenPlugin(places, PluginName(external));
  if (library == nullptr) return 0;
  auto entry = LookUp<QvExternalRecordEntry>(library, entry_name);
  if (entry == nullptr) return 0;

  auto block = std::make_unique<QvExternalRecord>();  // zero-filled
  const PluginSettings settings = GetPluginSettings(external);
  block->setting = static_cast<std::int32_t>(settings.setting);
  block->byte_setting = settings.byte_setting;
  std::copy_n(settings.config.begin(), sizeof block->data, block->data);
  FillSchema(*block, field, db);
  PutText(block->database2, sizeof block->database2, db.header.Name());
  block->position = position;
  std::vector<Bytes> buffers(kFieldSlots);
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    Bytes& buffer = buffers[static_cast<std::size_t>(slot)];
    buffer.assign(LargestValueSize(db.definition().field(slot)), 0);
    const Bytes& value = record.values[static_cast<std::size_t>(slot)];
    std::copy_n(value.begin(), std::min(value.size(), buffer.size()), buffer.begin());
    block->values[slot] = buffer.empty() ? nullptr : buffer.data();
    block->sizes[slot] = static_cast<std::uint32_t>(buffer.size());
  }
  const std::vector<Bytes> given = buffers;

  if (entry(block.get()) == 0 || block->changed == 0) return 0;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    const auto i = static_cast<std::size_t>(slot);
    // Buffers the plug-in left alone keep their stored bytes exactly (an empty value stays
    // empty rather than becoming a buffer of zeros).
    if (buffers[i].empty() || buffers[i] == given[i]) continue;
    record.Set(slot, BufferValue(db.definition().field_type(slot), buffers[i]));
  }
  return 1;
}

bool CallExternalFields(const PluginPlaces& places, int event, const Database& db,
                        std::uint16_t position, RecordValues& record) {
  bool changed = false;
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db.definition().field_type(slot) == kExternal)
      changed = CallExternal(places, slot, event, db, position, record) == 1 || changed;
  return changed;
}

int ConfigureExternal(const PluginPlaces& places, int field, std::string_view name,
                      const Database& db, PluginSettings& settings, Prompter& prompter) {
  void* library = OpenPlugin(places, name);
  if (library == nullptr) {
    prompter.message(
        StringPrintf("Could not locate or open Plug-in: %s to configure External field type",
                     Cp1252ToUtf8(name).c_str()),
        "Error", Icon::Error);
    return 0;
  }
  auto entry = LookUp<QvExternalConfigEntry>(library, "CONFIGEXTERNAL");
  if (entry != nullptr) {
    auto block = std::make_unique<QvExternalConfig>();
    block->setting = static_cast<std::int32_t>(settings.setting);
    block->byte_setting = settings.byte_setting;
    std::copy(settings.config.begin(), settings.config.end(), block->config);
    FillSchema(*block, field, db);
    if (entry(block.get()) != 0) {
      settings.setting = static_cast<std::uint32_t>(block->setting);
      settings.byte_setting = block->byte_setting;
      std::copy_n(block->config, settings.config.size(), settings.config.begin());
    }
  }
  dlclose(library);
  return 1;
}

}  // namespace qv
