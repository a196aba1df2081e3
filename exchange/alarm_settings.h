#pragma once
// A database's alarm settings, kept in record 0 (20 bytes at 12920, docs/FORMAT.md): whether
// records may carry alarms, manual or automatic alarms with the date and time fields they are
// taken from, the two fields the reminder shows, and the snooze time.

#include <cstdint>
#include <optional>

#include "engine/database.h"

namespace qv {

enum class SnoozeUnit : std::uint8_t { Minutes = 0, Hours = 1, Days = 2 };

struct AlarmSettings {
  bool allowed = false;
  bool automatic = false;  // "Alarms Are" Automatic: taken from a date and a time field
  int date_field = -1;     // slots; -1 none
  int time_field = -1;
  int reminder_fields[2] = {-1, -1};
  int snooze_amount = 5;
  SnoozeUnit snooze_unit = SnoozeUnit::Minutes;

  bool operator==(const AlarmSettings&) const = default;
  // The snooze time in seconds.
  std::int64_t SnoozeSeconds() const;
};

inline constexpr int kLargestSnooze = 999;

// Field slots that no longer hold a used field of the right type read as none.
AlarmSettings ReadAlarmSettings(const DatabaseDefinition& definition);
void WriteAlarmSettings(DatabaseDefinition& definition, const AlarmSettings& settings);

// Stores the settings and, when alarms become allowed, switches on the record header that
// carries each record's identity and alarm item. Marks the database changed when anything
// differs.
void ChangeAlarmSettings(Database& db, const AlarmSettings& settings);

// Local seconds since 1970 of a date value (days since 1904, 0 = no date) at a time of day
// (hours 255 = no time, taken as the start of the day).
std::optional<std::int64_t> AlarmTimeOfDate(std::uint32_t date, int hours, int minutes);

// For a database with automatic alarms: the alarm time the record's date and time fields give,
// or nothing (no date, or automatic alarms not in force).
std::optional<std::int64_t> AutomaticAlarmTime(const Database& db, std::uint32_t record);

}  // namespace qv
