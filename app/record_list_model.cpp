#include "app/record_list_model.h"

#include <algorithm>

#include "engine/record.h"
#include "engine/text.h"
#include "security/enciphered.h"

namespace qv::app {

RecordListModel::RecordListModel(Workspace& workspace, QObject* parent)
    : QAbstractTableModel(parent), workspace_(workspace) {}

void RecordListModel::Reload() {
  beginResetModel();
  if (workspace_.has_open_database()) {
    const Database& db = workspace_.current();
    columns_ = ListColumns(db.definition());
    rows_ = static_cast<int>(db.visible.size());
  } else {
    columns_.clear();
    rows_ = 0;
  }
  endResetModel();
}

void RecordListModel::RecordChanged(std::uint32_t number) {
  int row = RowOfRecord(number);
  if (row < 0 || columns_.empty()) return;
  emit dataChanged(index(row, 0), index(row, static_cast<int>(columns_.size()) - 1));
}

int RecordListModel::SlotOfColumn(int column) const {
  if (column < 0 || column >= static_cast<int>(columns_.size())) return -1;
  return columns_[static_cast<std::size_t>(column)].slot;
}

std::optional<std::uint32_t> RecordListModel::RecordOfRow(int row) const {
  if (!workspace_.has_open_database() || row < 0 || row >= rows_) return std::nullopt;
  const Database& db = workspace_.current();
  if (static_cast<std::size_t>(row) >= db.visible.size()) return std::nullopt;
  return db.visible[static_cast<std::size_t>(row)];
}

int RecordListModel::RowOfRecord(std::uint32_t number) const {
  if (!workspace_.has_open_database()) return -1;
  const auto& visible = workspace_.current().visible;
  std::size_t limit = std::min<std::size_t>(visible.size(), static_cast<std::size_t>(rows_));
  // The visible list is in table order, so a binary search finds the row.
  auto end = visible.begin() + static_cast<std::ptrdiff_t>(limit);
  auto it = std::lower_bound(visible.begin(), end, number);
  if (it != end && *it == number) return static_cast<int>(it - visible.begin());
  it = std::find(visible.begin(), end, number);
  return it == end ? -1 : static_cast<int>(it - visible.begin());
}

int RecordListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int RecordListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant RecordListModel::Alignment(int column) const {
  int slot = SlotOfColumn(column);
  if (slot < 0 || !workspace_.has_open_database()) return {};
  // Numbers line up on their last digit, headings over them.
  unsigned type = workspace_.current().definition().field_type(slot);
  bool number = type == kInteger || type == kFloat || type == kUnique || type == kCalculated;
  return QVariant::fromValue((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
}

QVariant RecordListModel::data(const QModelIndex& index, int role) const {
  if (role == Qt::TextAlignmentRole) return Alignment(index.column());
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != Qt::CheckStateRole) return {};
  auto number = RecordOfRow(index.row());
  int slot = SlotOfColumn(index.column());
  if (!number || slot < 0) return {};
  const Database& db = workspace_.current();
  // Check boxes are drawn as check boxes rather than as their "0" and "1".
  if (db.definition().field_type(slot) == kCheckBox) {
    if (role != Qt::CheckStateRole) return {};
    auto value = ValueBytes(db.records[*number].data, slot);
    return !value.empty() && value[0] ? Qt::Checked : Qt::Unchecked;
  }
  if (role == Qt::CheckStateRole) return {};
  std::string text = ShownValueText(db, *number, slot, workspace_.options);
  if (role == Qt::DisplayRole && text.size() > kCellLimit) text.resize(kCellLimit);
  // Notes may hold line breaks; a list row shows one line.
  if (role == Qt::DisplayRole) std::replace(text.begin(), text.end(), '\n', ' ');
  std::replace(text.begin(), text.end(), '\r', ' ');
  return QString::fromStdString(Cp1252ToUtf8(text));
}

QVariant RecordListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal)
    return QAbstractTableModel::headerData(section, orientation, role);
  if (role == Qt::TextAlignmentRole) return Alignment(section);
  if (role != Qt::DisplayRole) return {};
  int slot = SlotOfColumn(section);
  if (slot < 0 || !workspace_.has_open_database()) return {};
  return QString::fromStdString(Cp1252ToUtf8(workspace_.current().definition().field(slot).name()));
}

}  // namespace qv::app
