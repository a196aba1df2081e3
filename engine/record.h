#pragma once
// The data record codec: a prefix byte P (0: none; 1: a 20-byte body; 2 or more: P bytes), then
// one value entry per field slot, a 16-bit length low byte first and the value bytes. The length
// 0xFFFF ends the list: it and every later slot have no value.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/bytes.h"
#include "engine/schema.h"

namespace qv {

inline constexpr std::uint16_t kEndMarker = 0xFFFF;
inline constexpr std::size_t kRecordHeaderSize = 23;  // byte 22 + 22 bytes when switched on

// Where the value entries begin: 1, 21 (P = 1, deliberately 20 bytes) or P + 1.
std::size_t ValuesOffset(std::span<const std::uint8_t> record);

struct ValueRef {
  std::size_t offset = 0;  // first value byte
  std::size_t length = 0;
};

// Locates slot k's value. Nothing when the slot lies at or after the end marker, or when the
// record is too short for what its lengths claim.
std::optional<ValueRef> LocateValue(std::span<const std::uint8_t> record, int slot);

// The value bytes of slot k, or an empty span when it is absent.
std::span<const std::uint8_t> ValueBytes(std::span<const std::uint8_t> record, int slot);

// The values of one record as the editor holds them: the record's prefix bytes and, per slot,
// the stored value bytes (texts with their NUL), absent slots empty.
struct RecordValues {
  Bytes prefix;
  std::array<Bytes, kFieldSlots> values;
  std::array<bool, kFieldSlots> present{};

  void Set(int slot, Bytes value) {
    values[slot] = std::move(value);
    present[slot] = true;
  }
};

RecordValues DecodeRecord(std::span<const std::uint8_t> record);

// Encodes values under the definition: the 23-byte record header when the definition switches
// it on (taken from the values' prefix, zero-filled with byte 0 = 22 when there is none), else
// the single byte 0; an unused slot writes 00 00 while a used slot follows, else FF FF and the
// record ends there.
Bytes EncodeRecord(const DatabaseDefinition& definition, const RecordValues& values);
// The same record appended to `out`.
void AppendEncodedRecord(const DatabaseDefinition& definition, const RecordValues& values,
                         Bytes& out);

// The record with slot k's value replaced; the prefix and every other byte kept as they were.
Bytes ReplaceValue(std::span<const std::uint8_t> record, const DatabaseDefinition& definition,
                   int slot, std::span<const std::uint8_t> value);

// The largest value a field of this definition may hold.
std::size_t LargestValueSize(ConstFieldDefinition field);
// The largest encoded record under this definition (the work-buffer size of recalculation).
std::size_t LargestRecordSize(const DatabaseDefinition& definition);

// Value constructors and readers (numbers inside values are low byte first).
Bytes TextValue(std::string_view text);  // with its terminating NUL
Bytes Int32Value(std::int32_t v);
Bytes UInt32Value(std::uint32_t v);
Bytes TimeValue(int hours, int minutes, int seconds);  // 4 bytes; hours 255 = no time
Bytes CheckValue(bool checked);

// The text of a value: up to its first NUL, the empty text for an empty value.
std::string_view ValueText(std::span<const std::uint8_t> value);
std::int32_t ValueInt32(std::span<const std::uint8_t> value);    // 0 when shorter than 4
std::uint32_t ValueUInt32(std::span<const std::uint8_t> value);  // 0 when shorter than 4

}  // namespace qv
