#include "app/core_calls.h"

#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/sort.h"
#include "processing/store.h"

namespace qv::app {

void PositionOpenedDatabase(Workspace& workspace, Database& db) {
  qv::PositionOpenedDatabase(db, workspace.prompter);
}

void RebuildList(Database& db) {
  RebuildFilteredList(db);
}

bool CanSortFromList() {
  return true;
}

void StoreListEdit(Workspace& workspace, Database& db, std::uint32_t number, int slot,
                   std::span<const std::uint8_t> value) {
  if (number >= db.count()) return;
  RecordValues values = DecodeRecord(db.records[number].data);
  values.Set(slot, Bytes(value.begin(), value.end()));
  // The record moves to its place in sort order and dependent values follow.
  if (auto placed = StoreRecordSorted(db, values, number, true, workspace.prompter))
    db.current = *placed;
  db.changed = true;
}

bool LookupMatches(const Database& db, std::uint32_t number, int slot, std::string_view text,
                   const FormatOptions& options) {
  std::string value = ToLowerAscii(RecordValueText(db, number, slot, options));
  return !value.empty() && value.compare(0, text.size(), text) == 0;
}

}  // namespace qv::app
