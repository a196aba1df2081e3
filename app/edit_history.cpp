#include "app/edit_history.h"

#include <QUndoStack>

#include "processing/table_change.h"

namespace qv::app {

class TableCommand : public QUndoCommand {
 public:
  TableCommand(EditHistory& history, Database& db, TableChange change, const QString& label)
      : QUndoCommand(label), history_(history), db_(&db), change_(std::move(change)) {}
  void undo() override { Apply(false); }
  void redo() override {
    if (first_) {
      first_ = false;  // the edit is done already when it is recorded
      return;
    }
    Apply(true);
  }

 private:
  void Apply(bool forward) {
    // A database that is no longer the current one is never touched.
    if (!history_.StillCurrent(db_)) return;
    forward ? change_.Redo(*db_) : change_.Undo(*db_);
    emit history_.applied();
  }
  EditHistory& history_;
  Database* db_;
  TableChange change_;
  bool first_ = true;
};

EditHistory::EditHistory(Workspace& workspace, QObject* parent)
    : QObject(parent), workspace_(workspace), stack_(new QUndoStack(this)) {
  stack_->setUndoLimit(50);
}

bool EditHistory::StillCurrent(const Database* db) const {
  return workspace_.has_open_database() && &workspace_.current() == db;
}

void EditHistory::Record(const QString& label, const RecordTable& before) {
  if (!workspace_.has_open_database()) return;
  Database& db = workspace_.current();
  TableChange change = TableChange::Between(before, db);
  if (change.empty()) return;
  stack_->push(new TableCommand(*this, db, std::move(change), label));
}

void EditHistory::Clear() {
  stack_->clear();
}

QString EditHistory::EditorLabel(std::uint32_t count_before, std::uint32_t count_after) {
  if (count_after > count_before)
    return count_after - count_before == 1 ? tr("Add Record") : tr("Add Records");
  if (count_after < count_before) return tr("Delete Record");
  return tr("Edit Record");
}

}  // namespace qv::app
