#include "app/delete_records.h"

#include <algorithm>
#include <vector>

#include "processing/filter.h"
#include "processing/recalc.h"

namespace qv::app {

bool HasLinkedRecords(const Database& db) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db.definition().field(slot).type() == kLink) return true;
  return false;
}

std::uint32_t DeleteRecordSet(Database& db, DeleteScope scope, Prompter& prompter) {
  std::vector<char> in_view(db.count(), 0);
  for (std::uint32_t number : db.visible)
    if (number < db.count()) in_view[number] = 1;
  std::uint32_t kept = 0;
  std::uint32_t new_current = 0;
  std::uint32_t first_gone = kNewRecord;
  // One pass that closes the gaps; deleting one by one would move the table once per record.
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    bool goes = scope == DeleteScope::All || (scope == DeleteScope::WithinFilter) == (in_view[i] != 0);
    if (goes) {
      if (first_gone == kNewRecord) first_gone = kept;
      continue;
    }
    if (i <= db.current) new_current = kept;
    if (kept != i) db.records[kept] = std::move(db.records[i]);
    ++kept;
  }
  std::uint32_t removed = db.count() - kept;
  db.records.resize(kept);
  db.current = kept == 0 ? 0 : std::min(new_current, kept - 1);
  if (removed) {
    db.changed = true;
    // Values that depend on record position are refreshed from the first place that changed.
    if (first_gone < kept) RecalculateAfterChange(db, first_gone, first_gone + 1, prompter);
    ClearChangedFlags(db);
  }
  RebuildFilteredList(db);
  return removed;
}

}  // namespace qv::app
