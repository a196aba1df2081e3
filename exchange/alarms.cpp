#include "exchange/alarms.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "engine/bytes.h"
#include "exchange/alarm_settings.h"
#include "security/record_header.h"

namespace qv {

namespace {

std::string Key(std::uint32_t number, const char* value) {
  return "Alarms/" + std::to_string(number) + "/" + value;
}

std::string Hex(const RecordIdentity& identity) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::uint8_t b : identity) {
    text += kDigits[b >> 4];
    text += kDigits[b & 15];
  }
  return text;
}

std::optional<RecordIdentity> ParseHex(std::string_view text) {
  if (text.size() != 28) return std::nullopt;
  RecordIdentity identity{};
  for (std::size_t i = 0; i < identity.size(); ++i) {
    unsigned value = 0;
    for (char c : text.substr(2 * i, 2)) {
      int digit = c >= '0' && c <= '9'   ? c - '0'
                  : c >= 'A' && c <= 'F' ? c - 'A' + 10
                  : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                         : -1;
      if (digit < 0) return std::nullopt;
      value = value * 16 + static_cast<unsigned>(digit);
    }
    identity[i] = static_cast<std::uint8_t>(value);
  }
  return identity;
}

// A whole decimal number, nothing else.
std::optional<std::int64_t> Decimal(const std::optional<std::string>& text) {
  if (!text || text->empty() || text->size() > 18) return std::nullopt;
  std::int64_t value = 0;
  std::size_t i = (*text)[0] == '-' ? 1 : 0;
  if (i == text->size()) return std::nullopt;
  for (; i < text->size(); ++i) {
    char c = (*text)[i];
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return (*text)[0] == '-' ? -value : value;
}

void PutAlarmNumber(std::uint8_t* p, std::uint32_t v) {
  p[0] = static_cast<std::uint8_t>(v);
  p[1] = static_cast<std::uint8_t>(v >> 8);
  p[2] = static_cast<std::uint8_t>(v >> 16);
}

void SetAlarmItem(Database& db, std::uint32_t record, std::uint32_t number) {
  Bytes& bytes = db.records[record].data.edit();
  auto header = ReadRecordHeader(bytes);
  if (!header) return;
  PutAlarmNumber(header->bytes.data() + record_header::kAlarm, number);
  WriteRecordHeader(bytes, *header);
  db.changed = true;
}

// Days since 1970-01-01 of a proleptic Gregorian date, and back (H. Hinnant's algorithms).
std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromDays(std::int64_t z, std::int64_t& y, unsigned& m, unsigned& d) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = doy - (153 * mp + 2) / 5 + 1;
  m = mp < 10 ? mp + 3 : mp - 9;
  y = static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2);
}

}  // namespace

std::optional<RecordIdentity> RecordIdentityOf(const Database& db, std::uint32_t record) {
  if (record >= db.count()) return std::nullopt;
  return IdentityInHeader(db.records[record].data);
}

std::optional<RecordIdentity> IdentityInHeader(std::span<const std::uint8_t> record) {
  auto header = ReadRecordHeader(record);
  if (!header) return std::nullopt;
  RecordIdentity identity{};
  const std::uint8_t* h = header->bytes.data();
  std::copy_n(h + record_header::kIdentity1, 8, identity.begin());
  std::copy_n(h + record_header::kIdentity2, 3, identity.begin() + 8);
  std::copy_n(h + record_header::kIdentity3, 3, identity.begin() + 11);
  return identity;
}

std::uint32_t RecordAlarmItem(const Database& db, std::uint32_t record) {
  if (record >= db.count()) return 0;
  auto header = ReadRecordHeader(db.records[record].data);
  return header ? GetLE24(header->bytes.data() + record_header::kAlarm) : 0;
}

std::optional<AlarmEntry> LoadAlarmEntry(const Settings& settings, std::uint32_t number) {
  if (number == 0 || number > kLargestAlarmNumber) return std::nullopt;
  auto guid = settings.read(Key(number, "GUID"));
  auto path = settings.read(Key(number, "DBPath"));
  auto record = Decimal(settings.read(Key(number, "RecNum")));
  auto time = Decimal(settings.read(Key(number, "AlarmTime")));
  if (!guid || !path || !record || !time || *record < 0) return std::nullopt;
  auto identity = ParseHex(*guid);
  if (!identity) return std::nullopt;
  AlarmEntry entry;
  entry.number = number;
  entry.guid = *identity;
  entry.db_path = *path;
  entry.record = static_cast<std::uint32_t>(std::min<std::int64_t>(*record, UINT32_MAX));
  entry.time = *time;
  entry.fired = settings.read(Key(number, "Fired")).value_or("") == "1";
  return entry;
}

std::vector<AlarmEntry> ListAlarmEntries(const Settings& settings) {
  std::set<std::uint32_t> numbers;
  for (const std::string& name : settings.SubKeys("Alarms")) {
    // Names longer than the registry's 199 characters are not alarm numbers.
    if (name.size() > 199) continue;
    auto n = Decimal(name);
    if (n && *n > 0 && *n <= kLargestAlarmNumber) numbers.insert(static_cast<std::uint32_t>(*n));
  }
  std::vector<AlarmEntry> entries;
  for (std::uint32_t n : numbers)
    if (auto entry = LoadAlarmEntry(settings, n)) entries.push_back(std::move(*entry));
  return entries;
}

