#include "processing/linked_database.h"

#include <algorithm>
#include <set>

#include "engine/container.h"
#include "engine/field_settings.h"
#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/store.h"

namespace qv {

namespace {

using namespace link_settings;

bool HoldsKey(unsigned type) {
  return type == kLinked || type == kUnique || type == kInteger;
}

std::uint8_t SettingsByte(const Database& db, int slot, std::size_t offset) {
  return db.definition().field(slot).bytes()[offset];
}

// The prefix body of a record: 20 bytes for prefix byte 1, P bytes for P of 2 or more.
Bytes PrefixArea(std::span<const std::uint8_t> record) {
  if (record.empty() || record[0] == 0) return {};
  std::size_t size = ValuesOffset(record) - 1;
  if (record.size() < 1 + size) return {};
  return Bytes(record.begin() + 1, record.begin() + 1 + static_cast<std::ptrdiff_t>(size));
}

bool SameTextIgnoringCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() && ToLowerAscii(a) == ToLowerAscii(b);
}

}  // namespace

bool IsLinkingType(unsigned type) {
  return type == kLink || type == kLinked || type == kDbPopup || type == kRelationship;
}

LinkRequest MakeLinkRequest(const Database& db, int slot, std::uint32_t number) {
  LinkRequest request;
  request.field_byte = SettingsByte(db, slot, kOtherField);
  request.record = number;
  if (number >= db.count()) return request;
  std::span<const std::uint8_t> record = db.records[number].data;
  request.key = LinkKey(db, slot, number);
  request.area = PrefixArea(record);
  return request;
}

Database* FindOpenDatabase(std::span<Database* const> open, const std::string& path) {
  std::size_t searched = std::min(open.size(), kOpenTableSize);
  for (std::size_t i = 0; i < searched; ++i) {
    Database* db = open[i];
    if (db && db->loaded && SameTextIgnoringCase(db->path, path)) return db;
  }
  return nullptr;
}

LinkedOpen OpenLinkedDatabase(const Database& db, int slot, std::uint32_t number,
                              std::span<Database* const> open, Prompter& prompter,
                              const LinkAccessCheck& access) {
  LinkedOpen result;
  std::string name = LinkTarget(db.definition().field(slot));
  auto path = name.empty() ? std::nullopt : FindDatabaseByName(name, db.path);
  if (!path) {
    prompter.message(kLinkedNotPresent, kLinkedErrorCaption, Icon::Exclamation);
    return result;
  }
  result.request = MakeLinkRequest(db, slot, number);
  if (Database* reused = FindOpenDatabase(open, *path)) {
    if (!access || access(*reused)) result.db = reused;
    return result;
  }
  auto fresh = std::make_unique<Database>();
  if (!LoadDatabase(*fresh, *path, prompter)) {
    prompter.message(kLinkedCannotOpen, kLinkedErrorCaption, Icon::Exclamation);
    return result;
  }
  if (access && !access(*fresh)) {
    CloseDatabase(*fresh);
    return result;
  }
  result.opened = std::move(fresh);
  result.db = result.opened.get();
  return result;
}

int ChildKeyField(const Database& parent, int slot, const Database& child) {
  unsigned type = parent.definition().field_type(slot);
  int named = SettingsByte(parent, slot, kOtherField);
  unsigned named_type =
      named < kFieldSlots ? child.definition().field_type(named) : unsigned{kNotUsed};
  if (type == kRelationship) return HoldsKey(named_type) ? named : -1;
  if (named_type == kLinked) return named;
  int first_linked = -1;
  for (int s = 0; s < kFieldSlots; ++s) {
    ConstFieldDefinition f = child.definition().field(s);
    if (f.type() != kLinked) continue;
    if (LinkTarget(f) == parent.header.Name()) return s;
    if (first_linked < 0) first_linked = s;
  }
  return first_linked;
}

std::uint32_t LinkKey(const Database& db, int slot, std::uint32_t number) {
  if (number >= db.count()) return 0;
  std::span<const std::uint8_t> record = db.records[number].data;
  if (db.definition().field_type(slot) == kRelationship) {
    int key_field = SettingsByte(db, slot, kSourceField);
    if (key_field >= kFieldSlots || !HoldsKey(db.definition().field_type(key_field))) return 0;
    return ValueUInt32(ValueBytes(record, key_field));
  }
  return ValueUInt32(ValueBytes(record, slot));
}

std::uint32_t EnsureLinkKey(Database& db, int slot, std::uint32_t number) {
  std::uint32_t key = LinkKey(db, slot, number);
  if (key != 0 || number >= db.count() || db.definition().field_type(slot) != kLink) return key;
  for (const RecordSlot& r : db.records) key = std::max(key, ValueUInt32(ValueBytes(r.data, slot)));
  ++key;
  Bytes value = UInt32Value(key);
  db.records[number].data = ReplaceValue(db.records[number].data, db.definition(), slot, value);
  db.changed = true;
  return key;
}

