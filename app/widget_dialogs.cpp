#include "app/widget_dialogs.h"

#include <QFileDialog>
#include <QMenu>

#include "app/about_dialog.h"
#include "app/date_chooser.h"
#include "app/delete_records_dialog.h"
#include "app/field_editor_dialog.h"
#include "app/properties_dialog.h"
#include "app/record_editor_dialog.h"
#include "app/preferences_dialog.h"
#include "app/preferences_store.h"
#include "app/report_dialog.h"
#include "app/start_chooser_dialog.h"
#include "app/time_chooser.h"
#include "app/views_dialog.h"

namespace qv::app {

namespace {

const char kFilter[] = "Quorvant Files (*.pdb *.PDB);;All Files (*)";

std::optional<std::string> RunFileDialog(QWidget* parent, QFileDialog::AcceptMode mode,
                                         const std::string& start) {
  QFileDialog dialog(
      parent, mode == QFileDialog::AcceptOpen ? QObject::tr("Open") : QObject::tr("Save As"));
  dialog.setAcceptMode(mode);
  dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile
                                                     : QFileDialog::AnyFile);
  dialog.setNameFilter(kFilter);
  dialog.setDefaultSuffix("PDB");
  QFileInfo info(QString::fromStdString(start));
  if (mode == QFileDialog::AcceptOpen) {
    dialog.setDirectory(info.isDir() ? info.absoluteFilePath() : info.absolutePath());
  } else {
    dialog.setDirectory(info.absolutePath());
    dialog.selectFile(info.fileName());
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().first().toStdString();
}

// Places a small chooser just below the tapped cell, kept on the screen.
void PlaceAt(QWidget* dialog, const QRect& cell) {
  if (cell.isNull()) return;
  dialog->adjustSize();
  dialog->move(cell.bottomLeft());
}

}  // namespace

std::optional<std::string> WidgetDialogs::AskOpenPath(const std::string& folder) {
  return RunFileDialog(parent_, QFileDialog::AcceptOpen, folder);
}

std::optional<std::string> WidgetDialogs::AskSavePath(const std::string& proposed) {
  return RunFileDialog(parent_, QFileDialog::AcceptSave, proposed);
}

StartChoice WidgetDialogs::ChooseStart(const std::vector<RecentEntry>& entries) {
  StartChooserDialog dialog(entries, parent_);
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.choice();
}

bool WidgetDialogs::DefineNewDatabase(Database& db) {
  if (!workspace_) return false;
  // A new database starts on the Fields page, where its fields are made.
  PropertiesDialog dialog(*workspace_, access_ ? *access_ : open_access_, db, parent_);
  dialog.ShowPage(PropertiesDialog::kFieldsPage);
  if (dialog.exec() != QDialog::Accepted) return false;
  dialog.TakeResult(db);
  return true;
}

bool WidgetDialogs::OpenRecord(Database& db, std::uint32_t number, bool view_only) {
  if (!workspace_ || (number >= db.count() && number != kNewRecord)) return false;
  record_open_ = true;
  RecordEditorDialog dialog(*workspace_, db, access_ ? *access_ : open_access_, number, view_only,
                            parent_);
  if (dialog.Start()) dialog.exec();
  record_open_ = false;
  return dialog.changed();
}

bool WidgetDialogs::EditProperties(Database& db, int field) {
  if (!workspace_) return false;
  AccessGate& access = access_ ? *access_ : open_access_;
  if (field >= 0) {
    // "Field Properties" of the column menu: the field editor alone, on a working copy.
    Database copy = db;
    FieldEditorDialog dialog(*workspace_, copy, field, parent_);
    if (dialog.exec() != QDialog::Accepted) return false;
    db = std::move(copy);
    db.changed = true;
    return true;
  }
  PropertiesDialog dialog(*workspace_, access, db, parent_);
  if (dialog.exec() != QDialog::Accepted) return false;
  dialog.TakeResult(db);
  return true;
}

bool WidgetDialogs::EditPreferences(Preferences& preferences) {
  PreferencesDialog dialog(preferences, parent_);
  if (workspace_) dialog.setBeaming(ReadBeamPreferences(workspace_->settings));
  if (dialog.exec() != QDialog::Accepted) return false;
  preferences = dialog.values(preferences);
  if (workspace_) WriteBeamPreferences(workspace_->settings, dialog.beaming());
  return true;
}

std::optional<DeleteScope> WidgetDialogs::AskDeleteScope() {
  DeleteRecordsDialog dialog(parent_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.scope();
}

std::optional<std::string> WidgetDialogs::ChoosePopupItem(const std::vector<std::string>& items,
                                                          const std::string& current,
                                                          const QRect& cell) {
  if (items.empty()) return std::nullopt;
  QMenu menu(parent_);
  for (std::size_t i = 0; i < items.size(); ++i) {
    // "&" would otherwise mark a shortcut letter.
    QAction* action = menu.addAction(QString::fromStdString(items[i]).replace("&", "&&"));
    action->setData(static_cast<int>(i));
    action->setCheckable(true);
    action->setChecked(items[i] == current);
  }
  QAction* chosen = menu.exec(cell.bottomLeft());
  if (!chosen) return std::nullopt;
  return items[static_cast<std::size_t>(chosen->data().toInt())];
}

std::optional<Dmy> WidgetDialogs::ChooseDate(const Dmy& current, const QRect& cell) {
  DateChooser dialog(current, parent_);
  PlaceAt(&dialog, cell);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.date();
}

std::optional<TimeOfDay> WidgetDialogs::ChooseTime(const TimeOfDay& current, const QRect& cell) {
  TimeChooser dialog(current, parent_);
  PlaceAt(&dialog, cell);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.time();
}

void WidgetDialogs::ShowAbout() {
  AboutDialog dialog(parent_);
  dialog.exec();
}

void WidgetDialogs::ShowReport(const std::string& text) {
  ReportDialog dialog(text, parent_);
  dialog.exec();
}

void WidgetDialogs::EditViews(Database& db, Prompter& prompter) {
  ViewsDialog dialog(db, workspace_ ? workspace_->options : FormatOptions{}, prompter, parent_);
  dialog.exec();
}

}  // namespace qv::app
