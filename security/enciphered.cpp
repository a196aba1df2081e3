#include "security/enciphered.h"

#include "security/record_header.h"

namespace qv {

namespace {

// Read in place rather than through a copy of the header: filters ask this of every record.
std::uint8_t EncipheredFlags(std::span<const std::uint8_t> record) {
  if (!HasRecordHeader(record)) return 0;
  return static_cast<std::uint8_t>(record[record_header::kFlags] &
                                   (kRecordBodyEnciphered | kRecordFieldsEnciphered));
}

}  // namespace

bool IsRecordEnciphered(std::span<const std::uint8_t> record) {
  return EncipheredFlags(record) != 0;
}

bool IsRecordEnciphered(const Database& db, std::uint32_t number) {
  return number < db.count() && IsRecordEnciphered(db.records[number].data);
}

bool IsValueEnciphered(const Database& db, std::uint32_t number, int slot) {
  if (number >= db.count()) return false;
  std::uint8_t flags = EncipheredFlags(db.records[number].data);
  if (flags & kRecordBodyEnciphered) return true;
  return (flags & kRecordFieldsEnciphered) && slot >= 0 && slot < kFieldSlots &&
         db.definition().field(slot).encrypted();
}

std::string ShownValueText(const Database& db, std::uint32_t number, int slot,
                           const FormatOptions& options) {
  if (IsValueEnciphered(db, number, slot)) return kEncipheredValueText;
  return RecordValueText(db, number, slot, options);
}

std::size_t CountEnciphered(const Database& db, std::span<const std::uint32_t> numbers) {
  std::size_t n = 0;
  for (std::uint32_t number : numbers) n += IsRecordEnciphered(db, number) ? 1 : 0;
  return n;
}

std::size_t CountEnciphered(const Database& db) {
  std::size_t n = 0;
  for (const RecordSlot& slot : db.records) n += IsRecordEnciphered(slot.data) ? 1 : 0;
  return n;
}

std::string LeftOutText(std::size_t count) {
  if (count == 0) return {};
  return "left out " + std::to_string(count) + " enciphered record" + (count == 1 ? "" : "s") +
         " (no password given deciphers " + (count == 1 ? "it" : "them") + ")";
}

}  // namespace qv
