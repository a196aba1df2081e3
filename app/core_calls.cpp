#include "app/core_calls.h"

#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"

namespace qv::app {

void PositionOpenedDatabase(Workspace&, Database& db) {
  // The stored index counts container records, so data record n is kept as n + 102.
  std::uint32_t back = db.definition().return_record();
  db.current = back >= kSchemaRecords && back - kSchemaRecords < db.count() ? back - kSchemaRecords : 0;
  ShowAllRecords(db);
}

void RebuildList(Database& db) { ShowAllRecords(db); }

bool CanSortFromList() { return false; }

void SortOnField(Workspace&, Database& db, int slot, bool forward) {
  db.definition().set_sort_key(0, SortKey{slot, forward});
  db.definition().set_sort_key(1, SortKey{});
  db.definition().set_sort_key(2, SortKey{});
  db.changed = true;
  RebuildList(db);
}

void StoreListEdit(Workspace&, Database& db, std::uint32_t number, int slot,
                   std::span<const std::uint8_t> value) {
  if (number >= db.count()) return;
  db.records[number].data = ReplaceValue(db.records[number].data, db.definition(), slot, value);
  db.changed = true;
  RebuildList(db);
}

bool LookupMatches(const Database& db, std::uint32_t number, int slot, std::string_view text,
                   const FormatOptions& options) {
  std::string value = ToLowerAscii(RecordValueText(db, number, slot, options));
  return !value.empty() && value.compare(0, text.size(), text) == 0;
}

}  // namespace qv::app
