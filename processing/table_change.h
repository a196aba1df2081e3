#pragma once
// The difference between two states of a database's record table, kept so an edit can be
// undone and redone: the records that left or changed, the records that came or changed, and
// the order of identifiers before and after. Records are matched by their identifiers; a table
// whose identifiers repeat is kept whole instead.

#include <cstdint>
#include <vector>

#include "engine/database.h"

namespace qv {

class TableChange {
 public:
  // What turned `before` into the database's current table.
  static TableChange Between(const RecordTable& before, const Database& after);
  bool empty() const { return removed_.empty() && added_.empty() && order_before_ == order_after_; }
  // Puts the table back as it was before (Undo) or after (Redo), rebuilds the filtered list and
  // marks the database changed.
  void Undo(Database& db) const { Apply(db, order_before_, removed_); }
  void Redo(Database& db) const { Apply(db, order_after_, added_); }

 private:
  void Apply(Database& db, const std::vector<std::uint32_t>& order,
             const RecordTable& records) const;
  bool whole_ = false;               // identifiers repeat: both tables are kept whole
  RecordTable removed_;  // in `before`, absent or different afterwards
  RecordTable added_;    // afterwards, absent or different before
  std::vector<std::uint32_t> order_before_;
  std::vector<std::uint32_t> order_after_;
};

}  // namespace qv
