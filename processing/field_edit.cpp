#include "processing/field_edit.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>

#include "engine/field_settings.h"
#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/conditional.h"
#include "processing/filter.h"
#include "processing/formula.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "processing/views.h"
#include "security/record_header.h"

namespace qv {

namespace {

std::string Quoted(const DatabaseDefinition& definition, int slot) {
  return "'" + definition.field(slot).name() + "'";
}

bool IsTextType(unsigned type) {
  return type == kText || type == kNote || type == kDbPopup || type == kExternal;
}

// Types whose stored value is a text read as it stands.
bool HoldsText(unsigned type) {
  return IsTextType(type) || type == kFloat || type == kPopUp || type == kCalculated ||
         type == kConditional;
}

// Types whose values the user cannot enter: converting data into them keeps nothing.
bool KeepsNoData(unsigned type) {
  return type == kHeading || type == kCalculated || type == kConditional || type == kLink ||
         type == kLinked || type == kRelationship;
}

bool IsEmptyValue(unsigned type, std::span<const std::uint8_t> v) {
  if (v.empty()) return true;
  switch (type) {
    case kInteger:
    case kUnique:
    case kDate:
    case kLink:
      return ValueUInt32(v) == 0;
    case kCheckBox:
      return v[0] == 0;
    case kTime:
      return v.size() < 3 || v[2] == 255;
    case kImage:
      return v[0] == 0;
    case kHeading:
    case kRelationship:
      return true;
    case kLinked:
      return v.size() < 25 || (ValueUInt32(v) == 0 && v[24] == 0);
    default:
      return v[0] == 0;
  }
}

enum class Outcome { Kept, Altered, Lost };

struct Converted {
  Bytes value;
  Outcome outcome = Outcome::Kept;
};

std::string SourceText(ConstFieldDefinition from, std::span<const std::uint8_t> v,
                       const FormatOptions& options) {
  if (from.type() == kLinked) return v.size() > 24 ? std::string(ValueText(v.subspan(24))) : "";
  if (HoldsText(from.type())) return std::string(ValueText(v));
  return FormatValue(from, v, options);
}

Converted CutText(std::string text, std::size_t limit) {
  if (text.size() <= limit) return {TextValue(text), Outcome::Kept};
  text.resize(limit);
  return {TextValue(text), Outcome::Altered};
}

// One value of field `from` as a value of field `to`.
Converted ConvertValue(ConstFieldDefinition from, ConstFieldDefinition to, const FieldRecord& items,
                       std::span<const std::uint8_t> v, const FormatOptions& options) {
  const unsigned target = to.type();
  if (IsEmptyValue(from.type(), v)) return {EmptyValue(target), Outcome::Kept};
  if (KeepsNoData(target) || (target == kImage) != (from.type() == kImage))
    return {EmptyValue(target), Outcome::Lost};
  if (target == kImage) return {Bytes(v.begin(), v.end()), Outcome::Kept};
  // A date's text reads as a time of its first number, and the other way round: never kept.
  if ((from.type() == kDate && target == kTime) || (from.type() == kTime && target == kDate))
    return {EmptyValue(target), Outcome::Lost};
  std::string text = SourceText(from, v, options);
  if (IsTextType(target)) return CutText(text, std::max<std::size_t>(LargestValueSize(to), 2) - 1);
  const bool stored_number = from.type() == kFloat || from.type() == kCalculated;
  if (stored_number && (target == kInteger || target == kUnique)) {
    // Stored decimals always use "."; whole numbers are kept, others rounded.
    char* end = nullptr;
    double d = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || !std::isfinite(d)) return {EmptyValue(target), Outcome::Lost};
    double r = std::nearbyint(d);
    if (r < (target == kUnique ? 0.0 : -2147483648.0) ||
        r > (target == kUnique ? 4294967295.0 : 2147483647.0))
      return {EmptyValue(target), Outcome::Lost};
    Bytes out = target == kUnique ? UInt32Value(static_cast<std::uint32_t>(r))
                                  : Int32Value(static_cast<std::int32_t>(r));
    return {out, r == d ? Outcome::Kept : Outcome::Altered};
  }
  if (stored_number && options.decimal_comma)
    for (char& c : text)
      if (c == '.') c = ',';
  if (target == kPopUp && items.texts.empty()) return CutText(text, 13);
  if (auto parsed = ParseValue(to, items, text, options)) return {*parsed, Outcome::Kept};
  return {EmptyValue(target), Outcome::Lost};
}

bool BodyEnciphered(const RecordSlot& r) {
  auto header = ReadRecordHeader(r.data);
  return header && header->has(kRecordBodyEnciphered);
}

bool FieldsEnciphered(const RecordSlot& r) {
  auto header = ReadRecordHeader(r.data);
  return header && header->has(kRecordFieldsEnciphered);
}

// The refusal of a change to the values of `slot` while records hold them enciphered.
std::string EncipheredRefusal(const Database& db, int slot) {
  std::uint32_t body = 0, fields = 0;
  const bool marked = slot >= 0 && db.definition().field(slot).encrypted();
  for (const RecordSlot& r : db.records) {
    if (BodyEnciphered(r)) ++body;
    if (marked && FieldsEnciphered(r)) ++fields;
  }
  if (body > 0)
    return std::to_string(body) + " records are enciphered; decipher the database first.";
  if (fields > 0)
    return "Field " + Quoted(db.definition(), slot) + " is enciphered in " +
           std::to_string(fields) + " records; decipher them first.";
  return "";
}

bool ValidSlot(const Database& db, int slot) {
  return slot >= 0 && slot < kFieldSlots && db.definition().field(slot).used();
}

// Sort keys, conditions and formulas that name a slot ------------------------------------

// Removes the sort keys naming `slot` from three 2-byte entries, moving later keys up.
bool DropSortKey(std::uint8_t* entries, int slot) {
  bool dropped = false;
  for (int k = 0; k < kSortKeys;) {
    if (entries[2 * k] != slot) {
      ++k;
      continue;
    }
    for (int j = k; j + 1 < kSortKeys; ++j) {
      entries[2 * j] = entries[2 * j + 2];
      entries[2 * j + 1] = entries[2 * j + 3];
    }
    entries[2 * (kSortKeys - 1)] = 0xFF;
    entries[2 * (kSortKeys - 1) + 1] = 1;
    dropped = true;
  }
  return dropped;
}

// Clears the conditions on `slot` among six condition blocks.
bool DropConditions(std::uint8_t* blocks, int slot) {
  bool dropped = false;
  for (int i = 0; i < kConditions; ++i) {
    std::uint8_t* block = blocks + kConditionSize * i;
    Condition c = Condition::Read(block);
    if (c.in_use == 0 || c.field != slot) continue;
    Condition cleared;
    cleared.upper = 65000;
    cleared.Write(block);
    dropped = true;
  }
  return dropped;
}

struct Fixups {
  bool sorts = true;       // drop sort keys on the slot
  bool conditions = true;  // clear conditions on the slot
  bool formulas = false;   // clear formulas and conditional references to the slot
};

// Applies (or, on a copy, finds) the fix-ups for `slot`, naming each.
std::vector<std::string> FixReferences(DatabaseDefinition& d, int slot, Fixups what) {
  std::vector<std::string> notes;
  const std::string name = Quoted(d, slot);
  if (what.sorts && DropSortKey(d.data() + def::kSort, slot))
    notes.push_back("the sort on " + name + " is removed");
  if (what.conditions && DropConditions(d.data() + def::kFilter, slot))
    notes.push_back("the filter conditions on " + name + " are cleared");
  std::uint32_t views = std::min<std::uint32_t>(d.view_count(), kMaxViews);
  for (std::uint32_t v = 0; v < views; ++v) {
    std::uint8_t* block = d.view_block(static_cast<int>(v));
    bool sort = what.sorts && DropSortKey(block + view::kSortKeys, slot);
    bool cond = what.conditions && DropConditions(block + view::kFilter, slot);
    if (sort || cond)
      notes.push_back("view '" + std::string(CStringAt(block, 32)) +
                      "' no longer sorts or filters on " + name);
  }
  if (!what.formulas) return notes;
  for (int other = 0; other < kFieldSlots; ++other) {
    if (other == slot) continue;
    FieldDefinition f = d.field(other);
    if (f.type() == kCalculated) {
      FormulaProgram program = LoadFormulaProgram(d, other);
      bool uses = false;
      for (int t = 0; t < program.count && t < kMaxFormulaTokens; ++t) {
        const FormulaToken& token = program.tokens[static_cast<std::size_t>(t)];
        if (token.kind != kFieldOperand) continue;
        int operand = token.integer > 0 ? token.integer - 1 : -token.integer - 1;
        uses = uses || operand == slot;
      }
      if (uses) {
        f.bytes()[formula::kCount] = 0;
        f.bytes()[formula::kRefers] = 0;
        notes.push_back("the formula of " + Quoted(d, other) + " uses " + name + " and is cleared");
      }
    } else if (f.type() == kConditional) {
      ConditionalSettings s = ConditionalSettings::Read(f);
      bool uses = s.test_field == slot || s.then_field == slot || s.else_field == slot;
      if (s.test_field == slot) s.test_field = -1;
      if (s.then_field == slot) s.then_field = -1;
      if (s.else_field == slot) s.else_field = -1;
      if (uses) {
        s.Write(f);
        notes.push_back("the conditional field " + Quoted(d, other) + " no longer reads " + name);
      }
    }
  }
  if (d.data()[def::kFindField] == slot) d.data()[def::kFindField] = 255;
  return notes;
}

bool TypeCannotBeSortKey(unsigned type) {
  return type == kImage || type == kLink || type == kHeading;
}

// A new type starts with a fresh slot's settings: a formula's operands and constants, a
// conditional's texts or a default value of the old type would be read as something else.
// The name, length, list width, flags A and B and the encrypt flag stay.
void ResetTypeSettings(FieldDefinition f, int slot) {
  const Schema fresh = NewSchema();
  const std::uint8_t* clean = fresh.definition.field(slot).bytes();
  std::uint8_t* p = f.bytes();
  const std::uint8_t keep_encrypted = p[11];
  std::copy(clean + 10, clean + 66, p + 10);
  std::copy(clean + 86, clean + kFieldDefinitionSize, p + 86);
  p[11] = keep_encrypted;
}

// The definition of `slot` with a new type and length, and the fixes a retyping brings.
DatabaseDefinition RetypedDefinition(const DatabaseDefinition& d, int slot, FieldType type,
                                     unsigned length, std::vector<std::string>* notes) {
  DatabaseDefinition out = d;
  Fixups what;
  what.sorts = TypeCannotBeSortKey(type);
  what.conditions = out.field(slot).type() != type;
  auto found = FixReferences(out, slot, what);
  if (notes) *notes = std::move(found);
  FieldDefinition f = out.field(slot);
  if (f.type() != type) ResetTypeSettings(f, slot);
  f.set_type(type);
  if (length > 0) f.set_length(length);
  return out;
}

void Resettle(Database& db, Prompter& prompter) {
  if (db.definition().sort_key(0).field >= 0) {
    ResortAndRecalculate(db, prompter);
  } else {
    RecalculateFrom(db, 0, prompter);
  }
  ClearChangedFlags(db);
  RebuildFilteredList(db);
  db.changed = true;
}

void ResetSlot(Database& db, int slot) {
  const Schema fresh = NewSchema();
  std::copy_n(fresh.definition.field(slot).bytes(), kFieldDefinitionSize,
              db.definition().field(slot).bytes());
  db.schema.fields[static_cast<std::size_t>(slot)].SetItems({});
}

}  // namespace

