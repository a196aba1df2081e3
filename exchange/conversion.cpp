#include "exchange/conversion.h"

#include <algorithm>
#include <filesystem>

#include "engine/format.h"
#include "engine/text.h"
#include "processing/sort.h"

namespace qv {

namespace {

constexpr const char* kCaption = "Error";
// A kept Unique field's "No Value", numbered once every kept number is known.
constexpr std::uint32_t kNumberLater = 0xFFFFFFFF;

FieldType NewType(std::uint8_t old_type) {
  static constexpr FieldType kMap[kOldFieldTypeCount] = {
      kNotUsed, kText, kInteger, kFloat,  kPopUp, kCheckBox, kDate,
      kTime,    kNote, kHeading, kUnique, kLink,  kLinked,   kRelationship};
  return old_type < kOldFieldTypeCount ? kMap[old_type] : kNotUsed;
}

// Whether a Unique, Link or Linked field keeps its old values (numbers stored as text).
bool AskKeepData(const OldField& field, Prompter& prompter) {
  const char* question = nullptr;
  const char* note = "(Note: The values must be unique numbers for this to convert properly.)";
  switch (NewType(field.type)) {
    case kUnique:
      question = kKeepUniqueData;
      break;
    case kLink:
      question = kKeepLinkData;
      break;
    case kLinked:
      question = kKeepLinkedData;
      note =
          "(Note: The values must be numbers that relate to the link field for this to "
          "convert properly.)";
      break;
    default:
      return false;
  }
  // The question speaks of "this field": the caption names it.
  return prompter.ask(StringPrintf("%s\n%s", question, note), Cp1252ToUtf8(field.name),
                      Buttons::YesNo, Icon::Question) == Answer::Yes;
}

void ConvertSettings(const OldDatabase& old, Database& db, std::vector<bool>& keep,
                     Prompter& prompter) {
  DatabaseDefinition& d = db.definition();
  for (std::size_t i = 0; i < old.fields.size(); ++i) {
    const OldField& f = old.fields[i];
    FieldDefinition field = d.field(static_cast<int>(i));
    field.set_type(NewType(f.type));
    field.set_length(f.length ? f.length : 40);
    field.set_width(f.width);
    field.bytes()[5] = f.shown ? 1 : 0;
    field.set_name(f.name);
    if (f.type == kOldFloat) field.settings()[0] = f.decimals;
    if (!f.other_database.empty()) PutCString(field.settings(), 40, f.other_database);
    keep[i] = AskKeepData(f, prompter);
  }
  for (int k = 0; k < 3; ++k) d.set_sort_key(k, {old.sort[k].field, old.sort[k].forward});
}

bool ConvertPopupLists(const OldDatabase& old, Database& db) {
  bool ok = true;
  for (std::size_t i = 0; i < old.fields.size(); ++i) {
    if (old.fields[i].type != kOldPopUp) continue;
    auto items = DecodeOldPopupList(old.popup_records[i]);
    if (!items) {
      ok = false;
      continue;
    }
    db.schema.fields[i].SetItems(*items);
  }
  return ok;
}

std::optional<std::uint32_t> Digits(const Bytes& value) {
  if (value.empty() || value.size() > 10) return std::nullopt;
  std::uint64_t n = 0;
  for (std::uint8_t c : value) {
    if (c < '0' || c > '9') return std::nullopt;
    n = n * 10 + (c - '0');
  }
  if (n > 0xFFFFFFFFu) return std::nullopt;
  return static_cast<std::uint32_t>(n);
}

Bytes LinkedValue(std::uint32_t key) {
  Bytes v(24, 0);
  PutLE32(v.data(), key);
  v.push_back(0);  // no shown text yet
  return v;
}

// One old value in the new layout; nothing when its bytes cannot be a value of its type. An
// empty old value ("No Value") becomes the type's empty value.
std::optional<Bytes> ConvertValue(const OldField& field, const Bytes& v, bool keep,
                                  std::uint32_t record_index) {
  const std::string_view text(reinterpret_cast<const char*>(v.data()), v.size());
  switch (field.type) {
    case kOldText:
    case kOldFloat:
    case kOldPopUp:
    case kOldNote:
      if (std::find(v.begin(), v.end(), 0) != v.end()) return std::nullopt;
      return TextValue(text);
    case kOldRelationship:
      return TextValue("");
    case kOldHeading:
      return Bytes{};
    case kOldInteger:
      if (v.empty()) return Int32Value(0);
      if (v.size() != 4) return std::nullopt;
      return Int32Value(static_cast<std::int32_t>(GetBE32(v.data())));
    case kOldCheckBox:
      if (v.size() > 1) return std::nullopt;
      return CheckValue(!v.empty() && v[0] != 0);
    case kOldDate: {
      if (v.empty()) return UInt32Value(0);
      if (v.size() != 2) return std::nullopt;
      const unsigned packed = GetBE16(v.data());
      if (packed == 0) return UInt32Value(0);
      Dmy d{static_cast<int>(packed & 31), static_cast<int>((packed >> 5) & 15),
            static_cast<int>(packed >> 9) + 1904};
      if (d.day < 1 || d.month < 1 || d.month > 12) return std::nullopt;
      return UInt32Value(DmyToDateNumber(d));
    }
    case kOldTime:
      if (v.empty()) return TimeValue(255, 0, 0);
      if (v.size() != 2 || (v[0] != 255 && (v[0] > 23 || v[1] > 59))) return std::nullopt;
      return TimeValue(v[0], v[0] == 255 ? 0 : v[1], 0);
    case kOldUnique:
    case kOldLink:
    case kOldLinked: {
      std::uint32_t n = 0;
      if (keep && !v.empty()) {
        auto digits = Digits(v);
        if (!digits) return std::nullopt;
        n = *digits;
      } else if (field.type == kOldUnique) {
        // Fresh numbers, one per record; beside kept numbers, numbered after the largest.
        n = keep ? kNumberLater : record_index;
      }
      return field.type == kOldLinked ? LinkedValue(n) : UInt32Value(n);
    }
    default:
      return std::nullopt;
  }
}

void NumberEmptyUniqueValues(Database& db, int slot) {
  std::uint32_t largest = 0;
  bool any = false;
  for (const RecordSlot& r : db.records) {
    const std::uint32_t n = ValueUInt32(ValueBytes(r.data, slot));
    if (n != kNumberLater) {
      largest = std::max(largest, n);
      any = true;
    }
  }
  std::uint32_t next = any ? largest + 1 : 0;
  for (RecordSlot& r : db.records)
    if (ValueUInt32(ValueBytes(r.data, slot)) == kNumberLater)
      r.data = ReplaceValue(r.data, db.definition(), slot, UInt32Value(next++));
}

bool ConvertRecords(const OldDatabase& old, Database& db, const std::vector<bool>& keep) {
  bool ok = true;
  for (const Bytes& record : old.data_records) {
    auto values = DecodeOldRecord(record, old.fields.size());
    if (!values) {
      ok = false;
      continue;
    }
    RecordValues converted;
    bool good = true;
    for (std::size_t i = 0; i < old.fields.size() && good; ++i) {
      auto v = ConvertValue(old.fields[i], (*values)[i], keep[i], db.count());
      if (v) converted.Set(static_cast<int>(i), std::move(*v));
      good = v.has_value();
    }
    if (!good || !StoreRecord(db, converted, kNewRecord)) ok = false;
  }
  for (std::size_t i = 0; i < old.fields.size(); ++i)
    if (keep[i] && old.fields[i].type == kOldUnique)
      NumberEmptyUniqueValues(db, static_cast<int>(i));
  return ok;
}

// The old file's bytes with its header name turned into "<name>-Old".
Bytes OldCopyImage(Bytes image, const std::string& old_name) {
  Header header = DecodeHeader(image.data());
  header.SetName(old_name);
  auto encoded = EncodeHeader(header);
  std::copy(encoded.begin(), encoded.begin() + 32, image.begin());
  return image;
}

}  // namespace

ConvertedDatabase ConvertInMemory(const OldDatabase& old, Prompter& prompter, const Clock& clock) {
  ConvertedDatabase out;
  out.db = NewDatabase(old.header.Name(), clock);
  Database& db = *out.db;
  db.header.creation_date = old.header.creation_date;
  std::vector<bool> keep(old.fields.size(), false);
  ConvertSettings(old, db, keep, prompter);
  out.popups_ok = ConvertPopupLists(old, db);
  if (!out.popups_ok)
    prompter.message("Error: Converting old popup lists to new format", kCaption, Icon::Error);
  out.records_ok = ConvertRecords(old, db, keep);
  if (!out.records_ok)
    prompter.message("Error: Converting old records to new format", kCaption, Icon::Error);
  SortDatabase(db, false, prompter);
  return out;
}

std::string OldCopyPath(const std::string& path, const std::string& name) {
  return (std::filesystem::path(path).parent_path() / (name + "-Old.PDB")).string();
}

std::optional<std::string> ParentToConvertFirst(const std::string& path) {
  auto image = ReadWholeFile(path);
  if (!image) return std::nullopt;
  auto old = ReadOldDatabase(*image);
  if (!old) return std::nullopt;
  for (const OldField& f : old->fields) {
    if (f.type != kOldRelationship || f.other_database.empty()) continue;
    auto parent = FindDatabaseByName(f.other_database, path);
    if (parent && *parent != path && IsOlderFormatFile(*parent)) return parent;
  }
  return std::nullopt;
}

int ConvertOldDatabase(const std::string& path, Prompter& prompter, const Clock& clock,
                       bool* complete) {
  if (complete) *complete = false;
  auto image = ReadWholeFile(path);
  if (image && !LooksLikeOlderFormat(*image)) {
    prompter.message(kNotOlderFormat, kCaption, Icon::Error);
    return 0;
  }
  auto old = image ? ReadOldDatabase(*image) : std::nullopt;
  if (!old) {
    prompter.message("Error: Cannot open old Quorvant PDB file", kCaption, Icon::Error);
    return 0;
  }
  const std::string name = old->header.Name();
  const std::string old_path = OldCopyPath(path, name);
  // An earlier old copy is never overwritten.
  if (TestForFile(old_path)) {
    prompter.message("Error: Cannot create Old Quorvant PDB file storage", kCaption, Icon::Error);
    return 0;
  }
  prompter.busy(true);
  ConvertedDatabase converted = ConvertInMemory(*old, prompter, clock);
  Database* db = converted.db.get();
  db->path = path;
  const bool popups_ok = converted.popups_ok, records_ok = converted.records_ok;
  // The old copy first: once the new file replaces the old one, the old bytes live on in it.
  const bool saved =
      WriteFileAtomically(old_path, OldCopyImage(*image, name + "-Old")) == WriteResult::Written &&
      SaveDatabase(*db, clock);
  prompter.busy(false);
  if (!saved) {
    std::error_code ignored;
    std::filesystem::remove(old_path, ignored);
    prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
    return 0;
  }
  if (popups_ok && records_ok)
    prompter.message("Conversion Successful!", "Update", Icon::Information);
  if (complete) *complete = popups_ok && records_ok;
  return 1;
}

bool OfferConversion(const std::string& path, Prompter& prompter, const Clock& clock) {
  if (prompter.ask(kConversionOffer, "QUESTION", Buttons::YesNo, Icon::Question) != Answer::Yes)
    return false;
  if (auto parent = ParentToConvertFirst(path)) {
    prompter.message(StringPrintf(kConvertParentFirst, parent->c_str()), "Error", Icon::Error);
    return false;
  }
  return ConvertOldDatabase(path, prompter, clock) == 1;
}

}  // namespace qv
