#include "engine/database.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>

#include "engine/field_settings.h"
#include "engine/format.h"
#include "engine/save_journal.h"
#include "engine/text.h"

namespace qv {

std::uint32_t FileTimeNow(const Clock& clock) {
  return static_cast<std::uint32_t>(clock.LocalNow() + kEpoch1904To1970);
}

std::unique_ptr<Database> NewDatabase(std::string_view name, const Clock& clock) {
  auto db = std::make_unique<Database>();
  db->name = std::string(name);
  db->header.SetName(name);
  std::memcpy(db->header.type.data(), "DATA", 4);
  std::memcpy(db->header.creator.data(), "Qvnt", 4);
  db->header.creation_date = db->header.modification_date = FileTimeNow(clock);
  db->header.unique_id_seed = kSchemaRecords + 1;
  db->schema = NewSchema();
  db->loaded = true;
  return db;
}

ReadError ParseDatabase(std::span<const std::uint8_t> image, Database& db,
                        std::uint32_t& bad_record) {
  return ParseDatabase(std::make_shared<const FileBytes>(image), db, bad_record);
}

namespace {

ReadError ParseParts(const FileImage& image, std::size_t file_size, LoadParts parts, Database& db,
                     std::uint32_t& bad_record) {
  ParseResult parsed =
      parts == LoadParts::All ? ParseContainer(image) : ParseContainerStart(image, file_size);
  if (!parsed.file) {
    bad_record = parsed.bad_record;
    return parsed.error;
  }
  auto schema = DecodeSchema(parsed.file->records);
  if (!schema) return ReadError::CannotRead;
  db.header = parsed.file->header;
  db.schema = std::move(*schema);
  db.records = std::move(parsed.file->data);
  db.name = db.header.Name();
  db.changed = false;
  db.current = 0;
  db.visible.clear();
  return ReadError::None;
}

// The start of a file up to its first data record: the header, the list and the schema records.
std::optional<FileBytes> ReadSchemaStart(const std::string& path, std::size_t& file_size,
                                     FileStamp& stamp) {
  stamp = StampOf(path);
  // The header with the entries up to the first data record's, then all that is needed at once.
  const std::size_t entries_end = kHeaderSize + kEntrySize * (kSchemaRecords + 1);
  auto start = ReadFileStart(path, entries_end, file_size);
  if (!start || start->size() < kHeaderSize) return start;  // the parse names the fault
  const std::size_t count = GetBE16(start->data() + 76);
  if (count <= kSchemaRecords) return ReadFileStart(path, file_size, file_size);
  const std::size_t list_end = kHeaderSize + kEntrySize * count;
  if (start->size() < entries_end) return start;
  std::size_t first_data = GetBE32(start->data() + kHeaderSize + kEntrySize * kSchemaRecords);
  return ReadFileStart(path, std::max(first_data, list_end), file_size);
}

}  // namespace

ReadError ParseDatabase(const FileImage& image, Database& db, std::uint32_t& bad_record) {
  return ParseParts(image, image->size(), LoadParts::All, db, bad_record);
}

bool LoadDatabase(Database& db, const std::string& path, Prompter& prompter, LoadParts parts) {
  if (!TestForFile(path)) {
    prompter.message(StringPrintf("ERROR: Cannot Open File: %s for reading", path.c_str()), "Error",
                     Icon::Error);
    return false;
  }
  FileStamp stamp;
  std::size_t file_size = 0;
  std::optional<FileBytes> bytes;
  if (parts == LoadParts::All) {
    bytes = ReadFileImage(path, kMaxFileSize, &stamp);
  } else {
    bytes = ReadSchemaStart(path, file_size, stamp);
  }
  if (!bytes) {
    prompter.message("Could not initialize file", "Error", Icon::Error);
    return false;
  }
  if (parts == LoadParts::All) file_size = bytes->size();
  Database fresh;
  std::uint32_t bad_record = 0;
  auto image = std::make_shared<const FileBytes>(std::move(*bytes));
  switch (ParseParts(image, file_size, parts, fresh, bad_record)) {
    case ReadError::None:
      break;
    case ReadError::BadHeader:
      prompter.message(
          "ERROR: Reading header!\nMake sure you are converting a Quorvant data file!\n", "Error",
          Icon::Error);
      return false;
    case ReadError::CannotInitialize:
      prompter.message("Could not initialize file", "Error", Icon::Error);
      return false;
    case ReadError::BadRecord:
      prompter.message(StringPrintf("ERROR:Reading Record: %d", static_cast<int>(bad_record)),
                       "Error", Icon::Error);
      [[fallthrough]];
    case ReadError::CannotRead:
      prompter.message("Could not read file", "Error", Icon::Error);
      return false;
  }
  fresh.path = path;
  fresh.loaded = true;
  fresh.disk = stamp;
  if (parts == LoadParts::All) {
    fresh.image = image;
    fresh.image_of = stamp;
  }
  fresh.lock = std::move(db.lock);  // a lock the caller took before reading stays with it
  db = std::move(fresh);
  if (parts == LoadParts::All) RemoveStaleTemporaries(path);  // not for a quick look
  return true;
}

ContainerLayout LayOutDatabase(const Database& db, std::vector<RawRecord>& schema) {
  schema.clear();
  EncodeSchema(db.schema, db.changed, schema);
  return LayOutContainer(db.header, schema, db.records);
}

Bytes SerializeDatabase(const Database& db) {
  std::vector<RawRecord> schema;
  return JoinPieces(LayOutDatabase(db, schema));
}

namespace {

// The first place from `at` on where `bytes` and `old` differ (the size of `bytes` if none).
// Blocks are compared with memcmp first: a byte loop over the 520 KB record list of a large
// database took a quarter of a millisecond of every save in place.
std::size_t FirstDifference(std::span<const std::uint8_t> bytes, const std::uint8_t* old,
                            std::size_t at) {
  constexpr std::size_t kBlock = 256;
  while (at + kBlock <= bytes.size() && std::memcmp(bytes.data() + at, old + at, kBlock) == 0)
    at += kBlock;
  while (at < bytes.size() && bytes[at] == old[at]) ++at;
  return at;
}

// The ranges where a layout differs from the image the file was read into, when the file keeps
// its size and they are few and small: such a save is written in place (PatchFileInPlace).
// Records still viewing the image at their old offset are skipped without comparing.
std::optional<std::vector<FilePatch>> PatchesAgainst(const ContainerLayout& layout,
                                                     const FileBytes& image, std::uint64_t disk_size) {
  constexpr std::size_t kJoinGap = 64;  // nearby differences go into one range
  constexpr std::size_t kMostRanges = 256;
  const std::size_t most_bytes = std::max<std::size_t>(64 << 10, image.size() / 16);
  if (layout.size() != image.size() || image.size() != disk_size) return std::nullopt;
  std::vector<FilePatch> patches;
  std::size_t changed = 0;
  std::size_t offset = 0;
  for (const auto& piece : layout.pieces) {
    const std::uint8_t* old = image.data() + offset;
    if (piece.data() != old) {
      for (std::size_t i = 0; i < piece.size();) {
        std::size_t start = FirstDifference(piece, old, i);
        if (start == piece.size()) break;
        std::size_t end = start + 1;
        for (std::size_t same = 0; end < piece.size() && same < kJoinGap; ++end)
          same = piece[end] == old[end] ? same + 1 : 0;
        while (end > start + 1 && piece[end - 1] == old[end - 1]) --end;
        patches.push_back({offset + start, piece.subspan(start, end - start)});
        changed += end - start;
        if (patches.size() > kMostRanges || changed > most_bytes) return std::nullopt;
        i = end;
      }
    }
    offset += piece.size();
  }
  return patches;
}

}  // namespace

bool SaveDatabase(Database& db, const Clock& clock, SaveOutcome* outcome) {
  SaveOutcome local;
  SaveOutcome& out = outcome ? *outcome : local;
  out = SaveOutcome{};
  // Another qvdb command is waited for; a program that keeps the file while it has changes is not.
  constexpr std::chrono::seconds kPatience{5};
  if (!db.lock.Holds(db.path) &&
      LockForUpdate(db.lock, db.path, kPatience, &out.holder) == FileLock::Result::Busy) {
    out.result = WriteResult::CannotOpen;
    out.in_use = true;
    return false;
  }
  db.header.modification_date = FileTimeNow(clock);
  std::vector<RawRecord> schema;
  ContainerLayout layout = LayOutDatabase(db, schema);
  const FileStamp* expected = db.disk.path == db.path ? &db.disk : nullptr;
  std::optional<WriteOutcome> patched;
  if (expected && db.image && db.image_of.SameFile(*expected))
    if (auto patches = PatchesAgainst(layout, *db.image, expected->size))
      patched = PatchFileInPlace(db.path, *patches, *expected);
  WriteOutcome written = patched ? *patched : SaveFileAtomically(db.path, layout.pieces, expected);
  db.lock.Unlock();  // it was on the file just replaced
  out.result = written.result;
  out.error = written.error;
  if (written.result == WriteResult::Written) {
    db.disk = written.stamp;
    db.image.reset();  // no longer what is on disk
    // A journal left beside the file it replaced must not meet a later file of the same inode.
    if (!patched) ::unlink(JournalPath(SaveTarget(db.path)).c_str());
  }
  // Cleared whenever the file could be opened, even if writing then failed: deliberate, kept.
  if (written.result == WriteResult::Failed || written.result == WriteResult::Written)
    db.changed = false;
  return written.result == WriteResult::Written;
}

std::string SaveFailureText(const SaveOutcome& outcome, const std::string& path) {
  const char* file = path.c_str();
  if (outcome.in_use) {
    std::string who = outcome.holder ? outcome.holder->Describe() : "another program";
    return StringPrintf(
        "%s is in use by %s, which has changes to it not yet saved; nothing was "
        "written.",
        file, who.c_str());
  }
  switch (outcome.result) {
    case WriteResult::Written:
      return {};
    case WriteResult::CannotOpen:
      return StringPrintf("Cannot open %s for writing: %s.", file, std::strerror(outcome.error));
    case WriteResult::ChangedOnDisk:
      return StringPrintf(
          "%s was changed by another program after it was opened; it was not "
          "overwritten. Save under another name to keep these changes.",
          file);
    case WriteResult::Failed:
      break;
  }
  return StringPrintf("Writing %s failed: %s. The file on disk is unchanged.", file,
                      std::strerror(outcome.error));
}

// Identifiers only need to differ; one past the largest in use, found once per open database.
std::uint32_t TakeRecordUid(Database& db) {
  if (db.next_uid == 0) {
    std::uint32_t uid = kSchemaRecords;
    for (const RecordSlot& r : db.records) uid = std::max(uid, r.uid);
    db.next_uid = uid + 1;
  }
  return db.next_uid++ & 0xFFFFFF;
}

namespace {

Bytes DefaultValue(const Database& db, int slot) {
  ConstFieldDefinition field = db.definition().field(slot);
  auto preset = FieldDefault(field);
  if (!preset.empty()) return Bytes(preset.begin(), preset.end());
  if (field.type() != kUnique) return EmptyValue(field.type());
  std::uint32_t next = UniqueStart(field);
  for (const RecordSlot& r : db.records) {
    auto v = ValueBytes(r.data, slot);
    if (v.size() >= 4) next = std::max(next, ValueUInt32(v) + 1);
  }
  return UInt32Value(next);
}

}  // namespace

Bytes EmptyValue(unsigned type) {
  switch (type) {
    case kInteger:
    case kUnique:
    case kDate:
    case kLink:
      return UInt32Value(0);
    case kCheckBox:
      return CheckValue(false);
    case kTime:
      return TimeValue(255, 0, 0);
    case kImage:
      return Bytes{0};
    case kHeading:
      return Bytes{};
    case kLinked:
      return Bytes(25, 0);
    default:
      return TextValue("");
  }
}

RecordValues DefaultValues(const Database& db) {
  RecordValues values;
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db.definition().field(slot).used()) values.Set(slot, DefaultValue(db, slot));
  return values;
}

