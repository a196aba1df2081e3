#pragma once
// The main window: the menus of the command table over the record list. It only routes
// commands; the flows, the list and the dialogs live in their own classes.

#include <QMainWindow>
#include <map>
#include <string>
#include <memory>

#include "app/app_context.h"
#include "app/beaming.h"
#include "app/edit_history.h"
#include "app/file_flows.h"
#include "app/launch_queue.h"
#include "app/link_bar.h"
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
  // The command line of a second launch; held until no dialog, edit or command is open.
  void HandleLaunchText(const QString& text);
  LaunchQueue& launches() { return *launches_; }

  QAction* action(int command) const;
  RecordListPanel* panel() const { return panel_; }
  FileFlows& flows() { return flows_; }
  EditHistory& history() { return history_; }
  RecordTransfer& transfer() { return *transfer_; }
  Beaming& beaming() { return *beaming_; }
  LinkBar* linkBar() const { return link_bar_; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QAction* AddCommand(QMenu* menu, const QString& text, int command, bool available = true,
                      const QKeySequence& shortcut = {});
  void BuildMenus();
  void AddLinkBar();
  void BuildEditMenu();
  void FillReopenMenu();
  void UpdateTitle();
  void Refresh() { panel_->Refresh(); }
  void DeliverLaunchText(const QString& text);
  bool Busy() const;

  AppContext context_;
  FileFlows flows_;
  EditHistory history_;
  RecordListPanel* panel_;
  std::unique_ptr<RecordTransfer> transfer_;
  std::unique_ptr<Beaming> beaming_;
  QMenu* reopen_ = nullptr;
  std::map<int, QAction*> actions_;
  bool exiting_ = false;
  int running_ = 0;  // commands in progress (their dialogs may hold the database)
  LaunchQueue* launches_;
  LinkBar* link_bar_;
  std::string titled_path_;  // the file the title was last made for
  bool name_shared_ = false;
};

}  // namespace qv::app
