#include "engine/record.h"

namespace qv {

std::size_t ValuesOffset(std::span<const std::uint8_t> record) {
  if (record.empty()) return 1;
  std::uint8_t p = record[0];
  if (p == 0) return 1;
  if (p == 1) return 21;  // a 20-byte body for P = 1, deliberately
  return std::size_t{p} + 1;
}

std::optional<ValueRef> LocateValue(std::span<const std::uint8_t> record, int slot) {
  if (slot < 0 || slot >= kFieldSlots) return std::nullopt;
  std::size_t at = ValuesOffset(record);
  for (int k = 0;; ++k) {
    if (at + 2 > record.size()) return std::nullopt;
    std::uint16_t len = GetLE16(record.data() + at);
    if (len == kEndMarker) return std::nullopt;
    if (at + 2 + len > record.size()) return std::nullopt;
    if (k == slot) return ValueRef{at + 2, len};
    at += 2 + std::size_t{len};
  }
}

std::span<const std::uint8_t> ValueBytes(std::span<const std::uint8_t> record, int slot) {
  auto ref = LocateValue(record, slot);
  if (!ref) return {};
  return record.subspan(ref->offset, ref->length);
}

RecordValues DecodeRecord(std::span<const std::uint8_t> record) {
  RecordValues out;
  std::size_t start = std::min(ValuesOffset(record), record.size());
  out.prefix.assign(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(start));
  std::size_t at = start;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    if (at + 2 > record.size()) break;
    std::uint16_t len = GetLE16(record.data() + at);
    if (len == kEndMarker || at + 2 + len > record.size()) break;
    out.values[slot].assign(record.begin() + static_cast<std::ptrdiff_t>(at + 2),
                            record.begin() + static_cast<std::ptrdiff_t>(at + 2 + len));
    out.present[slot] = true;
    at += 2 + std::size_t{len};
  }
  return out;
}

namespace {

Bytes RecordPrefix(const DatabaseDefinition& definition, const Bytes& prefix) {
  if (!definition.record_header_on()) return Bytes{0};
  Bytes header(kRecordHeaderSize, 0);
  header[0] = 22;
  if (prefix.size() >= kRecordHeaderSize && prefix[0] == 22)
    std::copy(prefix.begin(), prefix.begin() + kRecordHeaderSize, header.begin());
  return header;
}

}  // namespace

void AppendEncodedRecord(const DatabaseDefinition& definition, const RecordValues& values,
                         Bytes& out) {
  // Sized once and written in place: an import encodes every row.
  const Bytes prefix = RecordPrefix(definition, values.prefix);
  int last_used = -1;
  std::size_t size = prefix.size();
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    if (!definition.field(slot).used()) continue;
    last_used = slot;
    size += std::min<std::size_t>(values.values[slot].size(), 0xFFFE);
  }
  const bool end_marker = last_used + 1 < kFieldSlots;
  size += 2 * static_cast<std::size_t>(last_used + 1) + (end_marker ? 2 : 0);
  const std::size_t start = out.size();
  out.resize(start + size);
  std::uint8_t* p = std::copy(prefix.begin(), prefix.end(), out.data() + start);
  for (int slot = 0; slot <= last_used; ++slot) {
    std::size_t len = 0;
    if (definition.field(slot).used()) {
      const Bytes& v = values.values[slot];
      len = std::min<std::size_t>(v.size(), 0xFFFE);
      std::copy(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(len), p + 2);
    }
    PutLE16(p, static_cast<std::uint16_t>(len));
    p += 2 + len;
  }
  if (end_marker) PutLE16(p, kEndMarker);
}

Bytes EncodeRecord(const DatabaseDefinition& definition, const RecordValues& values) {
  Bytes out;
  AppendEncodedRecord(definition, values, out);
  return out;
}

Bytes ReplaceValue(std::span<const std::uint8_t> record, const DatabaseDefinition& definition,
                   int slot, std::span<const std::uint8_t> value) {
  auto ref = LocateValue(record, slot);
  if (!ref) {
    RecordValues values = DecodeRecord(record);
    values.Set(slot, Bytes(value.begin(), value.end()));
    Bytes encoded = EncodeRecord(definition, values);
    // Keep the record's own prefix, whatever the definition says.
    Bytes fresh(values.prefix);
    std::size_t old_start = ValuesOffset(encoded);
    fresh.insert(fresh.end(), encoded.begin() + static_cast<std::ptrdiff_t>(old_start),
                 encoded.end());
    return fresh;
  }
  std::size_t len = std::min<std::size_t>(value.size(), 0xFFFE);
  Bytes out;
  out.reserve(record.size() - ref->length + len);
  out.insert(out.end(), record.begin(), record.begin() + static_cast<std::ptrdiff_t>(ref->offset - 2));
  AppendLE16(out, static_cast<std::uint16_t>(len));
  out.insert(out.end(), value.begin(), value.begin() + static_cast<std::ptrdiff_t>(len));
  out.insert(out.end(), record.begin() + static_cast<std::ptrdiff_t>(ref->offset + ref->length),
             record.end());
  return out;
}

std::size_t LargestValueSize(ConstFieldDefinition field) {
  switch (field.type()) {
    case kText:
    case kDbPopup: return field.length() + 1;
    case kExternal: return field.length();
    case kInteger:
    case kUnique:
    case kDate:
    case kTime:
    case kLink: return 4;
    case kFloat:
    case kCalculated: return 17;
    case kPopUp: return 14;
    case kCheckBox: return 1;
    case kImage: return 2001;
    case kLinked: return 280;
    case kNote: return 2002;
    case kRelationship:
    case kConditional: return 254;
    default: return 0;
  }
}

std::size_t LargestRecordSize(const DatabaseDefinition& definition) {
  std::size_t size = kRecordHeaderSize + 2;
  for (int slot = 0; slot < kFieldSlots; ++slot)
    size += 2 + LargestValueSize(definition.field(slot)) + 2;  // room for re-framing too
  return size;
}

Bytes TextValue(std::string_view text) {
  Bytes out(text.begin(), text.end());
  out.push_back(0);
  return out;
}

Bytes Int32Value(std::int32_t v) { return UInt32Value(static_cast<std::uint32_t>(v)); }

Bytes UInt32Value(std::uint32_t v) {
  Bytes out;
  AppendLE32(out, v);
  return out;
}

Bytes TimeValue(int hours, int minutes, int seconds) {
  return Bytes{static_cast<std::uint8_t>(seconds), static_cast<std::uint8_t>(minutes),
               static_cast<std::uint8_t>(hours), 0};
}

Bytes CheckValue(bool checked) { return Bytes{static_cast<std::uint8_t>(checked ? 1 : 0)}; }

std::string_view ValueText(std::span<const std::uint8_t> value) {
  return CStringAt(value.data(), value.size());
}

std::int32_t ValueInt32(std::span<const std::uint8_t> value) {
  return static_cast<std::int32_t>(ValueUInt32(value));
}

std::uint32_t ValueUInt32(std::span<const std::uint8_t> value) {
  return value.size() >= 4 ? GetLE32(value.data()) : 0;
}

}  // namespace qv