std::optional<std::uint32_t> StoreRecord(Database& db, const RecordValues& values,
                                         std::uint32_t number) {
  if (number == kNewRecord || number >= db.count()) {
    if (db.count() >= kMaxDataRecords) return std::nullopt;
    RecordSlot slot;
    slot.uid = TakeRecordUid(db);
    db.records.push_back(std::move(slot));
    number = db.count() - 1;
  }
  db.records[number].data = EncodeRecord(db.definition(), values);
  db.changed = true;
  return number;
}

void MoveRecord(Database& db, std::uint32_t from, std::uint32_t to) {
  if (from >= db.count()) return;
  auto begin = db.records.begin();
  if (to >= db.count()) {
    std::rotate(begin + from, begin + from + 1, db.records.end());
  } else if (from >= to) {
    std::rotate(begin + to, begin + from, begin + from + 1);
  } else {
    std::rotate(begin + from, begin + from + 1, begin + to);
  }
  db.changed = true;
}

void DeleteRecord(Database& db, std::uint32_t number) {
  if (number >= db.count()) return;
  db.records.erase(db.records.begin() + number);
  if (db.current >= db.count() && db.current > 0) db.current = db.count() ? db.count() - 1 : 0;
  db.changed = true;
}

void CloseDatabase(Database& db) {
  db.records.clear();
  db.records.shrink_to_fit();
  db.visible.clear();
  db.loaded = false;
}

void RebuildVisibleList(Database& db,
                        const std::function<bool(const Database&, std::uint32_t)>& passes) {
  db.visible.clear();
  for (std::uint32_t i = 0; i < db.count(); ++i)
    if (passes(db, i)) db.visible.push_back(i);
}

void ShowAllRecords(Database& db) {
  RebuildVisibleList(db,
                     [](const Database& d, std::uint32_t i) { return !d.records[i].data.empty(); });
}

std::string RecordValueText(const Database& db, std::uint32_t number, int slot,
                            const FormatOptions& options) {
  if (number >= db.count() || db.records[number].data.empty() || slot < 0 || slot >= kFieldSlots)
    return "<no record>";
  ConstFieldDefinition field = db.definition().field(slot);
  return FormatValue(field, ValueBytes(db.records[number].data, slot), options);
}

std::vector<int> UsedFieldsInDisplayOrder(const DatabaseDefinition& definition) {
  std::vector<int> slots;
  for (int pos = 0; pos < kFieldSlots; ++pos) {
    int slot = definition.display_slot(pos);
    if (slot < kFieldSlots && definition.field(slot).used()) slots.push_back(slot);
  }
  return slots;
}

}  // namespace qv
