#include "app/main_window.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QUndoStack>

#include "app/commands.h"
#include "app/help_page.h"
#include "app/linked_navigation.h"
#include "app/recent_files.h"
#include "app/status_text.h"
#include "app/window_title.h"

namespace qv::app {

MainWindow::MainWindow(AppContext context, QWidget* parent)
    : QMainWindow(parent),
      context_(context),
      flows_(FlowServices{context.workspace, context.paths, context.dialogs, context.access,
                          context.converter}),
      history_(context.workspace) {
  setWindowTitle("Quorvant");
  panel_ = new RecordListPanel(context_.workspace, context_.dialogs, context_.access, this);
  setCentralWidget(panel_);
  panel_->setHistory(&history_);
  panel_->setSaveCurrent([this] { flows_.Save(); });
  connect(&history_, &EditHistory::applied, this, &MainWindow::Refresh);
  transfer_ = std::make_unique<RecordTransfer>(context_, this);
  beaming_ = std::make_unique<Beaming>(
      context_, this, [this] { Refresh(); }, [this] { return flows_.Save(); });
  BuildMenus();
  statusBar()->setSizeGripEnabled(true);
  connect(panel_, &RecordListPanel::databaseChanged, this, &MainWindow::UpdateTitle);
  launches_ = new LaunchQueue([this] { return Busy(); },
                              [this](const QString& text) { DeliverLaunchText(text); }, this);
  AddLinkBar();
  resize(920, 600);
  UpdateTitle();
}

void MainWindow::AddLinkBar() {
  link_bar_ = new LinkBar(context_.workspace, flows_, this);
  addToolBarBreak();
  QToolBar* strip = addToolBar(tr("Linked databases"));
  strip->setObjectName("links");
  strip->setMovable(false);
  strip->addWidget(link_bar_);
  strip->setVisible(false);
  connect(panel_, &RecordListPanel::databaseChanged, link_bar_, [this, strip] {
    link_bar_->Update();
    strip->setVisible(context_.workspace.index() > 0);
  });
  connect(link_bar_, &LinkBar::stackChanged, &history_, &EditHistory::Clear);
  connect(link_bar_, &LinkBar::returned, this, &MainWindow::Refresh);
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
  AddCommand(file, tr("&New"), kNew, true, QKeySequence::New);
  AddCommand(file, tr("&Open..."), kOpen, true, QKeySequence::Open);
  reopen_ = file->addMenu(tr("&Reopen"));
  for (int k = 0; k < kRecentFiles; ++k) AddCommand(reopen_, QString(), kReopenFirst + k);
  reopen_->addSeparator();
  AddCommand(reopen_, tr("More Files..."), kMoreFiles);
  connect(reopen_, &QMenu::aboutToShow, this, &MainWindow::FillReopenMenu);
  FillReopenMenu();
  AddCommand(file, tr("&Save"), kSave, true, QKeySequence::Save);
  AddCommand(file, tr("Save &As..."), kSaveAs, true, QKeySequence::SaveAs);
  AddCommand(file, tr("&Close"), kClose, true, QKeySequence::Close);
  file->addSeparator();
  AddCommand(file, tr("&Import CSV..."), kImportCsv, true, QKeySequence(tr("Ctrl+I")));
  file->addSeparator();
  AddCommand(file, tr("&Preferences..."), kPreferences);
  AddCommand(file, tr("DB Properties..."), kDbProperties);
  file->addSeparator();
  AddCommand(file, tr("E&xit"), kExit, true, QKeySequence::Quit);

  BuildEditMenu();
  QMenu* actions = menuBar()->addMenu(tr("&Actions"));
  AddCommand(actions, tr("New Record"), kNewRecord, true, QKeySequence(Qt::Key_Insert));
  actions->addSeparator();
  AddCommand(actions, tr("&Find..."), kFind, true, QKeySequence::Find);
  AddCommand(actions, tr("Find &Again"), kFindAgain, true, QKeySequence(Qt::Key_F3));
  AddCommand(actions, tr("&Sort..."), kSort, true, QKeySequence(tr("Ctrl+T", "Sort")));
  AddCommand(actions, tr("F&ilter..."), kFilter, true, QKeySequence(tr("Ctrl+L", "Filter")));
  actions->addSeparator();
  AddCommand(actions, tr("&Delete Records..."), kDeleteRecords);
  AddCommand(actions, tr("Run &Report..."), kRunReport, true, QKeySequence(tr("Ctrl+R")));
  actions->addSeparator();
  AddCommand(actions, tr("Move Records To..."), kMoveRecords);
  AddCommand(actions, tr("Copy Records To..."), kCopyRecords);
  AddCommand(actions, tr("&Export Records..."), kExportRecords, true, QKeySequence(tr("Ctrl+E")));
  AddCommand(actions, tr("Print Records..."), kPrintRecords);
  actions->addSeparator();
  AddCommand(actions, tr("Beam Records..."), kBeamRecords);
  AddCommand(actions, tr("Beam Database..."), kBeamDatabase);
  AddCommand(actions, tr("Receive Via Infrared..."), kReceive);

  QMenu* help = menuBar()->addMenu(tr("&Help"));
  QAction* contents = help->addAction(tr("Quorvant &Help"));
  contents->setShortcut(QKeySequence::HelpContents);
  connect(contents, &QAction::triggered, this, [this] {
    if (OpenHelpPage(context_.paths)) return;
    QString path = QString::fromStdString(HelpPagePath(context_.paths));
    QMessageBox::information(
        this, tr("Quorvant Help"),
        tr("No web browser could be started.\n\nThe user guide is the file\n%1\n"
           "Open it in any web browser.")
            .arg(path));
  });
  AddCommand(help, tr("&About"), kAbout);

  QToolBar* tools = addToolBar(tr("Commands"));
  tools->setObjectName("commands");
  tools->setMovable(false);
  tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  actions_[kNew]->setIcon(style()->standardIcon(QStyle::SP_FileIcon));
  actions_[kOpen]->setIcon(style()->standardIcon(QStyle::SP_DialogOpenButton));
  actions_[kSave]->setIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));
  actions_[kDeleteRecords]->setIcon(style()->standardIcon(QStyle::SP_TrashIcon));
  actions_[kNewRecord]->setIcon(style()->standardIcon(QStyle::SP_FileDialogNewFolder));
  for (int c : {kNew, kOpen, kSave}) tools->addAction(actions_[c]);
  tools->addSeparator();
  tools->addAction(actions_[kNewRecord]);
  tools->addAction(actions_[kDeleteRecords]);
}

