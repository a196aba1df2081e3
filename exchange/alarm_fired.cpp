#include "exchange/alarm_fired.h"

#include <memory>

#include "engine/atomic_file.h"
#include "exchange/alarm_settings.h"
#include "security/record_header.h"

namespace qv {

namespace {

// Enciphered bytes are never shown as values.
std::string ShownText(const Database& db, std::uint32_t record, int slot,
                      const FormatOptions& options) {
  auto header = ReadRecordHeader(db.records[record].data);
  const bool body = header && header->has(kRecordBodyEnciphered);
  const bool fields = header && header->has(kRecordFieldsEnciphered);
  if (body || (fields && db.definition().field(slot).encrypted())) return "(enciphered)";
  return RecordValueText(db, record, slot, options);
}

AlarmReminder MakeReminder(const Database& db, std::uint32_t record, const FormatOptions& options) {
  AlarmReminder reminder;
  reminder.database_name = db.name;
  const AlarmSettings settings = ReadAlarmSettings(db.definition());
  for (int i = 0; i < 2; ++i) {
    int slot = settings.reminder_fields[i];
    if (slot < 0) continue;
    reminder.field_names[i] = db.definition().field(slot).name();
    reminder.field_texts[i] = ShownText(db, record, slot, options);
  }
  return reminder;
}

void SaveAlarmDatabase(Workspace& workspace, Database& db) {
  if (!db.changed) return;
  SaveOutcome outcome;
  if (SaveDatabase(db, workspace.clock, &outcome)) return;
  workspace.prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
  workspace.prompter.message(SaveFailureText(outcome, db.path), "Update", Icon::Error);
}

}  // namespace

int AlarmFired(Workspace& workspace, const AlarmEntry& entry, AlarmScreens& screens,
               Database* open) {
  Prompter& prompter = workspace.prompter;
  screens.PlaySound();
  std::unique_ptr<Database> own;
  // The program's own database is worked on in place, unless the file was changed since the
  // program read it (qvdb set this alarm, say): then the alarm works on the file itself.
  Database* db = open && open->loaded && open->path == entry.db_path &&
                         open->disk.SameFile(StampOf(entry.db_path))
                     ? open
                     : nullptr;
  if (!db) {
    own = std::make_unique<Database>();
    SilentPrompter quiet;
    if (!LoadDatabase(*own, entry.db_path, quiet)) {
      prompter.message(
          "Error: Could not open database for alarm.  Perhaps the database has been deleted?",
          "Error", Icon::Error);
      MarkAlarmFired(workspace.settings, entry.number);
      return kAlarmHandled;
    }
    db = own.get();
  }
  auto record = FindRecordByIdentity(*db, entry.guid, entry.record);
  if (!record) {
    prompter.message("An Alarm has gone off but the record no longer exists in this databsae.",
                     "Error", Icon::Error);
    MarkAlarmFired(workspace.settings, entry.number);
    return kAlarmHandled;
  }
  const AlarmChoice choice = screens.ShowReminder(MakeReminder(*db, *record, workspace.options));
  ClearRecordAlarm(workspace.settings, entry, db, *record);
  int result = kAlarmHandled;
  if (choice == AlarmChoice::Snooze) {
    const std::int64_t seconds = ReadAlarmSettings(db->definition()).SnoozeSeconds();
    SetRecordAlarm(workspace.settings, *db, *record, workspace.clock.LocalNow() + seconds);
  } else if (choice == AlarmChoice::GotoRecord) {
    workspace.settings.write("AlarmDatabase", db->path);
    workspace.settings.write("LastRecord", std::to_string(*record));
    result = kAlarmShowRecord;
  }
  if (own) SaveAlarmDatabase(workspace, *own);
  return result;
}

int HandleAlarmNotification(Workspace& workspace, std::uint32_t number, AlarmScreens& screens,
                            Database* open) {
  auto entry = LoadAlarmEntry(workspace.settings, number);
  if (!entry) return kAlarmNotLoaded;
  return AlarmFired(workspace, *entry, screens, open);
}

}  // namespace qv