void RestrictToParent(Database& child, int child_field, std::uint32_t key) {
  child.restriction_field = child_field;
  child.restriction_key = key;
  RebuildFilteredList(child);
  if (!child.visible.empty()) child.current = child.visible.front();
}

void ClearRestriction(Database& child) {
  child.restriction_field = -1;
  child.restriction_key = 0;
  RebuildFilteredList(child);
}

std::vector<std::uint32_t> LinkedRecords(const Database& child, int child_field,
                                         std::uint32_t key) {
  std::vector<std::uint32_t> numbers;
  if (child_field < 0 || key == 0) return numbers;
  for (std::uint32_t n = 0; n < child.count(); ++n) {
    auto value = ValueBytes(child.records[n].data, child_field);
    if (value.size() >= 4 && ValueUInt32(value) == key) numbers.push_back(n);
  }
  return numbers;
}

Bytes LinkedValue(std::uint32_t key, std::string_view shown) {
  Bytes value(kLinkedBlock, 0);
  Bytes k = UInt32Value(key);
  std::copy(k.begin(), k.end(), value.begin());
  shown = shown.substr(0, std::min(shown.size(), kLinkedTextMax));
  shown = shown.substr(0, shown.find('\0'));
  value.insert(value.end(), shown.begin(), shown.end());
  value.push_back(0);
  return value;
}

std::string ParentShownText(const Database& parent, std::uint32_t number,
                            const FormatOptions& options) {
  return RecordValueText(parent, number, parent.definition().lookup_field(), options);
}

void BelongToParent(const Database& child, int child_field, std::uint32_t key,
                    std::string_view shown, RecordValues& values) {
  if (child_field < 0) return;
  if (child.definition().field_type(child_field) == kLinked)
    values.Set(child_field, LinkedValue(key, shown));
  else
    values.Set(child_field, UInt32Value(key));
}

bool ReassignLinkedRecord(Database& child, std::uint32_t number, int child_field, std::uint32_t key,
                          std::string_view shown) {
  if (number >= child.count() || child_field < 0) return false;
  RecordValues values;
  BelongToParent(child, child_field, key, shown, values);
  child.records[number].data = ReplaceValue(child.records[number].data, child.definition(),
                                            child_field, values.values[child_field]);
  child.changed = true;
  RebuildFilteredList(child);
  return true;
}

std::vector<LinkKeys> LinkKeysOf(const Database& db, std::span<const std::uint32_t> records) {
  std::vector<LinkKeys> result;
  // Only Link fields own their records; a Relationship merely matches numbers, so the records
  // it reaches are never deleted with it.
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    if (db.definition().field_type(slot) != kLink) continue;
    LinkKeys keys{slot, {}};
    for (std::uint32_t n : records)
      if (std::uint32_t key = LinkKey(db, slot, n)) keys.keys.push_back(key);
    if (!keys.keys.empty()) result.push_back(std::move(keys));
  }
  return result;
}

std::uint32_t DeleteLinkedRecords(Database& child, int child_field,
                                  std::span<const std::uint32_t> keys, Prompter& prompter) {
  if (child_field < 0) return 0;
  std::set<std::uint32_t> wanted(keys.begin(), keys.end());
  std::vector<std::uint32_t> doomed;
  for (std::uint32_t n = 0; n < child.count(); ++n) {
    auto value = ValueBytes(child.records[n].data, child_field);
    if (value.size() >= 4 && wanted.count(ValueUInt32(value))) doomed.push_back(n);
  }
  if (!doomed.empty()) {
    DeleteRecordsAndRecalculate(child, doomed, prompter);
    child.changed = true;
  }
  return static_cast<std::uint32_t>(doomed.size());
}

void FillDbPopups(const Database& db, int slot, const Database& other, std::uint32_t picked,
                  const FormatOptions& options, RecordValues& values) {
  ConstFieldDefinition field = db.definition().field(slot);
  std::uint8_t group = field.bytes()[kPairGroup];
  std::string target = LinkTarget(field);
  for (int s = 0; s < kFieldSlots; ++s) {
    ConstFieldDefinition f = db.definition().field(s);
    if (f.type() != kDbPopup) continue;
    if (s != slot && (group == 0 || f.bytes()[kPairGroup] != group || LinkTarget(f) != target))
      continue;
    int source = f.bytes()[kSourceField];
    if (source >= kFieldSlots) continue;
    std::string text = RecordValueText(other, picked, source, options);
    std::size_t room = LargestValueSize(f);
    if (room > 0 && text.size() + 1 > room) text.resize(room - 1);
    values.Set(s, TextValue(text));
  }
}

}  // namespace qv
