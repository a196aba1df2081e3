#include "app/delete_records.h"

#include <algorithm>
#include <vector>

#include "app/core_calls.h"

namespace qv::app {

bool HasLinkedRecords(const Database& db) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db.definition().field(slot).type() == kLink) return true;
  return false;
}

std::uint32_t DeleteRecordSet(Database& db, DeleteScope scope) {
  std::vector<char> in_view(db.count(), 0);
  for (std::uint32_t number : db.visible)
    if (number < db.count()) in_view[number] = 1;
  std::uint32_t kept = 0;
  std::uint32_t new_current = 0;
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    bool goes = scope == DeleteScope::All || (scope == DeleteScope::WithinFilter) == (in_view[i] != 0);
    if (goes) continue;
    if (i <= db.current) new_current = kept;
    if (kept != i) db.records[kept] = std::move(db.records[i]);
    ++kept;
  }
  std::uint32_t removed = db.count() - kept;
  db.records.resize(kept);
  db.current = kept == 0 ? 0 : std::min(new_current, kept - 1);
  if (removed) db.changed = true;
  RebuildList(db);
  return removed;
}

}  // namespace qv::app
