#pragma once
// The record list widget: a table with fixed row heights (so long lists scroll without measuring
// rows) that hands typed characters to the type-ahead search.

#include <QTableView>

namespace qv::app {

class RecordListView : public QTableView {
  Q_OBJECT
 public:
  explicit RecordListView(QWidget* parent = nullptr);

 signals:
  // A letter, digit, blank or punctuation character typed into the list.
  void characterTyped(QChar c);
  void backspaceTyped();
  // The menu key or Shift+F10: the column menu of the current column.
  void columnMenuRequested();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace qv::app
