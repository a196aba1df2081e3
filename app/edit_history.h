#pragma once
// Undo and Redo of record edits: each edit (a record stored by the editor or in the list, a
// record added or deleted, a range of records deleted, values set in a column) is kept as the
// difference it made to the record table, on a QUndoStack whose actions name the edit.

#include <QObject>
#include <QString>
#include <vector>

#include "engine/workspace.h"

class QUndoStack;

namespace qv::app {

class EditHistory : public QObject {
  Q_OBJECT
 public:
  explicit EditHistory(Workspace& workspace, QObject* parent = nullptr);
  QUndoStack* stack() const { return stack_; }
  // After an edit of the current database: keeps what turned `before` into its table now,
  // named `label` ("Edit Record"); nothing when the table did not change.
  void Record(const QString& label, const RecordTable& before);
  // The database was opened, closed or replaced: nothing before this can be undone.
  void Clear();
  // The label for an editor session that began with `count_before` records.
  static QString EditorLabel(std::uint32_t count_before, std::uint32_t count_after);

 signals:
  // Undo or Redo changed the table; the list must be refreshed.
  void applied();

 private:
  friend class TableCommand;
  bool StillCurrent(const Database* db) const;
  Workspace& workspace_;
  QUndoStack* stack_;
};

}  // namespace qv::app
