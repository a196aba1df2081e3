#include "engine/schema.h"

#include <algorithm>
#include <cstring>

#include "engine/text.h"

namespace qv {

Condition Condition::Read(const std::uint8_t* b) {
  Condition c;
  c.in_use = GetBE16(b);
  c.field = GetBE16(b + 2);
  std::copy(b + 4, b + 44, c.first.begin());
  std::copy(b + 44, b + 84, c.second.begin());
  c.lower = GetBE32(b + 84);
  c.upper = GetBE32(b + 88);
  c.join = b[92];
  c.group = b[93];
  return c;
}

void Condition::Write(std::uint8_t* b) const {
  PutBE16(b, in_use);
  PutBE16(b + 2, field);
  std::copy(first.begin(), first.end(), b + 4);
  std::copy(second.begin(), second.end(), b + 44);
  PutBE32(b + 84, lower);
  PutBE32(b + 88, upper);
  b[92] = join;
  b[93] = group;
}

bool DatabaseDefinition::Assign(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != kDefinitionSize) return false;
  bytes_.assign(bytes.begin(), bytes.end());
  return true;
}

SortKey DatabaseDefinition::sort_key(int k) const {
  const std::uint8_t* p = data() + def::kSort + 2 * k;
  SortKey key;
  key.field = p[0] == 0xFF ? -1 : static_cast<std::int8_t>(p[0]);
  key.forward = p[1] != 0;
  return key;
}

void DatabaseDefinition::set_sort_key(int k, SortKey key) {
  std::uint8_t* p = data() + def::kSort + 2 * k;
  p[0] = key.field < 0 ? 0xFF : static_cast<std::uint8_t>(key.field);
  p[1] = key.forward ? 1 : 0;
}

void DatabaseDefinition::RepairDisplayOrder() {
  std::uint8_t* table = data() + def::kDisplayOrder;
  bool seen[kFieldSlots] = {};
  bool permutation = true;
  for (int i = 0; i < kFieldSlots; ++i) {
    if (table[i] >= kFieldSlots) table[i] = 0;
    if (seen[table[i]]) permutation = false;
    seen[table[i]] = true;
  }
  if (!permutation)
    for (int i = 0; i < kFieldSlots; ++i) table[i] = static_cast<std::uint8_t>(i);
}

std::optional<int> DatabaseDefinition::FindField(std::string_view name) const {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (field(slot).used() && EqualsNoCase(field(slot).name(), name)) return slot;
  return std::nullopt;
}

std::size_t FieldRecord::EncodedSize() const {
  std::size_t size = 31 + 20 * items.size() + 16 * table.size();
  for (const auto& t : texts)
    if (!t.empty()) size += t.size() + 1;
  return size;
}

Bytes FieldRecord::Encode() const {
  Bytes out;
  out.reserve(EncodedSize());
  out.push_back(lead);
  AppendBytes(out, prefix.data(), prefix.size());
  // The two counts are low byte first, unlike the rest of the schema; deliberate.
  AppendLE16(out, static_cast<std::uint16_t>(items.size()));
  AppendLE16(out, static_cast<std::uint16_t>(table.size()));
  for (const auto& item : items) AppendBytes(out, item.data(), item.size());
  for (const auto& entry : table) AppendBytes(out, entry.data(), entry.size());
  for (const auto& t : texts) {
    if (t.empty()) continue;
    AppendBytes(out, reinterpret_cast<const std::uint8_t*>(t.data()), t.size());
    out.push_back(0);
  }
  AppendBytes(out, tail.data(), tail.size());
  return out;
}

std::optional<FieldRecord> FieldRecord::Decode(std::span<const std::uint8_t> b) {
  if (b.size() < 31) return std::nullopt;
  FieldRecord r;
  r.lead = b[0];
  std::copy(b.begin() + 1, b.begin() + 23, r.prefix.begin());
  std::size_t item_count = GetLE16(b.data() + 23);
  std::size_t table_count = GetLE16(b.data() + 25);
  std::size_t fixed = 31 + 20 * item_count + 16 * table_count;
  if (fixed > b.size()) return std::nullopt;
  std::size_t at = 27;
  r.items.resize(item_count);
  for (auto& item : r.items) {
    std::copy(b.begin() + at, b.begin() + at + 20, item.begin());
    at += 20;
  }
  r.table.resize(table_count);
  for (auto& entry : r.table) {
    std::copy(b.begin() + at, b.begin() + at + 16, entry.begin());
    at += 16;
  }
  std::size_t text_end = b.size() - 4;
  std::copy(b.begin() + text_end, b.end(), r.tail.begin());
  r.texts.resize(item_count);
  for (std::size_t i = 0; at < text_end; ++i) {
    std::string_view t = CStringAt(b.data() + at, text_end - at);
    if (i < item_count) r.texts[i] = std::string(t);
    at += t.size() + 1;
  }
  return r;
}

