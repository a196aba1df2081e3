// The data dialogs of WidgetDialogs: find, sort, filter, export, import, set values and the
// progress of long work.

#include <QDir>
#include <QFileInfo>

#include "app/filters_dialog.h"
#include "app/find_dialog.h"
#include "app/set_values_dialog.h"
#include "app/sort_dialog.h"
#include "app/widget_dialogs.h"

namespace qv::app {

std::optional<FindSettings> WidgetDialogs::AskFind(const Database& db,
                                                   const FindSettings& current) {
  FindDialog dialog(db.definition(), current, parent_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.settings();
}

bool WidgetDialogs::EditSort(Database& db, int view, Prompter& prompter) {
  SortDialog dialog(db, view, prompter, parent_);
  return dialog.exec() == QDialog::Accepted;
}

bool WidgetDialogs::EditFilter(Database& db, int view, const FormatOptions& options,
                               Prompter& prompter) {
  FiltersDialog dialog(db, view, options, prompter, parent_);
  return dialog.exec() == QDialog::Accepted;
}

std::optional<ExportRequest> WidgetDialogs::AskExport(const Database& db,
                                                      const Preferences& preferences) {
  // Proposed beside the database, named after it.
  QFileInfo info(QString::fromStdString(db.path));
  QString folder = info.exists() ? info.absolutePath() : QDir::homePath();
  QString proposed = folder + "/" + QString::fromStdString(db.name) + ".csv";
  ExportDialog dialog(preferences, proposed.toStdString(), parent_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.request();
}

std::optional<ImportRequest> WidgetDialogs::AskImport(const Database& db,
                                                      const Preferences& preferences) {
  ImportDialog dialog(db, preferences, last_import_, parent_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  ImportRequest request = dialog.request();
  last_import_ = request.path;
  return request;
}

std::optional<Bytes> WidgetDialogs::AskSetValue(const Database& db, int slot,
                                                const FormatOptions& options, Prompter& prompter) {
  SetValuesDialog dialog(db, slot, options, prompter, parent_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.value();
}

bool WidgetDialogs::RunLong(const std::string& title, LongWork work, Prompter& shown) {
  return long_tasks_.Run(parent_, QString::fromStdString(title), std::move(work), shown);
}

}  // namespace qv::app