std::optional<AlarmEntry> FindAlarmEntry(const Settings& settings, const RecordIdentity& identity) {
  for (AlarmEntry& entry : ListAlarmEntries(settings))
    if (entry.guid == identity) return std::move(entry);
  return std::nullopt;
}

std::vector<AlarmEntry> DueAlarmEntries(const Settings& settings, std::int64_t now) {
  std::vector<AlarmEntry> due;
  for (AlarmEntry& entry : ListAlarmEntries(settings))
    if (!entry.fired && entry.time <= now) due.push_back(std::move(entry));
  std::stable_sort(due.begin(), due.end(),
                   [](const AlarmEntry& a, const AlarmEntry& b) { return a.time < b.time; });
  return due;
}

std::optional<std::int64_t> NextAlarmTime(const Settings& settings) {
  std::optional<std::int64_t> next;
  for (const AlarmEntry& entry : ListAlarmEntries(settings))
    if (!entry.fired && (!next || entry.time < *next)) next = entry.time;
  return next;
}

void MarkAlarmFired(Settings& settings, std::uint32_t number) {
  settings.write(Key(number, "Fired"), "1");
}

std::optional<AlarmEntry> SetRecordAlarm(Settings& settings, Database& db, std::uint32_t record,
                                         std::int64_t time) {
  auto identity = RecordIdentityOf(db, record);
  if (!identity) return std::nullopt;
  if (auto old = FindAlarmEntry(settings, *identity)) ClearRecordAlarm(settings, *old, &db, record);
  std::set<std::uint32_t> taken;
  for (const std::string& name : settings.SubKeys("Alarms"))
    if (auto n = Decimal(name); n && *n > 0) taken.insert(static_cast<std::uint32_t>(*n));
  std::uint32_t number = 1;
  while (taken.count(number)) ++number;
  if (number > kLargestAlarmNumber) return std::nullopt;
  AlarmEntry entry;
  entry.number = number;
  entry.guid = *identity;
  entry.db_path = db.path;
  entry.record = record;
  entry.time = time;
  settings.write(Key(number, "GUID"), Hex(entry.guid));
  settings.write(Key(number, "DBPath"), entry.db_path);
  settings.write(Key(number, "RecNum"), std::to_string(record));
  settings.write(Key(number, "AlarmTime"), std::to_string(time));
  SetAlarmItem(db, record, number);
  return entry;
}

bool ClearRecordAlarm(Settings& settings, const AlarmEntry& entry, Database* db,
                      std::optional<std::uint32_t> record) {
  if (!LoadAlarmEntry(settings, entry.number)) return false;
  settings.remove("Alarms/" + std::to_string(entry.number));
  if (!db) return true;
  if (auto at = FindRecordByIdentity(*db, entry.guid, record.value_or(entry.record))) {
    // The item is cleared only where it still names this entry.
    if (RecordAlarmItem(*db, *at) == entry.number) SetAlarmItem(*db, *at, 0);
  }
  db->changed = true;
  return true;
}

std::optional<std::uint32_t> FindRecordByIdentity(const Database& db,
                                                  const RecordIdentity& identity,
                                                  std::uint32_t hint) {
  if (RecordIdentityOf(db, hint) == identity) return hint;
  for (std::uint32_t i = 0; i < db.count(); ++i)
    if (RecordIdentityOf(db, i) == identity) return i;
  return std::nullopt;
}

bool ApplyAutomaticAlarm(Settings& settings, Database& db, std::uint32_t record, std::int64_t now) {
  const AlarmSettings s = ReadAlarmSettings(db.definition());
  if (!s.allowed || !s.automatic) return false;
  auto identity = RecordIdentityOf(db, record);
  if (!identity) return false;
  auto time = AutomaticAlarmTime(db, record);
  auto existing = FindAlarmEntry(settings, *identity);
  if (time && *time > now) {
    if (existing && existing->time == *time && RecordAlarmItem(db, record) == existing->number)
      return false;
    return SetRecordAlarm(settings, db, record, *time).has_value();
  }
  return existing && ClearRecordAlarm(settings, *existing, &db, record);
}

std::string AlarmTimeText(std::int64_t time) {
  std::int64_t days = time >= 0 ? time / 86400 : (time - 86399) / 86400;
  std::int64_t seconds = time - days * 86400;
  std::int64_t y;
  unsigned m, d;
  CivilFromDays(days, y, m, d);
  char text[40];
  std::snprintf(text, sizeof text, "%04lld-%02u-%02u %02d:%02d", static_cast<long long>(y), m, d,
                static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60));
  return text;
}

std::optional<std::int64_t> ParseAlarmTime(std::string_view text) {
  int y, mo, d, h, mi;
  char tail;
  std::string copy(text);
  if (std::sscanf(copy.c_str(), "%4d-%2d-%2d %2d:%2d%c", &y, &mo, &d, &h, &mi, &tail) != 5)
    return std::nullopt;
  if (y < 1904 || mo < 1 || mo > 12 || d < 1 || h < 0 || h > 23 || mi < 0 || mi > 59)
    return std::nullopt;
  static const int kMonthDays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
  if (d > kMonthDays[mo - 1] || (mo == 2 && d == 29 && !leap)) return std::nullopt;
  return DaysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d)) * 86400 + h * 3600 +
         mi * 60;
}

}  // namespace qv