std::string FieldChangeImpact::Describe(std::string_view field_name) const {
  if (!refusal.empty()) return refusal;
  std::string text;
  const std::string name = "'" + std::string(field_name) + "'";
  if (lost > 0)
    text += std::to_string(lost) + (lost == 1 ? " value of " : " values of ") + name +
            " cannot be kept and will be emptied.\n";
  if (altered > 0)
    text += std::to_string(altered) + (altered == 1 ? " value of " : " values of ") + name +
            " will be shortened or rounded.\n";
  for (const std::string& f : fixups) {
    std::string line = f;
    line[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(line[0])));
    text += line + ".\n";
  }
  return text;
}

std::string FieldNameProblem(const DatabaseDefinition& definition, std::string_view name,
                             int slot) {
  if (name.empty()) return "A field needs a name.";
  if (name.size() > kMaxFieldName) return "A field name has at most 19 characters.";
  auto other = definition.FindField(name);
  if (other && *other != slot) return "Another field is named '" + std::string(name) + "'.";
  return "";
}

int FieldPosition(const DatabaseDefinition& definition, int slot) {
  auto used = UsedFieldsInDisplayOrder(definition);
  for (std::size_t i = 0; i < used.size(); ++i)
    if (used[i] == slot) return static_cast<int>(i);
  return -1;
}

