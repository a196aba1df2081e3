#include "exchange/alarm_settings.h"

#include <algorithm>

#include "engine/bytes.h"
#include "engine/container.h"
#include "engine/record.h"
#include "security/record_header.h"

namespace qv {

namespace {

// Offsets inside the 20 bytes at 12920.
constexpr std::size_t kBase = 12920;
constexpr std::size_t kAllowed = 0;
constexpr std::size_t kAutomatic = 1;
constexpr std::size_t kDateField = 2;  // slot + 1, 0 = none
constexpr std::size_t kTimeField = 3;
constexpr std::size_t kReminder = 4;      // two bytes, slot + 1
constexpr std::size_t kSnoozeAmount = 6;  // 16-bit big-endian, 0 = the default 5
constexpr std::size_t kSnoozeUnit = 8;
constexpr int kDefaultSnooze = 5;

int SlotAt(const DatabaseDefinition& definition, std::size_t offset, unsigned wanted_type) {
  int slot = int{definition.data()[kBase + offset]} - 1;
  if (slot < 0 || slot >= kFieldSlots) return -1;
  unsigned type = definition.field_type(slot);
  if (type == kNotUsed || (wanted_type != kNotUsed && type != wanted_type)) return -1;
  return slot;
}

std::uint8_t SlotByte(int slot) {
  return slot >= 0 && slot < kFieldSlots ? static_cast<std::uint8_t>(slot + 1) : 0;
}

}  // namespace

std::int64_t AlarmSettings::SnoozeSeconds() const {
  const std::int64_t unit = snooze_unit == SnoozeUnit::Days    ? 86400
                            : snooze_unit == SnoozeUnit::Hours ? 3600
                                                               : 60;
  return std::clamp(snooze_amount, 1, kLargestSnooze) * unit;
}

AlarmSettings ReadAlarmSettings(const DatabaseDefinition& definition) {
  const std::uint8_t* p = definition.data() + kBase;
  AlarmSettings s;
  s.allowed = p[kAllowed] != 0;
  s.automatic = p[kAutomatic] != 0;
  s.date_field = SlotAt(definition, kDateField, kDate);
  s.time_field = SlotAt(definition, kTimeField, kTime);
  s.reminder_fields[0] = SlotAt(definition, kReminder, kNotUsed);
  s.reminder_fields[1] = SlotAt(definition, kReminder + 1, kNotUsed);
  int amount = GetBE16(p + kSnoozeAmount);
  s.snooze_amount = amount == 0 ? kDefaultSnooze : std::min(amount, kLargestSnooze);
  s.snooze_unit =
      p[kSnoozeUnit] <= 2 ? static_cast<SnoozeUnit>(p[kSnoozeUnit]) : SnoozeUnit::Minutes;
  return s;
}

void WriteAlarmSettings(DatabaseDefinition& definition, const AlarmSettings& s) {
  std::uint8_t* p = definition.data() + kBase;
  p[kAllowed] = s.allowed ? 1 : 0;
  p[kAutomatic] = s.automatic ? 1 : 0;
  p[kDateField] = SlotByte(s.date_field);
  p[kTimeField] = SlotByte(s.time_field);
  p[kReminder] = SlotByte(s.reminder_fields[0]);
  p[kReminder + 1] = SlotByte(s.reminder_fields[1]);
  PutBE16(p + kSnoozeAmount,
          static_cast<std::uint16_t>(std::clamp(s.snooze_amount, 1, kLargestSnooze)));
  p[kSnoozeUnit] = static_cast<std::uint8_t>(s.snooze_unit);
}

void ChangeAlarmSettings(Database& db, const AlarmSettings& settings) {
  DatabaseDefinition& definition = db.definition();
  Bytes before(definition.data() + kBase, definition.data() + kBase + 20);
  WriteAlarmSettings(definition, settings);
  if (!std::equal(before.begin(), before.end(), definition.data() + kBase)) db.changed = true;
  // Alarms find their record by the identity its header carries.
  if (settings.allowed) EnableRecordHeaders(db);
}

std::optional<std::int64_t> AlarmTimeOfDate(std::uint32_t date, int hours, int minutes) {
  if (date == 0) return std::nullopt;
  std::int64_t at = static_cast<std::int64_t>(date) * 86400 - kEpoch1904To1970;
  if (hours >= 0 && hours < 24) at += hours * 3600 + std::clamp(minutes, 0, 59) * 60;
  return at;
}

std::optional<std::int64_t> AutomaticAlarmTime(const Database& db, std::uint32_t record) {
  AlarmSettings s = ReadAlarmSettings(db.definition());
  if (!s.allowed || !s.automatic || s.date_field < 0 || record >= db.count()) return std::nullopt;
  std::span<const std::uint8_t> data = db.records[record].data;
  // Values of an enciphered record are not values.
  auto header = ReadRecordHeader(data);
  if (header && (header->has(kRecordBodyEnciphered) || header->has(kRecordFieldsEnciphered)))
    return std::nullopt;
  auto date = ValueBytes(data, s.date_field);
  if (date.size() < 4) return std::nullopt;
  int hours = 255, minutes = 0;
  if (s.time_field >= 0) {
    auto time = ValueBytes(data, s.time_field);
    if (time.size() >= 3) {
      minutes = time[1];
      hours = time[2];
    }
  }
  return AlarmTimeOfDate(ValueUInt32(date), hours, minutes);
}

}  // namespace qv
