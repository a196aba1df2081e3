#include "app/record_list_panel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QVBoxLayout>

#include "app/commands.h"
#include "app/linked_navigation.h"
#include "app/core_calls.h"
#include "app/edit_history.h"
#include "app/set_values_dialog.h"
#include "app/window_title.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/report.h"
#include "processing/views.h"
#include "security/enciphered.h"

namespace qv::app {

namespace {

bool Reportable(unsigned type) {
  return type == kInteger || type == kFloat || type == kCheckBox || type == kDate ||
         type == kTime || type == kCalculated;
}

QString Utf8(const std::string& s) {
  return QString::fromStdString(s);
}

}  // namespace

RecordListPanel::RecordListPanel(Workspace& workspace, Dialogs& dialogs, AccessGate& access,
                                 QWidget* parent)
    : QWidget(parent),
      workspace_(workspace),
      dialogs_(dialogs),
      access_(access),
      data_(workspace, dialogs, access) {
  count_ = new QLabel(this);
  QFont bold = count_->font();
  bold.setBold(true);
  count_->setFont(bold);
  views_ = new QComboBox(this);
  views_->setMinimumContentsLength(16);
  views_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  views_->setToolTip(tr("Views of this database"));
  views_->setPlaceholderText(tr("Views"));
  view_ = new RecordListView(this);
  model_ = new RecordListModel(workspace_, this);
  view_->setModel(model_);

  auto* strip = new QHBoxLayout;
  strip->setContentsMargins(8, 6, 8, 6);
  strip->addWidget(count_);
  strip->addStretch(1);
  strip->addWidget(views_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addLayout(strip);
  layout->addWidget(view_, 1);

  connect(views_, QOverload<int>::of(&QComboBox::activated), this, &RecordListPanel::ViewChosen);
  connect(view_, &QAbstractItemView::clicked, this,
          [this](const QModelIndex& index) { Click(index.row(), index.column()); });
  connect(view_, &QAbstractItemView::activated, this,
          [this](const QModelIndex& index) { Activate(index.row()); });
  QHeaderView* header = view_->horizontalHeader();
  connect(header, &QHeaderView::sectionClicked, this,
          [this](int column) { ShowColumnMenu(column); });
  // A right-click opens the same menu; the keyboard opens it on the current column.
  header->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header, &QHeaderView::customContextMenuRequested, this,
          [this, header](const QPoint& at) { ShowColumnMenu(header->logicalIndexAt(at)); });
  header->setSortIndicatorShown(true);
  connect(view_, &RecordListView::columnMenuRequested, this,
          [this] { ShowColumnMenu(std::max(view_->currentIndex().column(), 0)); });
  connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& index) { CurrentRowMoved(index.row()); });
  connect(view_->horizontalHeader(), &QHeaderView::sectionResized, this,
          [this](int column, int, int size) { ColumnResized(column, size); });
  connect(view_, &RecordListView::characterTyped, this, &RecordListPanel::Typed);
  connect(view_, &RecordListView::backspaceTyped, this, &RecordListPanel::Erased);
  Refresh();
}

void RecordListPanel::Refresh() {
  refreshing_ = true;
  type_ahead_.Clear();
  model_->Reload();
  QHeaderView* header = view_->horizontalHeader();
  const auto& columns = model_->columns();
  for (std::size_t c = 0; c < columns.size(); ++c)
    header->resizeSection(static_cast<int>(c), ShownWidth(columns[c].stored_width));
  FillViews();
  ShowSortIndicator();
  if (workspace_.has_open_database()) SelectRecord(workspace_.current().current);
  refreshing_ = false;
  count_->setText(Utf8(RecordCountText(workspace_)));
  emit databaseChanged();
}

void RecordListPanel::FillViews() {
  views_->clear();
  if (!workspace_.has_open_database()) {
    views_->setEnabled(false);
    return;
  }
  const DatabaseDefinition& definition = workspace_.current().definition();
  std::uint32_t count = std::min<std::uint32_t>(definition.view_count(), kMaxViews);
  for (std::uint32_t v = 0; v < count; ++v)
    views_->addItem(Utf8(Cp1252ToUtf8(CStringAt(definition.view_block(static_cast<int>(v)), 32))));
  views_->addItem(tr("Edit Views.."));
  views_->setEnabled(true);
  auto current = CurrentView(workspace_.current());
  views_->setCurrentIndex(current ? *current : -1);
}

