#pragma once
// Every screen the main window opens, behind one interface: the widgets in production, scripted
// answers under tests.

#include <QRect>
#include <optional>
#include <string>
#include <vector>

#include "app/delete_records.h"
#include "app/export_dialog.h"
#include "app/file_dialogs.h"
#include "app/import_dialog.h"
#include "app/long_task.h"
#include "engine/format.h"
#include "engine/workspace.h"
#include "processing/find.h"

namespace qv::app {

struct TimeOfDay {
  int hours = 0;  // 255 = no time
  int minutes = 0;
  int seconds = 0;
};

class Dialogs : public FileDialogs {
 public:
  // The Preferences dialog on a copy; true and the new values on OK.
  virtual bool EditPreferences(Preferences& preferences) = 0;
  virtual std::optional<DeleteScope> AskDeleteScope() = 0;
  // In-list choosers opened over the tapped cell (`cell` in screen coordinates). Texts UTF-8.
  virtual std::optional<std::string> ChoosePopupItem(const std::vector<std::string>& items,
                                                     const std::string& current,
                                                     const QRect& cell) = 0;
  virtual std::optional<Dmy> ChooseDate(const Dmy& current, const QRect& cell) = 0;
  virtual std::optional<TimeOfDay> ChooseTime(const TimeOfDay& current, const QRect& cell) = 0;
  virtual void ShowAbout() = 0;
  // A field's report text (CR LF lines, UTF-8) in the report window.
  virtual void ShowReport(const std::string& text) = 0;
  // The views list of the database (New, Copy, Delete View).
  virtual void EditViews(Database& db, Prompter& prompter) = 0;
  // Whether a record is open in the record editor (an alarm must not replace it then).
  virtual bool IsRecordOpen() const = 0;
  // The database properties on a working copy of `db`, opened on the field editor of `field`
  // (-1: the General page); true when OK stored the changes into `db`.
  virtual bool EditProperties(Database&, int /*field*/) { return false; }

  // The data dialogs. Find returns the settings to search with; Sorting and Edit Filters store
  // on OK themselves (into view `view`, or the current settings for -1) and say whether they did.
  virtual std::optional<FindSettings> AskFind(const Database& db, const FindSettings& current) = 0;
  virtual bool EditSort(Database& db, int view, Prompter& prompter) = 0;
  virtual bool EditFilter(Database& db, int view, const FormatOptions& options,
                          Prompter& prompter) = 0;
  virtual std::optional<ExportRequest> AskExport(const Database& db,
                                                 const Preferences& preferences) = 0;
  virtual std::optional<ImportRequest> AskImport(const Database& db,
                                                 const Preferences& preferences) = 0;
  // "Set Value of: ...": the stored value bytes for field `slot`.
  virtual std::optional<Bytes> AskSetValue(const Database& db, int slot,
                                           const FormatOptions& options, Prompter& prompter) = 0;
  // Runs long work with a progress dialog and Cancel; false when cancelled (see LongTasks).
  virtual bool RunLong(const std::string& title, LongWork work, Prompter& shown) = 0;
};

}  // namespace qv::app
