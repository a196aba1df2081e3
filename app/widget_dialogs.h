#pragma once
// The production screens: each request opens its dialog class modally over the main window.

#include <QPointer>
#include <QWidget>
#include <string>

#include "app/dialogs.h"
#include "app/open_hooks.h"

namespace qv::app {

class WidgetDialogs : public Dialogs {
 public:
  void setParent(QWidget* parent) { parent_ = parent; }
  // The workspace the record editor and the properties work in, and the access checks they make.
  void setWorkspace(Workspace* workspace) { workspace_ = workspace; }
  void setAccess(AccessGate* access) { access_ = access; }

  std::optional<std::string> AskOpenPath(const std::string& folder) override;
  std::optional<std::string> AskSavePath(const std::string& proposed) override;
  StartChoice ChooseStart(const std::vector<RecentEntry>& entries) override;
  bool DefineNewDatabase(Database& db) override;
  bool OpenRecord(Database& db, std::uint32_t number, bool view_only) override;
  bool EditPreferences(Preferences& preferences) override;
  std::optional<DeleteScope> AskDeleteScope() override;
  std::optional<std::string> ChoosePopupItem(const std::vector<std::string>& items,
                                             const std::string& current,
                                             const QRect& cell) override;
  std::optional<Dmy> ChooseDate(const Dmy& current, const QRect& cell) override;
  std::optional<TimeOfDay> ChooseTime(const TimeOfDay& current, const QRect& cell) override;
  void ShowAbout() override;
  void ShowReport(const std::string& text) override;
  void EditViews(Database& db, Prompter& prompter) override;
  bool IsRecordOpen() const override { return record_open_; }
  bool EditProperties(Database& db, int field) override;
  // The data dialogs (widget_data_dialogs.cpp).
  std::optional<FindSettings> AskFind(const Database& db, const FindSettings& current) override;
  bool EditSort(Database& db, int view, Prompter& prompter) override;
  bool EditFilter(Database& db, int view, const FormatOptions& options,
                  Prompter& prompter) override;
  std::optional<ExportRequest> AskExport(const Database& db,
                                         const Preferences& preferences) override;
  std::optional<ImportRequest> AskImport(const Database& db,
                                         const Preferences& preferences) override;
  std::optional<Bytes> AskSetValue(const Database& db, int slot, const FormatOptions& options,
                                   Prompter& prompter) override;
  bool RunLong(const std::string& title, LongWork work, Prompter& shown) override;

 private:
  Workspace* workspace_ = nullptr;
  AccessGate* access_ = nullptr;
  OpenAccessGate open_access_;
  QPointer<QWidget> parent_;
  bool record_open_ = false;
  std::string last_import_;  // the file last imported, offered again
  LongTasks long_tasks_;
};

}  // namespace qv::app
