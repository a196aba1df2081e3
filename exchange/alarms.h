#pragma once
// Record alarms. Each alarm is an entry in the settings, `Alarms/<n>` with `GUID` (the record's
// 14 identity bytes as hexadecimal), `DBPath`, `RecNum` and `AlarmTime` (local seconds since
// 1970, decimal); the record's header holds n as its alarm item. The running program fires the
// entries whose time has come, and fires those that fell due while it was closed at its next
// start; `qvdb alarm due` lists them for an outside scheduler.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/database.h"
#include "platform/settings.h"

namespace qv {

using RecordIdentity = std::array<std::uint8_t, 14>;

struct AlarmEntry {
  std::uint32_t number = 0;  // n of Alarms/<n>; never 0
  RecordIdentity guid{};
  std::string db_path;
  std::uint32_t record = 0;  // RecNum: the record's index when the alarm was set
  std::int64_t time = 0;     // AlarmTime
  // Set once the entry fired without reaching its record (database or record gone), so it is
  // not raised again; the entry itself stays.
  bool fired = false;
};

inline constexpr std::uint32_t kLargestAlarmNumber = 0xFFFFFF;  // the 3-byte alarm item

// The record's identity: parts 1, 2 and 3 of its header; nothing without a header.
std::optional<RecordIdentity> RecordIdentityOf(const Database& db, std::uint32_t record);
// The same from a record's bytes or its header alone.
std::optional<RecordIdentity> IdentityInHeader(std::span<const std::uint8_t> record);
// The record's alarm item (0 = none); 0 without a header.
std::uint32_t RecordAlarmItem(const Database& db, std::uint32_t record);

// Entry n, or nothing when it is missing or unreadable.
std::optional<AlarmEntry> LoadAlarmEntry(const Settings& settings, std::uint32_t number);
// Every readable entry, by number.
std::vector<AlarmEntry> ListAlarmEntries(const Settings& settings);
// The entry whose GUID equals the identity.
std::optional<AlarmEntry> FindAlarmEntry(const Settings& settings, const RecordIdentity& identity);
// Entries due at `now` (time reached) that have not fired yet, earliest first.
std::vector<AlarmEntry> DueAlarmEntries(const Settings& settings, std::int64_t now);
// The earliest time of an entry that has not fired yet.
std::optional<std::int64_t> NextAlarmTime(const Settings& settings);
void MarkAlarmFired(Settings& settings, std::uint32_t number);

// Sets the record's alarm at `time`, replacing one the record has: writes the entry and the
// record's alarm item and marks the database changed. Nothing when the record has no header (the
// database does not allow alarms) or every alarm number is taken.
std::optional<AlarmEntry> SetRecordAlarm(Settings& settings, Database& db, std::uint32_t record,
                                         std::int64_t time);
// Removes the entry when it exists; when `db` is given, clears the alarm item of the record that
// still has the entry's identity (looked for at `record`, then everywhere) and marks `db`
// changed. False when there was no such entry.
bool ClearRecordAlarm(Settings& settings, const AlarmEntry& entry, Database* db,
                      std::optional<std::uint32_t> record);
// The index of the record with this identity: `hint` first, then every record in order.
std::optional<std::uint32_t> FindRecordByIdentity(const Database& db,
                                                  const RecordIdentity& identity,
                                                  std::uint32_t hint);

// For a database with automatic alarms: sets the record's alarm from its date and time fields
// when that time is after `now`, and clears an alarm the record has otherwise. Returns whether
// anything changed.
bool ApplyAutomaticAlarm(Settings& settings, Database& db, std::uint32_t record, std::int64_t now);

// "YYYY-MM-DD HH:MM" for local seconds since 1970, and back (nothing for a malformed text).
std::string AlarmTimeText(std::int64_t time);
std::optional<std::int64_t> ParseAlarmTime(std::string_view text);

}  // namespace qv