void MainWindow::BuildEditMenu() {
  // The entries name what they would undo or redo: "Undo Edit Record".
  QMenu* edit = menuBar()->addMenu(tr("&Edit"));
  QAction* undo = history_.stack()->createUndoAction(this, tr("Undo"));
  undo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
  QAction* redo = history_.stack()->createRedoAction(this, tr("Redo"));
  redo->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
  edit->addAction(undo);
  edit->addAction(redo);
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
  // Whether the name is shared is read from the recent files once per opened file.
  const std::string path = open ? context_.workspace.current().path : std::string();
  if (path != titled_path_) {
    titled_path_ = path;
    name_shared_ = open && NameSharedWithRecentFile(context_.workspace);
  }
  setWindowTitle(QString::fromStdString(name_shared_ ? TitleNamingFile(context_.workspace)
                                                     : WindowTitle(context_.workspace)));
  for (int c : {command::kSave, command::kSaveAs, command::kClose, command::kDeleteRecords,
                command::kRunReport, command::kDbProperties, command::kNewRecord, command::kFind,
                command::kFindAgain, command::kSort, command::kFilter, command::kExportRecords,
                command::kImportCsv, command::kMoveRecords, command::kCopyRecords,
                command::kPrintRecords, command::kBeamRecords, command::kBeamDatabase})
    actions_[c]->setEnabled(open);
  statusBar()->showMessage(QString::fromStdString(ListStatusText(context_.workspace)));
}

