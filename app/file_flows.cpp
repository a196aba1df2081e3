#include "app/file_flows.h"

#include <cstdlib>
#include <memory>

#include "app/core_calls.h"
#include "app/database_paths.h"
#include "app/launch_request.h"
#include "app/preferences_store.h"
#include "app/recent_files.h"
#include "engine/text.h"
#include "exchange/conversion.h"

namespace qv::app {

namespace {
// Byte 11 of the definition's prefix: the whole database was enciphered when it was saved.
constexpr std::uint8_t kDatabaseEnciphered = 0x10;
}  // namespace

// The system's message, then why: held by another program, changed on disk, not writable.
void FileFlows::ReportSaveFailure(const SaveOutcome& outcome, const std::string& path) {
  Prompter& prompter = s_.workspace.prompter;
  prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
  prompter.message(SaveFailureText(outcome, path), "Update", Icon::Error);
}

std::string FileFlows::Proposed() {
  return ProposedPath(s_.paths.DataFolder(), db().name);
}

bool FileFlows::SaveCurrent() {
  Database& d = db();
  Prompter& prompter = s_.workspace.prompter;
  s_.access.EncipherOnClose(s_.workspace, d);
  prompter.busy(true);
  // Reopening puts the user back on this record.
  if (d.current < d.count())
    d.definition().set_return_record(static_cast<std::uint16_t>(d.current + kSchemaRecords));
  SaveOutcome outcome;
  bool ok = SaveDatabase(d, s_.workspace.clock, &outcome);
  if (ok) AddRecentFile(s_.workspace.settings, d.path);
  prompter.busy(false);
  if (!ok) ReportSaveFailure(outcome, d.path);
  return ok;
}

int FileFlows::CloseCurrent(bool cancellable, bool silent) {
  Database& d = db();
  if (!d.loaded || !d.changed) return kCloseDone;
  Prompter& prompter = s_.workspace.prompter;
  const Buttons buttons = cancellable ? Buttons::YesNoCancel : Buttons::YesNo;
  const std::string name = Cp1252ToUtf8(d.name);
  if (!s_.workspace.preferences.auto_save && !silent) {
    for (;;) {
      Answer a = prompter.ask(StringPrintf("File (%s) has changed. Save Changes?", name.c_str()),
                              "QUESTION", buttons, Icon::Question);
      if (a == Answer::No) return kCloseDeclined;
      if (a == Answer::Cancel) return kCloseCancelled;
      if (!d.unsaved()) break;
      // A cancelled Save-as dialog asks the question again.
      if (auto path = s_.dialogs.AskSavePath(Proposed())) {
        d.path = *path;
        break;
      }
    }
  } else if (d.unsaved()) {
    if (silent) {
      d.path = MakeUntitledPath(s_.paths.DataFolder());
    } else {
      Answer a = prompter.ask(
          StringPrintf("Database (%s) has never been saved. Save Changes?", name.c_str()),
          "QUESTION", buttons, Icon::Question);
      if (a == Answer::No) return kCloseDeclined;
      if (a == Answer::Cancel) return kCloseCancelled;
      // Having said Yes, the user is asked for a name until one is given.
      for (;;) {
        if (auto path = s_.dialogs.AskSavePath(Proposed())) {
          d.path = *path;
          break;
        }
      }
    }
  }
  if (SaveCurrent()) return kCloseDone;
  return cancellable ? kCloseCancelled : kCloseDone;
}

int FileFlows::CloseAll(bool cancellable, bool silent) {
  Workspace& ws = s_.workspace;
  int result = kCloseDone;
  for (;;) {
    result = CloseCurrent(cancellable, silent);
    if (result == kCloseCancelled) return result;
    if (!ws.Pop()) break;
  }
  ws.ReplaceCurrent(std::make_unique<Database>());
  return result;
}

bool FileFlows::OpenDatabaseFile(const std::string& path) {
  Workspace& ws = s_.workspace;
  Prompter& prompter = ws.prompter;
  for (int pass = 0;; ++pass) {
    Header header;
    int kind = ReadHeader(path, header);
    // A 2.x file carries the same creator code: its settings record tells it apart.
    const bool older = pass == 0 && kind == 1 && s_.converter.IsOlderFormat(path);
    // The load reports a missing file.
    if (!older && (kind == 1 || (kind == 0 && !TestForFile(path)))) break;
    if (older) {
      Answer a = prompter.ask(kConversionOffer, "QUESTION", Buttons::YesNo, Icon::Question);
      if (a != Answer::Yes) return false;
      if (auto parent = s_.converter.ParentToConvertFirst(path)) {
        prompter.message(StringPrintf(kConvertParentFirst, parent->c_str()), "Error", Icon::Error);
        return false;
      }
      if (!s_.converter.Convert(path, ws)) return false;
      continue;
    }
    prompter.message("ERROR: File selected is not a Quorvant Database!", "Error",
                     Icon::Exclamation);
    return false;
  }
  auto fresh = std::make_unique<Database>();
  prompter.busy(true);
  bool loaded = LoadDatabase(*fresh, path, prompter);
  prompter.busy(false);
  if (!loaded || !s_.access.AllowOpen(ws, *fresh)) return false;
  DatabaseDefinition& definition = fresh->definition();
  if (definition.settings_flags() & kDatabaseEnciphered) {
    if (!s_.access.UnlockLoaded(ws, *fresh)) return false;
    definition.set_settings_flags(definition.settings_flags() & ~kDatabaseEnciphered);
  }
  ws.ReplaceCurrent(std::move(fresh));
  PositionOpenedDatabase(ws, db());
  AddRecentFile(ws.settings, path);
  return true;
}

bool FileFlows::New() {
  Workspace& ws = s_.workspace;
  auto fresh = NewDatabase("Untitled", ws.clock);
  fresh->path = kUntitledPath;
  // Defined first, so Cancel leaves the open database open.
  if (!s_.dialogs.DefineNewDatabase(*fresh)) return false;
  if (CloseCurrent(true, false) == kCloseCancelled) return false;
  ws.ReplaceCurrent(std::move(fresh));
  db().changed = true;
  RebuildList(db());
  return true;
}

bool FileFlows::Open() {
  auto path = s_.dialogs.AskOpenPath(s_.paths.DataFolder());
  if (!path) return false;
  if (CloseCurrent(true, false) == kCloseCancelled) return false;
  s_.workspace.ReplaceCurrent(std::make_unique<Database>());
  OpenDatabaseFile(*path);
  return true;
}

bool FileFlows::Reopen(int k) {
  auto path = GetRecentFile(s_.workspace.settings, k);
  if (!path || path->empty()) return false;
  if (CloseCurrent(true, false) == kCloseCancelled) return false;
  s_.workspace.ReplaceCurrent(std::make_unique<Database>());
  OpenDatabaseFile(*path);
  return true;
}

bool FileFlows::SaveWithMessages() {
  Database& d = db();
  Prompter& prompter = s_.workspace.prompter;
  // The file gets what the encryption mode enciphers; the open database stays readable.
  Database image = d;
  s_.access.EncipherOnClose(s_.workspace, image);
  d.session_password = image.session_password;
  prompter.busy(true);
  SaveOutcome outcome;
  bool ok = SaveDatabase(image, s_.workspace.clock, &outcome);
  prompter.busy(false);
  d.header = image.header;
  d.changed = image.changed;
  d.disk = image.disk;
  if (ok) {
    AddRecentFile(s_.workspace.settings, d.path);
    prompter.message("File Saved", "Update", Icon::Information);
  } else {
    ReportSaveFailure(outcome, d.path);
  }
  return ok;
}

bool FileFlows::Save() {
  Database& d = db();
  if (!d.loaded) return false;
  if (d.unsaved()) {
    auto path = s_.dialogs.AskSavePath(Proposed());
    if (!path) return false;
    d.path = *path;
  }
  SaveWithMessages();
  return true;
}

bool FileFlows::SaveAs() {
  Database& d = db();
  if (!d.loaded) return false;
  auto path = s_.dialogs.AskSavePath(d.unsaved() ? Proposed() : d.path);
  if (!path) return false;
  std::string previous = d.path;
  d.path = *path;
  // A failed save keeps the database where it was, so nothing claims a file that is not there.
  if (!SaveWithMessages()) d.path = previous;
  return true;
}

bool FileFlows::Close(const std::function<void()>& closed) {
  if (CloseCurrent(true, false) == kCloseCancelled) return false;
  s_.workspace.ReplaceCurrent(std::make_unique<Database>());
  if (closed) closed();
  RunStartChooser();
  return true;
}

bool FileFlows::Exit() {
  if (CloseCurrent(true, false) == kCloseCancelled) return false;
  // Written after the question, so a database saved under a new name is the one reopened.
  RememberLastFile();
  // Changes the user declined to save must not be saved by the shut-down that follows.
  s_.workspace.ReplaceCurrent(std::make_unique<Database>());
  return true;
}

void FileFlows::RememberLastFile() {
  const Database& d = db();
  s_.workspace.settings.write("LastFileUsed", d.loaded && !d.unsaved() ? d.path : "NONE");
}

void FileFlows::OpenFirstDatabase() {
  Workspace& ws = s_.workspace;
  Settings& settings = ws.settings;
  ws.preferences = ReadPreferences(settings);
  bool opened = false;
  auto alarm = settings.read("AlarmDatabase");
  if (alarm && !alarm->empty()) {
    settings.write("AlarmDatabase", "");
    if (TestForFile(*alarm) && OpenDatabaseFile(*alarm)) {
      opened = true;
      OpenAlarmRecord();
    }
  }
  if (!opened) {
    auto last = settings.read("LastFileUsed");
    if (last && *last != "NONE" && TestForFile(*last)) OpenDatabaseFile(*last);
  }
  if (!db().loaded) RunStartChooser();
}

void FileFlows::OpenAlarmRecord() {
  auto record = s_.workspace.settings.read("LastRecord");
  if (!record) return;
  long n = std::strtol(record->c_str(), nullptr, 10);
  if (n < 0 || static_cast<unsigned long>(n) >= db().count()) return;
  db().current = static_cast<std::uint32_t>(n);
  // The editor is chosen as for a tap on the record's row.
  int access = s_.access.CheckAccess(s_.workspace, db(), Guarded::EditRecords, true);
  if (access != kAccessRefused)
    s_.dialogs.OpenRecord(db(), db().current, access == kAccessViewOnly);
}

bool FileFlows::HandOff(std::string_view text, NotificationHandler& alarms, bool record_open) {
  Workspace& ws = s_.workspace;
  LaunchRequest request = ParseLaunchText(text);
  if (request.kind == LaunchRequest::OpenFile) {
    if (CloseCurrent(true, false) == kCloseCancelled) return false;
    ws.ReplaceCurrent(std::make_unique<Database>());
    OpenDatabaseFile(request.path);
    return true;
  }
  if (request.kind != LaunchRequest::Notification) return false;
  int number = NotificationNumber(request.text);
  if (number == 0 || alarms.HandleNotification(number, ws) != 2) return false;
  if (record_open) {
    ws.prompter.message(
        "Cannot open this record, as you are in the midst of an edit. Please open this database "
        "manually when you are finished editing.",
        "Error", Icon::Error);
    return false;
  }
  auto path = ws.settings.read("AlarmDatabase");
  if (!path || path->empty()) return false;
  if (CloseCurrent(true, false) == kCloseCancelled) return false;
  ws.ReplaceCurrent(std::make_unique<Database>());
  bool opened = OpenDatabaseFile(*path);
  ws.settings.write("AlarmDatabase", "");
  if (opened) OpenAlarmRecord();
  return true;
}

std::vector<RecentEntry> FileFlows::StartChooserEntries() const {
  std::vector<RecentEntry> entries;
  for (int k = 0; k < kRecentFiles; ++k) {
    auto path = GetRecentFile(s_.workspace.settings, k);
    if (!path) break;
    Header header;
    if (path->empty() || ReadHeader(*path, header) != 1) continue;
    entries.push_back({Cp1252ToUtf8(header.Name()), k});
  }
  return entries;
}

void FileFlows::RunStartChooser() {
  StartChoice choice = s_.dialogs.ChooseStart(StartChooserEntries());
  switch (choice.kind) {
    case StartChoice::CreateNew:
      New();
      break;
    case StartChoice::MoreFiles:
      Open();
      break;
    case StartChoice::Recent:
      Reopen(choice.recent_index);
      break;
    case StartChoice::Dismissed:
      break;
  }
}

}  // namespace qv::app