void FieldRecord::SetItems(const std::vector<std::string>& new_texts) {
  items.assign(new_texts.size(), {});
  texts = new_texts;
}

Bytes AuxRecord::Encode() const {
  Bytes out;
  out.reserve(28 + 16 * entries.size());
  out.push_back(lead);
  AppendBytes(out, prefix.data(), prefix.size());
  AppendLE16(out, static_cast<std::uint16_t>(entries.size()));
  for (const auto& e : entries) AppendBytes(out, e.data(), e.size());
  AppendBytes(out, tail.data(), tail.size());
  return out;
}

std::optional<AuxRecord> AuxRecord::Decode(std::span<const std::uint8_t> b) {
  if (b.size() < 28) return std::nullopt;
  AuxRecord r;
  r.lead = b[0];
  std::copy(b.begin() + 1, b.begin() + 23, r.prefix.begin());
  std::size_t count = GetLE16(b.data() + 23);
  if (28 + 16 * count > b.size()) return std::nullopt;
  r.entries.resize(count);
  std::size_t at = 25;
  for (auto& e : r.entries) {
    std::copy(b.begin() + at, b.begin() + at + 16, e.begin());
    at += 16;
  }
  std::copy(b.begin() + at, b.begin() + at + 3, r.tail.begin());
  return r;
}

Schema NewSchema() {
  Schema s;
  DatabaseDefinition& d = s.definition;
  std::uint8_t* p = d.data();
  std::memcpy(p + def::kSignature, "Quorv", 5);
  PutBE32(p + def::kListSetting, 1);
  for (int k = 0; k < kSortKeys; ++k) d.set_sort_key(k, SortKey{-1, true});
  p[608] = 1;
  p[609] = 1;
  p[def::kFindField] = 255;
  p[def::kFindCase] = 0;
  p[35816] = 255;
  p[35817] = 3;
  Condition blank;
  blank.upper = 65000;
  for (int i = 0; i < kConditions; ++i) d.set_condition(i, blank);
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    FieldDefinition f = d.field(slot);
    f.set_name("Field " + std::to_string(slot + 1));
    f.set_type(kNotUsed);
    f.bytes()[4] = 0;
    f.bytes()[5] = 1;
    f.set_length(40);
    f.set_width(58);
    f.bytes()[8] = 1;
    f.bytes()[9] = 1;
    f.bytes()[16] = 255;
    f.bytes()[17] = 255;
    d.set_display_slot(slot, slot);
  }
  for (std::uint32_t i = 0; i < kSchemaRecords; ++i) {
    std::uint32_t uid = i + 1;
    if (i == 0) s.uid = uid;
    else if (i <= kFieldSlots) s.fields[i - 1].uid = uid;
    else s.aux.uid = uid;
  }
  return s;
}

std::optional<Schema> DecodeSchema(const std::vector<RawRecord>& records) {
  if (records.size() < kSchemaRecords) return std::nullopt;
  Schema s;
  if (!s.definition.Assign(records[0].data)) return std::nullopt;
  s.definition.RepairDisplayOrder();
  s.attributes = records[0].attributes;
  s.uid = records[0].uid;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    const RawRecord& raw = records[slot + 1];
    auto field = FieldRecord::Decode(raw.data);
    if (!field) return std::nullopt;
    field->attributes = raw.attributes;
    field->uid = raw.uid;
    s.fields[slot] = std::move(*field);
  }
  auto aux = AuxRecord::Decode(records[101].data);
  if (!aux) return std::nullopt;
  aux->attributes = records[101].attributes;
  aux->uid = records[101].uid;
  s.aux = std::move(*aux);
  return s;
}

void EncodeSchema(const Schema& schema, bool dirty, std::vector<RawRecord>& out) {
  constexpr std::uint8_t kDirtyBit = 0x40;
  out.push_back({schema.definition.bytes(),
                 static_cast<std::uint8_t>(schema.attributes | (dirty ? kDirtyBit : 0)),
                 schema.uid});
  for (const FieldRecord& f : schema.fields) out.push_back({f.Encode(), f.attributes, f.uid});
  out.push_back({schema.aux.Encode(), schema.aux.attributes, schema.aux.uid});
}

}  // namespace qv
