#pragma once
// The record list's table: one row per record of the visible list, one column per list field.
// Cell texts are formatted only when a cell is drawn, so 65,000 rows cost nothing up front.

#include <QAbstractTableModel>
#include <vector>

#include "app/column_layout.h"
#include "engine/workspace.h"

namespace qv::app {

class RecordListModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  // Cells show at most this many characters.
  static constexpr int kCellLimit = 64;

  explicit RecordListModel(Workspace& workspace, QObject* parent = nullptr);

  // Rebuilds columns and rows from the current database.
  void Reload();
  // Redraws one record's row after its values changed in place.
  void RecordChanged(std::uint32_t number);

  const std::vector<ListColumn>& columns() const { return columns_; }
  // The field slot of a column, or -1.
  int SlotOfColumn(int column) const;
  // The record number of a row, or nothing.
  std::optional<std::uint32_t> RecordOfRow(int row) const;
  // The row showing a record, or -1.
  int RowOfRecord(std::uint32_t number) const;

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QVariant Alignment(int column) const;
  Workspace& workspace_;
  std::vector<ListColumn> columns_;
  int rows_ = 0;
};

}  // namespace qv::app