void RecordListPanel::SelectRecord(std::uint32_t number) {
  int row = model_->RowOfRecord(number);
  if (row < 0) {
    view_->clearSelection();
    return;
  }
  QModelIndex index = model_->index(row, 0);
  view_->selectionModel()->setCurrentIndex(
      index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  view_->scrollTo(index);
}

void RecordListPanel::SelectMatch(const FindMatch& match) {
  int row =
      match.position >= 0 ? model_->RowOfRecord(static_cast<std::uint32_t>(match.position)) : -1;
  if (row < 0) return;
  int column = std::max(match.column, 0);
  QModelIndex index = model_->index(row, std::min(column, std::max(model_->columnCount() - 1, 0)));
  view_->selectionModel()->setCurrentIndex(
      index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  view_->scrollTo(index, QAbstractItemView::PositionAtCenter);
  emit databaseChanged();
}

void RecordListPanel::ShowSortIndicator() {
  QHeaderView* header = view_->horizontalHeader();
  int column = -1;
  bool forward = true;
  if (workspace_.has_open_database()) {
    SortKey key = workspace_.current().definition().sort_key(0);
    for (std::size_t c = 0; c < model_->columns().size() && key.field >= 0; ++c)
      if (model_->columns()[c].slot == key.field) column = static_cast<int>(c);
    forward = key.forward;
  }
  header->setSortIndicator(column, forward ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void RecordListPanel::CurrentRowMoved(int row) {
  if (refreshing_ || !workspace_.has_open_database()) return;
  if (auto number = model_->RecordOfRow(row)) {
    workspace_.current().current = *number;
    emit databaseChanged();
  }
}

QRect RecordListPanel::CellRect(int row, int column) const {
  QRect local = view_->visualRect(model_->index(row, column));
  return QRect(view_->viewport()->mapToGlobal(local.topLeft()), local.size());
}

void RecordListPanel::Tap(int row, int column) {
  auto number = model_->RecordOfRow(row);
  if (!number) return;  // below the last row
  Database& db = workspace_.current();
  db.current = *number;
  type_ahead_.Clear();
  int access = access_.CheckAccess(workspace_, db, Guarded::EditRecords, true);
  if (access == kAccessRefused) return;
  // An enciphered record is deciphered first; it is enciphered again before the save.
  const bool enciphered = IsRecordEnciphered(db, *number);
  if (!access_.DecipherRecord(workspace_, db, *number)) return;
  if (enciphered) Refresh();
  int slot = model_->SlotOfColumn(column);
  if (access == kAccessFull && slot >= 0 && EditableInList(db, slot)) {
    auto before = db.records;
    if (EditInList(db, *number, slot, CellRect(row, column))) Remember(tr("Edit Record"), before);
    Refresh();
    return;
  }
  OpenEditor(db, *number, access == kAccessViewOnly);
}

void RecordListPanel::Click(int row, int column) {
  auto number = model_->RecordOfRow(row);
  if (!number) return;
  int slot = model_->SlotOfColumn(column);
  if (slot >= 0 && EditableInList(workspace_.current(), slot)) {
    Tap(row, column);
    return;
  }
  workspace_.current().current = *number;
  type_ahead_.Clear();
}

void RecordListPanel::Activate(int row) {
  auto number = model_->RecordOfRow(row);
  if (!number) return;
  Database& db = workspace_.current();
  db.current = *number;
  type_ahead_.Clear();
  int access = access_.CheckAccess(workspace_, db, Guarded::EditRecords, true);
  if (access == kAccessRefused) return;
  OpenEditor(db, *number, access == kAccessViewOnly);
}

void RecordListPanel::NewRecord() {
  if (!workspace_.has_open_database()) return;
  Database& db = workspace_.current();
  // The editor itself checks Add Records before it shows the new record.
  OpenEditor(db, kNewRecord, false);
}

void RecordListPanel::OpenEditor(Database& db, std::uint32_t number, bool view_only) {
  auto before = db.records;
  if (!dialogs_.OpenRecord(db, number, view_only)) return;
  // Following a link from the editor leaves another database current: nothing to remember.
  if (&workspace_.current() == &db)
    Remember(EditHistory::EditorLabel(static_cast<std::uint32_t>(before.size()), db.count()), before);
  Refresh();
}

void RecordListPanel::Remember(const QString& label, const RecordTable& before) {
  if (history_) history_->Record(label, before);
}

void RecordListPanel::EditProperties(int slot) {
  if (!workspace_.has_open_database()) return;
  Database& db = workspace_.current();
  if (access_.CheckAccess(workspace_, db, Guarded::DbProperties, true) != kAccessFull) return;
  // Schema changes rewrite records: what came before can no longer be undone.
  if (dialogs_.EditProperties(db, slot)) {
    if (history_) history_->Clear();
    Refresh();
  }
}

bool RecordListPanel::EditableInList(const Database& db, int slot) const {
  const Preferences& prefs = workspace_.preferences;
  const unsigned type = db.definition().field_type(slot);
  return (type == kCheckBox && prefs.allow_checks) || (type == kPopUp && prefs.allow_popups) ||
         ((type == kDate || type == kTime) && prefs.allow_date_time);
}

bool RecordListPanel::EditInList(Database& db, std::uint32_t number, int slot, const QRect& cell) {
  const Preferences& prefs = workspace_.preferences;
  const unsigned type = db.definition().field_type(slot);
  auto value = ValueBytes(db.records[number].data, slot);
  if (type == kCheckBox && prefs.allow_checks) {
    bool checked = !value.empty() && value[0] != 0;
    StoreListEdit(workspace_, db, number, slot, CheckValue(!checked));
    return true;
  }
  if (type == kPopUp && prefs.allow_popups) {
    std::vector<std::string> items;
    for (const std::string& text : db.schema.fields[static_cast<std::size_t>(slot)].texts)
      if (!text.empty()) items.push_back(Cp1252ToUtf8(text));
    auto chosen = dialogs_.ChoosePopupItem(items, Cp1252ToUtf8(ValueText(value)), cell);
    // The stored item text is at most 13 characters.
    if (chosen)
      StoreListEdit(workspace_, db, number, slot, TextValue(Utf8ToCp1252(*chosen).substr(0, 13)));
    return true;
  }
  if (type == kDate && prefs.allow_date_time) {
    auto chosen = dialogs_.ChooseDate(DateNumberToDmy(ValueUInt32(value)), cell);
    if (chosen) StoreListEdit(workspace_, db, number, slot, UInt32Value(DmyToDateNumber(*chosen)));
    return true;
  }
  if (type == kTime && prefs.allow_date_time) {
    TimeOfDay now{255, 0, 0};
    if (value.size() >= 3) now = {value[2], value[1], value[0]};
    auto chosen = dialogs_.ChooseTime(now, cell);
    if (chosen)
      StoreListEdit(workspace_, db, number, slot,
                    TimeValue(chosen->hours, chosen->minutes, chosen->seconds));
    return true;
  }
  return false;
}

void RecordListPanel::ShowColumnMenu(int column) {
  ShowSortIndicator();  // the header turned it on the click; the sort has not changed
  int slot = model_->SlotOfColumn(column);
  if (slot < 0) return;
  const unsigned type = workspace_.current().definition().field_type(slot);
  QMenu menu(this);
  auto add = [&](const QString& text, int command, bool enabled) {
    QAction* action = menu.addAction(text);
    action->setData(command);
    action->setEnabled(enabled);
  };
  add(tr("Sort &Forward"), command::kSortForward, CanSortFromList());
  add(tr("Sort &Reverse"), command::kSortReverse, CanSortFromList());
  add(tr("Field &Properties"), command::kFieldProperties, true);
  add(tr("Run Re&port"), command::kColumnReport, true);
  add(tr("&Set Values To.."), command::kSetValues, SetValuesDialog::Settable(type));
  add(tr("&Hide Field"), command::kHideField, true);
  // At the cell of this column in the top visible row.
  int x = view_->horizontalHeader()->sectionViewportPosition(column);
  QPoint at = view_->viewport()->mapToGlobal(QPoint(std::max(x, 0), 0));
  QAction* chosen = menu.exec(at);
  if (chosen) RunColumnCommand(column, chosen->data().toInt());
}

void RecordListPanel::RunColumnCommand(int column, int command) {
  int slot = model_->SlotOfColumn(column);
  if (slot < 0 || !workspace_.has_open_database()) return;
  Database& db = workspace_.current();
  switch (command) {
    case command::kSortForward:
    case command::kSortReverse:
      if (!CanSortFromList()) return;
      data_.SortOnColumn(slot, command == command::kSortForward);
      Refresh();
      return;
    case command::kColumnReport:
      RunFieldReport(slot);
      return;
    case command::kFieldProperties:
      EditProperties(slot);
      return;
    case command::kSetValues: {
      RecordTable before = db.records;  // the whole column may change
      if (data_.SetValues(slot)) {
        Remember(tr("Set Values"), before);
        Refresh();
      }
      return;
    }
    case command::kHideField:
      StoreListWidth(db, slot, 0);
      Refresh();
      return;
    default:
      return;
  }
}

void RecordListPanel::RunFieldReport(int slot) {
  if (!workspace_.has_open_database()) return;
  const Database& db = workspace_.current();
  if (slot >= 0 && !Reportable(db.definition().field_type(slot))) {
    workspace_.prompter.message(
        "Can only run reports on the following field types:\nInteger, Float, Checkbox, Time, "
        "Date, and Calculated.",
        "ERROR", Icon::Exclamation);
    return;
  }
  if (auto text = RunReport(db, slot, workspace_.options, workspace_.prompter))
    dialogs_.ShowReport(Cp1252ToUtf8(*text));
}

int RecordListPanel::CurrentSlot() const {
  QModelIndex index = view_->currentIndex();
  return index.isValid() ? model_->SlotOfColumn(index.column()) : -1;
}

void RecordListPanel::ViewChosen(int index) {
  if (!workspace_.has_open_database()) return;
  Database& db = workspace_.current();
  if (index == views_->count() - 1) {
    dialogs_.EditViews(db, workspace_.prompter);  // "Edit Views.."
  } else {
    data_.ApplyView(index);
  }
  Refresh();
}

void RecordListPanel::ColumnResized(int column, int new_size) {
  if (refreshing_ || !workspace_.has_open_database()) return;
  int slot = model_->SlotOfColumn(column);
  if (slot < 0) return;
  // The current view keeps the width too, so applying it again does not undo the drag.
  StoreListWidth(workspace_.current(), slot, StoredWidth(new_size));
  emit databaseChanged();
}

void RecordListPanel::Typed(QChar c) {
  if (!workspace_.has_open_database()) return;
  std::string narrow = Utf8ToCp1252(QString(c).toStdString());
  if (narrow.size() != 1) return;
  const Database& db = workspace_.current();
  const int slot = db.definition().lookup_field();
  ApplyTypeAhead(type_ahead_.Type(narrow[0], db, [&](std::uint32_t n, const std::string& text) {
    return LookupMatches(db, n, slot, text, workspace_.options);
  }));
}

void RecordListPanel::Erased() {
  if (!workspace_.has_open_database()) return;
  const Database& db = workspace_.current();
  const int slot = db.definition().lookup_field();
  ApplyTypeAhead(type_ahead_.Backspace(db, [&](std::uint32_t n, const std::string& text) {
    return LookupMatches(db, n, slot, text, workspace_.options);
  }));
}

void RecordListPanel::ApplyTypeAhead(std::optional<std::uint32_t> found) {
  if (!found) return;
  workspace_.current().current = *found;
  SelectRecord(*found);
}

void RecordListPanel::DeleteRecords() {
  if (!workspace_.has_open_database()) return;
  Database& db = workspace_.current();
  if (access_.CheckAccess(workspace_, db, Guarded::DeleteRecords, true) != kAccessFull) return;
  auto scope = dialogs_.AskDeleteScope();
  if (!scope) return;
  std::vector<LinkKeys> linked;
  if (HasLinkedRecords(db) &&
      workspace_.prompter.ask(kDeleteLinkedQuestion, kQuestionCaption, Buttons::YesNo,
                              Icon::Question) == Answer::Yes)
    linked = LinkKeysOf(db, RecordsInScope(db, *scope));
  workspace_.prompter.busy(true);
  auto before = db.records;
  DeleteRecordSet(db, *scope, workspace_.prompter);
  if (!linked.empty()) {
    // The linked databases are written at once, so this one is saved first: no record of theirs
    // goes while its parent could still come back by not saving.
    if (save_current_) save_current_();
    if (db.changed || db.unsaved()) linked.clear();
  }
  DeleteLinkedRecordsOf(workspace_, access_, db, linked);
  Remember(tr("Delete Records"), before);
  workspace_.prompter.busy(false);
  Refresh();
}

}  // namespace qv::app
