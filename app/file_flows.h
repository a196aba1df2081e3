#pragma once
// New, Open, Reopen, Save, Save As, Close and Exit, the close-with-save rule and the opening of
// the first database at start. No widgets: the screens come through FileDialogs.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/file_dialogs.h"
#include "app/open_hooks.h"
#include "engine/workspace.h"
#include "platform/paths.h"

namespace qv::app {

// The results of CloseCurrent and CloseAll.
inline constexpr int kCloseCancelled = 0;
inline constexpr int kCloseDone = 1;
inline constexpr int kCloseDeclined = 2;

struct FlowServices {
  Workspace& workspace;
  const Paths& paths;
  FileDialogs& dialogs;
  AccessGate& access;
  FormatConverter& converter;
};

class FileFlows {
 public:
  explicit FileFlows(FlowServices services) : s_(services) {}

  // The close-with-save rule on the current slot: 1 go on, 2 the user declined to save,
  // 0 cancelled.
  int CloseCurrent(bool cancellable, bool silent);
  // CloseCurrent down the stack to slot 0, which is left with an empty database.
  int CloseAll(bool cancellable, bool silent);
  // The checked open into the current slot, with the recent-files entry and positioning.
  bool OpenDatabaseFile(const std::string& path);

  // The menu flows; each returns whether the window must be refreshed.
  bool New();
  bool Open();
  bool Reopen(int k);
  bool Save();
  bool SaveAs();
  // Close, then the start chooser; `closed` runs in between (the window empties its list).
  bool Close(const std::function<void()>& closed = {});
  // Exit: false when the user cancelled and the program keeps running.
  bool Exit();

  // At start: the alarm's database, else LastFileUsed, else the start chooser.
  void OpenFirstDatabase();
  void RunStartChooser();
  std::vector<RecentEntry> StartChooserEntries() const;

  // A launch's command line handed over while the program runs: an alarm notification, or a
  // database to open. Returns whether the window must be refreshed.
  bool HandOff(std::string_view text, NotificationHandler& alarms, bool record_open);

  // "NONE" or the path of the current database, written to LastFileUsed.
  void RememberLastFile();

 private:
  Database& db() { return s_.workspace.current(); }
  bool SaveCurrent();  // step 5 of the close rule
  bool SaveWithMessages();
  void ReportSaveFailure(const SaveOutcome& outcome, const std::string& path);
  std::string Proposed();
  void OpenAlarmRecord();

  FlowServices s_;
};

}  // namespace qv::app