bool MoveField(Database& db, int slot, int position) {
  if (!ValidSlot(db, slot)) return false;
  DatabaseDefinition& d = db.definition();
  std::vector<int> order;
  for (int p = 0; p < kFieldSlots; ++p)
    if (d.display_slot(p) != slot) order.push_back(d.display_slot(p));
  auto used = UsedFieldsInDisplayOrder(d);
  std::erase(used, slot);
  auto at = order.end();
  if (position >= 0 && position < static_cast<int>(used.size()))
    at = std::find(order.begin(), order.end(), used[static_cast<std::size_t>(position)]);
  else if (!used.empty())
    at = std::find(order.begin(), order.end(), used.back()) + 1;
  order.insert(at, slot);
  for (int p = 0; p < kFieldSlots; ++p) d.set_display_slot(p, order[static_cast<std::size_t>(p)]);
  db.changed = true;
  return true;
}

std::optional<int> AddField(Database& db, std::string_view name, FieldType type, unsigned length,
                            int position, std::string& problem) {
  DatabaseDefinition& d = db.definition();
  problem = FieldNameProblem(d, name, -1);
  if (problem.empty() && (type == kNotUsed || type >= kFieldTypeCount))
    problem = "Unknown field type.";
  if (problem.empty() && (length == 0 || length > 2000)) problem = "A field length is 1 to 2000.";
  if (problem.empty()) problem = EncipheredRefusal(db, -1);
  int slot = 0;
  while (slot < kFieldSlots && d.field(slot).used()) ++slot;
  if (problem.empty() && slot == kFieldSlots) problem = "A database holds at most 100 fields.";
  if (!problem.empty()) return std::nullopt;
  ResetSlot(db, slot);
  FieldDefinition f = d.field(slot);
  f.set_type(type);
  f.set_name(name);
  f.set_length(length);
  // Views keep their own column settings per slot; a new field starts with its own.
  for (int v = 0; v < ViewCount(db); ++v)
    std::copy_n(f.bytes() + 4, 4, d.view_block(v) + view::kFieldSettings + 4 * slot);
  MoveField(db, slot, position);
  std::uint32_t next = 0;
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    RecordValues values = DecodeRecord(db.records[i].data);
    values.Set(slot, type == kUnique ? UInt32Value(next++) : EmptyValue(type));
    StoreRecord(db, values, i);
  }
  db.changed = true;
  return slot;
}

