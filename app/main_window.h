#pragma once
// The main window: the menus of the command table over the record list. It only routes
// commands; the flows, the list and the dialogs live in their own classes.

#include <QMainWindow>
#include <map>
#include <memory>

#include "app/app_context.h"
#include "app/file_flows.h"
#include "app/record_list_panel.h"
#include "app/record_transfer.h"

class QMenu;

namespace qv::app {

class MainWindow : public QMainWindow {
  Q_OBJECT
 public:
  explicit MainWindow(AppContext context, QWidget* parent = nullptr);

  // Opens the first database (or shows the start chooser) and refreshes.
  void OpenFirstDatabase();
  // Runs one command of the command table by its number.
  void RunCommand(int command);
  // The command line of a second launch.
  void HandleLaunchText(const QString& text);

  QAction* action(int command) const;
  RecordListPanel* panel() const { return panel_; }
  FileFlows& flows() { return flows_; }
  RecordTransfer& transfer() { return *transfer_; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QAction* AddCommand(QMenu* menu, const QString& text, int command, bool available = true,
                      const QKeySequence& shortcut = {});
  void BuildMenus();
  void FillReopenMenu();
  void UpdateTitle();
  void Refresh() { panel_->Refresh(); }

  AppContext context_;
  FileFlows flows_;
  RecordListPanel* panel_;
  std::unique_ptr<RecordTransfer> transfer_;
  QMenu* reopen_ = nullptr;
  std::map<int, QAction*> actions_;
  bool exiting_ = false;
};

}  // namespace qv::app
