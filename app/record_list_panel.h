#pragma once
// The main window's content: the record-count label and the views drop-down above the record
// list, and what taps, typing, column drags and the column menu do to the current database.

#include <QWidget>
#include <functional>

#include "app/data_flows.h"
#include "app/dialogs.h"
#include "app/open_hooks.h"
#include "app/record_list_model.h"
#include "app/record_list_view.h"
#include "app/type_ahead.h"

class QComboBox;
class QLabel;

namespace qv::app {

class EditHistory;

class RecordListPanel : public QWidget {
  Q_OBJECT
 public:
  RecordListPanel(Workspace& workspace, Dialogs& dialogs, AccessGate& access,
                  QWidget* parent = nullptr);

  // Rebuilds columns and rows, selects the current record and updates the label.
  void Refresh();
  // A tap on a cell of the list.
  void Tap(int row, int column);
  // A click: the in-list choosers where the preferences allow them, else the row is selected.
  void Click(int row, int column);
  // A double-click or Enter on a row: the record editor.
  void Activate(int row);
  // "New Record" (Insert): the record editor on a new record.
  void NewRecord();
  // "DB Properties..." and the column menu's "Field Properties" (slot -1: the General page).
  void EditProperties(int slot = -1);
  // Where record edits are kept for Undo; none: edits are not undoable.
  void setHistory(EditHistory* history) { history_ = history; }
  // How the current database is saved (File > Save), for Delete Records with linked records.
  void setSaveCurrent(std::function<void()> save) { save_current_ = std::move(save); }
  // After a command changed records ("Set Values To.." among them): keeps the change for Undo,
  // named `label`; `before` is the record table as it was.
  void Remember(const QString& label, const RecordTable& before);
  // The column menu's commands (1300..1305) for the field of `column`.
  void RunColumnCommand(int column, int command);
  // The report of a field (slot -1: none chosen) in the report window.
  void RunFieldReport(int slot);
  // The field of the list's current cell, or -1.
  int CurrentSlot() const;
  // A choice in the views drop-down: a view to apply, or the last entry, "Edit Views..".
  void ViewChosen(int index);
  QComboBox* viewsBox() const { return views_; }
  // "Delete Records..." from the Actions menu.
  void DeleteRecords();
  // Selects the record's row and scrolls it into view.
  void SelectRecord(std::uint32_t number);
  // Selects the found record and field (column -1: the row only) and scrolls them into view.
  void SelectMatch(const FindMatch& match);
  // The column menu of a column, at its header; from the keyboard, of the current column.
  void ShowColumnMenu(int column);
  // The data commands (find, sort, filter, export, import, set values).
  DataFlows& data() { return data_; }

  RecordListView* view() const { return view_; }
  RecordListModel* model() const { return model_; }
  QLabel* countLabel() const { return count_; }
  const TypeAhead& typeAhead() const { return type_ahead_; }

 signals:
  // The database changed (title and counts must be updated).
  void databaseChanged();

 private:
  void ColumnResized(int column, int new_size);
  void Typed(QChar c);
  void Erased();
  void ApplyTypeAhead(std::optional<std::uint32_t> found);
  bool EditInList(Database& db, std::uint32_t number, int slot, const QRect& cell);
  bool EditableInList(const Database& db, int slot) const;
  void OpenEditor(Database& db, std::uint32_t number, bool view_only);
  QRect CellRect(int row, int column) const;
  void FillViews();
  void ShowSortIndicator();
  void CurrentRowMoved(int row);

  Workspace& workspace_;
  Dialogs& dialogs_;
  AccessGate& access_;
  QLabel* count_;
  QComboBox* views_;
  RecordListView* view_;
  RecordListModel* model_;
  TypeAhead type_ahead_;
  DataFlows data_;
  bool refreshing_ = false;
  EditHistory* history_ = nullptr;
  std::function<void()> save_current_;
};

}  // namespace qv::app
