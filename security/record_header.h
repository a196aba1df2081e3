#pragma once
// The 23-byte header data records carry once a database switches it on: byte 0 = 22, identity
// part 1 (8), identity part 2 (3), record flags (1), reserved (2), identity part 3 (3), alarm
// item (3), record checksum (1), reserved (1).

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <span>

#include "engine/bytes.h"
#include "engine/database.h"

namespace qv {

inline constexpr std::uint8_t kRecordManualEncrypt = 0x01;     // marked for manual encryption
inline constexpr std::uint8_t kRecordBodyEnciphered = 0x10;    // whole body enciphered
inline constexpr std::uint8_t kRecordFieldsEnciphered = 0x20;  // marked fields enciphered

namespace record_header {
inline constexpr std::size_t kLead = 0;  // always 22
inline constexpr std::size_t kIdentity1 = 1;
inline constexpr std::size_t kIdentity2 = 9;
inline constexpr std::size_t kFlags = 12;
inline constexpr std::size_t kIdentity3 = 15;
inline constexpr std::size_t kAlarm = 18;
inline constexpr std::size_t kChecksum = 21;
}  // namespace record_header

struct RecordHeader {
  std::array<std::uint8_t, kRecordHeaderSize> bytes{};

  std::uint8_t flags() const { return bytes[record_header::kFlags]; }
  void set_flags(std::uint8_t f) { bytes[record_header::kFlags] = f; }
  bool has(std::uint8_t flag) const { return (flags() & flag) != 0; }
  void set(std::uint8_t flag, bool on) {
    set_flags(on ? flags() | flag : flags() & static_cast<std::uint8_t>(~flag));
  }
  std::uint8_t checksum() const { return bytes[record_header::kChecksum]; }
  void set_checksum(std::uint8_t sum) { bytes[record_header::kChecksum] = sum; }
};

// The record's header; nothing when the record is shorter than 23 bytes or does not start
// with 22 (the header is switched off, or the record is damaged).
// Whether `record` starts with a record header (long enough, lead byte 22).
inline bool HasRecordHeader(std::span<const std::uint8_t> record) {
  return record.size() >= kRecordHeaderSize && record[record_header::kLead] == 22;
}
std::optional<RecordHeader> ReadRecordHeader(std::span<const std::uint8_t> record);
// Writes the header back over the first 23 bytes; false when the record has no header.
bool WriteRecordHeader(Bytes& record, const RecordHeader& header);

// Random bytes for record identities and verifiers; each operation makes its own.
class RandomBytes {
 public:
  RandomBytes() : engine_(std::random_device{}()) {}
  explicit RandomBytes(std::uint32_t seed) : engine_(seed) {}
  std::uint8_t Next() { return static_cast<std::uint8_t>(engine_() % 256); }
  void Fill(std::span<std::uint8_t> out) {
    for (auto& b : out) b = Next();
  }

 private:
  std::mt19937 engine_;
};

// A fresh header: random identity, no flags, no alarm, checksum 0.
RecordHeader NewRecordHeader(RandomBytes& random);

// Switches the record header on for the database and re-encodes every record with a fresh
// header. Does nothing when it is on already. Marks the database changed.
void EnableRecordHeaders(Database& db);

}  // namespace qv
