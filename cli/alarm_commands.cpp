// qvdb alarm: set and clear a record's alarm, list the alarms, and list those due for an outside
// scheduler (cron, a systemd timer) that starts the program with "AppRunToHandleNotification N".

#include <QFileInfo>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/output.h"
#include "cli/record_edit.h"
#include "exchange/alarm_settings.h"
#include "exchange/alarms.h"
#include "platform/qt/qt_settings.h"

namespace qv::cli {

namespace {

constexpr const char* kUsageLine =
    "alarm FILE set RECORD WHEN | FILE clear RECORD | list | due [--at WHEN]";

std::optional<std::int64_t> When(CliContext& context, const QString& text, int& code) {
  auto time = ParseAlarmTime(text.toStdString());
  if (!time)
    code = context.UsageError("WHEN is \"YYYY-MM-DD HH:MM\", not '" + text.toStdString() + "'");
  return time;
}

std::vector<std::string> Row(const AlarmEntry& entry) {
  return {std::to_string(entry.number), AlarmTimeText(entry.time), entry.db_path,
          std::to_string(entry.record + 1)};
}

int List(const Settings& settings) {
  Table table;
  table.headers = {"Alarm", "Time", "Database", "Record", "State"};
  for (const AlarmEntry& entry : ListAlarmEntries(settings)) {
    auto row = Row(entry);
    row.push_back(entry.fired ? "fired, record or database not found" : "set");
    table.rows.push_back(std::move(row));
  }
  WriteTable(table, TableFormat::Text, std::cout);
  return kOk;
}

int Due(CliContext& context, const Settings& settings, const QCommandLineParser& parser) {
  std::int64_t now = context.clock.LocalNow();
  if (parser.isSet("at")) {
    int code = kUsage;
    auto at = When(context, parser.value("at"), code);
    if (!at) return code;
    now = *at;
  }
  for (const AlarmEntry& entry : DueAlarmEntries(settings, now)) {
    auto row = Row(entry);
    std::cout << row[0] << '\t' << row[1] << '\t' << row[2] << '\t' << row[3] << '\n';
  }
  return kOk;
}

int Change(CliContext& context, Settings& settings, const QStringList& args) {
  // The entry names the database by its full path, as the program opens it.
  const std::string path = QFileInfo(args[0]).absoluteFilePath().toStdString();
  const QString action = args[1];
  auto db = context.Open(path, action.toStdString());
  if (!db) return kFailed;
  int code = kFailed;
  auto record = RecordNumber(context, *db, args[2], code);
  if (!record) return code;
  if (action == "set") {
    auto time = When(context, args[3], code);
    if (!time) return code;
    if (!ReadAlarmSettings(db->definition()).allowed) {
      context.Error("this database does not allow alarms (Database Properties, Alarm Settings)");
      return kFailed;
    }
    auto entry = SetRecordAlarm(settings, *db, *record, *time);
    if (!entry) {
      context.Error("no free alarm number");
      return kFailed;
    }
    if (!context.Save(*db)) {
      ClearRecordAlarm(settings, *entry, nullptr, std::nullopt);
      return kFailed;
    }
    std::cout << "alarm " << entry->number << " set for " << AlarmTimeText(*time) << '\n';
    return kOk;
  }
  auto identity = RecordIdentityOf(*db, *record);
  auto entry = identity ? FindAlarmEntry(settings, *identity) : std::nullopt;
  if (!entry) {
    std::cout << "record " << *record + 1 << " has no alarm\n";
    return kOk;
  }
  ClearRecordAlarm(settings, *entry, db.get(), *record);
  return context.Save(*db) ? kOk : kFailed;
}

int Alarm(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file (for set and clear).");
  parser.addPositionalArgument("ACTION", "set, clear, list or due.");
  parser.addOption({"at", "For due: the time to look at instead of now.", "WHEN"});
  if (!context.Parse(parser, arguments, 1, kUsageLine, 4)) return kUsage;
  const QStringList args = parser.positionalArguments();
  QtSettings settings;
  if (args[0] == "list" && args.size() == 1) return List(settings);
  if (args[0] == "due" && args.size() == 1) return Due(context, settings, parser);
  if (args.size() == 4 && args[1] == "set") return Change(context, settings, args);
  if (args.size() == 3 && args[1] == "clear") return Change(context, settings, args);
  return context.UsageError("");
}

}  // namespace

std::vector<Command> AlarmCommands() {
  return {{"alarm", kUsageLine, Alarm,
           "Sets or clears a record's alarm (the database must allow alarms), lists every alarm, "
           "or lists the alarms due now (or --at WHEN) as lines of number, time, database and "
           "record, for a scheduler that starts \"quorvant AppRunToHandleNotification NUMBER\". "
           "WHEN is \"YYYY-MM-DD HH:MM\" in local time; records count from 1.",
           "alarm Tasks.PDB set 3 \"2026-12-24 09:00\""}};
}

}  // namespace qv::cli
