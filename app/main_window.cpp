#include "app/main_window.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QMenuBar>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>

#include "app/commands.h"
#include "app/help_page.h"
#include "app/recent_files.h"
#include "app/window_title.h"

namespace qv::app {

MainWindow::MainWindow(AppContext context, QWidget* parent)
    : QMainWindow(parent),
      context_(context),
      flows_(FlowServices{context.workspace, context.paths, context.dialogs, context.access,
                          context.converter}) {
  setWindowTitle("Quorvant");
  panel_ = new RecordListPanel(context_.workspace, context_.dialogs, context_.access, this);
  setCentralWidget(panel_);
  transfer_ = std::make_unique<RecordTransfer>(context_, this);
  BuildMenus();
  statusBar()->setSizeGripEnabled(true);
  connect(panel_, &RecordListPanel::databaseChanged, this, &MainWindow::UpdateTitle);
  resize(920, 600);
  UpdateTitle();
}

QAction* MainWindow::AddCommand(QMenu* menu, const QString& text, int command, bool available,
                                const QKeySequence& shortcut) {
  QAction* action = menu->addAction(text);
  action->setData(command);
  action->setEnabled(available);
  if (!shortcut.isEmpty()) action->setShortcut(shortcut);
  connect(action, &QAction::triggered, this, [this, command] { RunCommand(command); });
  actions_[command] = action;
  return action;
}

void MainWindow::BuildMenus() {
  using namespace command;
  QMenu* file = menuBar()->addMenu(tr("&File"));
  AddCommand(file, tr("New"), kNew, true, QKeySequence::New);
  AddCommand(file, tr("Open..."), kOpen, true, QKeySequence::Open);
  reopen_ = file->addMenu(tr("Reopen"));
  for (int k = 0; k < kRecentFiles; ++k) AddCommand(reopen_, QString(), kReopenFirst + k);
  reopen_->addSeparator();
  AddCommand(reopen_, tr("More Files..."), kMoreFiles);
  connect(reopen_, &QMenu::aboutToShow, this, &MainWindow::FillReopenMenu);
  FillReopenMenu();
  AddCommand(file, tr("Save"), kSave, true, QKeySequence::Save);
  AddCommand(file, tr("Save As..."), kSaveAs, true, QKeySequence::SaveAs);
  AddCommand(file, tr("Close"), kClose, true, QKeySequence::Close);
  file->addSeparator();
  AddCommand(file, tr("Preferences..."), kPreferences);
  // Commands whose features arrive later are listed and disabled.
  AddCommand(file, tr("DB Properties..."), kDbProperties, false);
  file->addSeparator();
  AddCommand(file, tr("Exit"), kExit, true, QKeySequence::Quit);

  QMenu* actions = menuBar()->addMenu(tr("&Actions"));
  AddCommand(actions, tr("Find..."), kFind, false, QKeySequence::Find);
  AddCommand(actions, tr("Find Again"), kFindAgain, false, QKeySequence::FindNext);
  AddCommand(actions, tr("Sort..."), kSort, false);
  AddCommand(actions, tr("Filter..."), kFilter, false);
  actions->addSeparator();
  AddCommand(actions, tr("Delete Records..."), kDeleteRecords);
  AddCommand(actions, tr("Run Report..."), kRunReport);
  actions->addSeparator();
  AddCommand(actions, tr("Move Records To..."), kMoveRecords);
  AddCommand(actions, tr("Copy Records To..."), kCopyRecords);
  AddCommand(actions, tr("Export Records..."), kExportRecords, false);
  AddCommand(actions, tr("Print Records..."), kPrintRecords);
  actions->addSeparator();
  AddCommand(actions, tr("Beam Records..."), kBeamRecords, false);
  AddCommand(actions, tr("Beam Database..."), kBeamDatabase, false);
  AddCommand(actions, tr("Receive Via Infrared..."), kReceive, false);

  QMenu* help = menuBar()->addMenu(tr("&Help"));
  QAction* contents = help->addAction(tr("Quorvant Help"));
  contents->setShortcut(QKeySequence::HelpContents);
  connect(contents, &QAction::triggered, this, [this] { OpenHelpPage(context_.paths); });
  AddCommand(help, tr("About"), kAbout);

  QToolBar* tools = addToolBar(tr("Commands"));
  tools->setObjectName("commands");
  tools->setMovable(false);
  tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  actions_[kNew]->setIcon(style()->standardIcon(QStyle::SP_FileIcon));
  actions_[kOpen]->setIcon(style()->standardIcon(QStyle::SP_DialogOpenButton));
  actions_[kSave]->setIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));
  actions_[kDeleteRecords]->setIcon(style()->standardIcon(QStyle::SP_TrashIcon));
  for (int c : {kNew, kOpen, kSave}) tools->addAction(actions_[c]);
  tools->addSeparator();
  tools->addAction(actions_[kDeleteRecords]);
}