std::string RenameField(Database& db, int slot, std::string_view name) {
  if (!ValidSlot(db, slot)) return "No such field.";
  std::string problem = FieldNameProblem(db.definition(), name, slot);
  if (!problem.empty()) return problem;
  db.definition().field(slot).set_name(name);
  db.changed = true;
  return "";
}

FieldChangeImpact AssessTypeChange(const Database& db, int slot, FieldType type, unsigned length,
                                   const FormatOptions& options) {
  FieldChangeImpact impact;
  if (!ValidSlot(db, slot)) {
    impact.refusal = "No such field.";
    return impact;
  }
  if (type == kNotUsed || type >= kFieldTypeCount) {
    impact.refusal = "Unknown field type.";
    return impact;
  }
  if (length > 2000) {
    impact.refusal = "A field length is 1 to 2000.";
    return impact;
  }
  impact.refusal = EncipheredRefusal(db, slot);
  if (!impact.refusal.empty()) return impact;
  DatabaseDefinition next = RetypedDefinition(db.definition(), slot, type, length, &impact.fixups);
  ConstFieldDefinition from = db.definition().field(slot);
  ConstFieldDefinition to = next.field(slot);
  if (from.type() == type && from.length() == to.length()) return impact;
  const FieldRecord& items = db.schema.fields[static_cast<std::size_t>(slot)];
  for (const RecordSlot& r : db.records) {
    Converted c = ConvertValue(from, to, items, ValueBytes(r.data, slot), options);
    if (c.outcome == Outcome::Lost) ++impact.lost;
    if (c.outcome == Outcome::Altered) ++impact.altered;
  }
  return impact;
}