namespace {
// Counts a command as running for as long as it is in scope.
struct Running {
  explicit Running(int& d) : depth(d) { ++depth; }
  ~Running() { --depth; }
  int& depth;
};
}  // namespace

bool MainWindow::Busy() const {
  return running_ > 0 || ModalInteractionOpen() || context_.dialogs.IsRecordOpen();
}

void MainWindow::OpenFirstDatabase() {
  Running running(running_);
  flows_.OpenFirstDatabase();
  Refresh();
}

void MainWindow::RunCommand(int command) {
  using namespace command;
  Running running(running_);
  bool refresh = false;
  // Commands that replace or close the database go back from linked databases first.
  const bool leaves = command == kNew || command == kOpen || command == kMoreFiles ||
                      command == kClose || command == kExit ||
                      (command >= kReopenFirst && command <= kReopenLast);
  if (leaves && context_.workspace.index() > 0) {
    bool back = ReturnToFirstDatabase(context_.workspace, flows_);
    Refresh();
    if (!back) return;
  }
  if (command >= kReopenFirst && command <= kReopenLast) {
    refresh = flows_.Reopen(command - kReopenFirst);
  } else {
    switch (command) {
      case kNew:
        refresh = flows_.New();
        break;
      case kOpen:
      case kMoreFiles:
        refresh = flows_.Open();
        break;
      case kSave:
      case kSaveAs:
        if (command == kSave ? flows_.Save() : flows_.SaveAs()) UpdateTitle();
        return;
      case kClose:
        refresh = flows_.Close([this] { Refresh(); });
        break;
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
      case kDeleteRecords:
        panel_->DeleteRecords();
        return;
      case kNewRecord:
        panel_->NewRecord();
        return;
      case kDbProperties:
        panel_->EditProperties();
        return;
      case kRunReport:
        panel_->RunFieldReport(panel_->CurrentSlot());
        return;
      case kFind:
      case kFindAgain: {
        auto match = command == kFind ? panel_->data().Find() : panel_->data().FindAgain();
        if (match) panel_->SelectMatch(*match);
        return;
      }
      case kSort:
        refresh = panel_->data().Sort();
        break;
      case kFilter:
        refresh = panel_->data().Filter();
        break;
      case kExportRecords:
        panel_->data().Export();
        return;
      case kImportCsv:
        refresh = panel_->data().Import();
        break;
      case kPrintRecords:
        transfer_->Print();
        return;
      case kMoveRecords:
      case kCopyRecords:
        refresh = transfer_->Transfer(command == kMoveRecords);
        break;
      case kBeamRecords:
        beaming_->BeamRecords();
        return;
      case kBeamDatabase:
        beaming_->BeamDatabase();
        UpdateTitle();
        return;
      case kReceive:
        beaming_->Receive();
        return;
      case kAbout:
        context_.dialogs.ShowAbout();
        return;
      default:
        return;
    }
  }
  // Another database (or none): nothing before it can be undone.
  if (refresh) history_.Clear();
  if (refresh) Refresh();
}

void MainWindow::HandleLaunchText(const QString& text) {
  launches_->Post(text);
}

void MainWindow::DeliverLaunchText(const QString& text) {
  Running running(running_);
  if (flows_.HandOff(text.toStdString(), context_.alarms, context_.dialogs.IsRecordOpen()))
    history_.Clear();
  // An alarm of the open database changes it even when no other database is opened.
  Refresh();
  raise();
  activateWindow();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!exiting_) {
    // The close box: saved silently, as the shut-down would, then remembered for the next start.
    while (context_.workspace.index() > 0) {
      flows_.CloseCurrent(false, true);
      context_.workspace.Pop();
    }
    flows_.CloseCurrent(false, true);
    flows_.RememberLastFile();
  }
  event->accept();
}

}  // namespace qv::app