void MainWindow::FillReopenMenu() {
  auto files = ReadRecentFiles(context_.workspace.settings);
  for (int k = 0; k < kRecentFiles; ++k) {
    QAction* entry = actions_[command::kReopenFirst + k];
    const std::string& path = files[static_cast<std::size_t>(k)];
    entry->setVisible(!path.empty());
    QString name = QFileInfo(QString::fromStdString(path)).fileName().replace("&", "&&");
    entry->setText(QString("&%1 %2").arg(k == 9 ? 0 : k + 1).arg(name));
    entry->setToolTip(QString::fromStdString(path));
  }
}

QAction* MainWindow::action(int command) const {
  auto it = actions_.find(command);
  return it == actions_.end() ? nullptr : it->second;
}

void MainWindow::UpdateTitle() {
  const bool open = context_.workspace.has_open_database();
  setWindowTitle(QString::fromStdString(WindowTitle(context_.workspace)));
  for (int c :
       {command::kSave, command::kSaveAs, command::kClose, command::kDeleteRecords,
        command::kRunReport, command::kMoveRecords, command::kCopyRecords, command::kPrintRecords})
    actions_[c]->setEnabled(open);
}

void MainWindow::OpenFirstDatabase() {
  flows_.OpenFirstDatabase();
  Refresh();
}

void MainWindow::RunCommand(int command) {
  using namespace command;
  bool refresh = false;
  if (command >= kReopenFirst && command <= kReopenLast) {
    refresh = flows_.Reopen(command - kReopenFirst);
  } else {
    switch (command) {
      case kNew: refresh = flows_.New(); break;
      case kOpen:
      case kMoreFiles: refresh = flows_.Open(); break;
      case kSave:
      case kSaveAs:
        if (command == kSave ? flows_.Save() : flows_.SaveAs()) UpdateTitle();
        return;
      case kClose: refresh = flows_.Close(); break;
      case kPreferences: {
        Preferences p = context_.workspace.preferences;
        if (context_.dialogs.EditPreferences(p)) context_.workspace.preferences = p;
        return;
      }
      case kExit:
        if (!flows_.Exit()) return;
        exiting_ = true;
        close();
        return;
      case kDeleteRecords: panel_->DeleteRecords(); return;
      case kRunReport: panel_->RunFieldReport(panel_->CurrentSlot()); return;
      case kAbout: context_.dialogs.ShowAbout(); return;
      case kPrintRecords:
        transfer_->Print();
        return;
      case kMoveRecords:
      case kCopyRecords:
        refresh = transfer_->Transfer(command == kMoveRecords);
        break;
      default: return;
    }
  }
  if (refresh) Refresh();
}

void MainWindow::HandleLaunchText(const QString& text) {
  if (flows_.HandOff(text.toStdString(), context_.alarms, context_.dialogs.IsRecordOpen())) Refresh();
  raise();
  activateWindow();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!exiting_) {
    // The close box: saved silently, as the shut-down would, then remembered for the next start.
    flows_.CloseCurrent(false, true);
    flows_.RememberLastFile();
  }
  event->accept();
}

}  // namespace qv::app