bool ChangeFieldType(Database& db, int slot, FieldType type, unsigned length,
                     const FormatOptions& options, Prompter& prompter) {
  FieldChangeImpact impact = AssessTypeChange(db, slot, type, length, options);
  if (!impact.refusal.empty()) return false;
  DatabaseDefinition next = RetypedDefinition(db.definition(), slot, type, length, nullptr);
  const Bytes old_definition = db.definition().bytes();
  ConstFieldDefinition from(old_definition.data() + def::kFields + kFieldDefinitionSize * slot);
  const FieldRecord& items = db.schema.fields[static_cast<std::size_t>(slot)];
  std::vector<Converted> converted;
  converted.reserve(db.count());
  std::uint32_t next_unique = 0;
  for (const RecordSlot& r : db.records) {
    converted.push_back(
        ConvertValue(from, next.field(slot), items, ValueBytes(r.data, slot), options));
    if (type == kUnique && converted.back().outcome != Outcome::Lost)
      next_unique = std::max(next_unique, ValueUInt32(converted.back().value) + 1);
  }
  db.schema.definition = std::move(next);
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    Converted& c = converted[i];
    // A Unique field numbers the records it could not keep a number for.
    if (type == kUnique && (c.outcome == Outcome::Lost || ValueUInt32(c.value) == 0) &&
        !(from.type() == kUnique))
      c.value = UInt32Value(next_unique++);
    RecordValues values = DecodeRecord(db.records[i].data);
    values.Set(slot, std::move(c.value));
    StoreRecord(db, values, i);
  }
  if (type != kPopUp) db.schema.fields[static_cast<std::size_t>(slot)].SetItems({});
  Resettle(db, prompter);
  return true;
}

FieldChangeImpact AssessDelete(const Database& db, int slot) {
  FieldChangeImpact impact;
  if (!ValidSlot(db, slot)) {
    impact.refusal = "No such field.";
    return impact;
  }
  impact.refusal = EncipheredRefusal(db, slot);
  if (!impact.refusal.empty()) return impact;
  const unsigned type = db.definition().field(slot).type();
  if (!KeepsNoData(type) || type == kLink || type == kLinked)
    for (const RecordSlot& r : db.records)
      if (!IsEmptyValue(type, ValueBytes(r.data, slot))) ++impact.lost;
  DatabaseDefinition copy = db.definition();
  impact.fixups = FixReferences(copy, slot, Fixups{true, true, true});
  for (const std::string& f : impact.fixups)
    if (f.find("is cleared") != std::string::npos) ++impact.altered;
  return impact;
}

bool DeleteField(Database& db, int slot, Prompter& prompter) {
  if (!AssessDelete(db, slot).refusal.empty()) return false;
  DatabaseDefinition& d = db.definition();
  FixReferences(d, slot, Fixups{true, true, true});
  const bool was_lookup = d.lookup_field() == slot;
  ResetSlot(db, slot);
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    RecordValues values = DecodeRecord(db.records[i].data);
    values.values[static_cast<std::size_t>(slot)].clear();
    values.present[static_cast<std::size_t>(slot)] = false;
    StoreRecord(db, values, i);
  }
  if (was_lookup) {
    auto used = UsedFieldsInDisplayOrder(d);
    d.data()[def::kLookupField] = static_cast<std::uint8_t>(used.empty() ? 0 : used.front());
  }
  Resettle(db, prompter);
  return true;
}

void SetPopupItems(Database& db, int slot, const std::vector<std::string>& items) {
  if (!ValidSlot(db, slot)) return;
  db.schema.fields[static_cast<std::size_t>(slot)].SetItems(items);
  db.changed = true;
}

std::string SetDefaultText(Database& db, int slot, std::string_view text,
                           const FormatOptions& options) {
  if (!ValidSlot(db, slot)) return "No such field.";
  FieldDefinition f = db.definition().field(slot);
  if (!TypeTakesDefault(f.type())) return "This type of field has no default value.";
  if (text.empty()) {
    SetFieldDefault(f, {});
    db.changed = true;
    return "";
  }
  auto value = ParseValue(f, db.schema.fields[static_cast<std::size_t>(slot)], text, options);
  if (!value) return "'" + std::string(text) + "' is not a value of this field.";
  if (!SetFieldDefault(f, *value)) return "A default value has at most 28 characters.";
  db.changed = true;
  return "";
}

std::string DefaultText(const Database& db, int slot, const FormatOptions& options) {
  ConstFieldDefinition f = db.definition().field(slot);
  auto value = FieldDefault(f);
  return value.empty() ? std::string() : FormatValue(f, value, options);
}

std::string SetFieldEncrypted(Database& db, int slot, bool on) {
  if (!ValidSlot(db, slot)) return "No such field.";
  FieldDefinition f = db.definition().field(slot);
  if (f.encrypted() == on) return "";
  for (const RecordSlot& r : db.records)
    if (FieldsEnciphered(r) || BodyEnciphered(r))
      return "Records of this database hold enciphered values; decipher them before changing "
             "which fields are encrypted.";
  f.set_encrypted(on);
  db.changed = true;
  return "";
}

void RecalculateAll(Database& db, Prompter& prompter) {
  Resettle(db, prompter);
}

}  // namespace qv
