#include "processing/store.h"

#include <algorithm>

#include "engine/container.h"
#include "processing/filter.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "security/cipher_session.h"

namespace qv {

namespace {

// The record editor marks every field whose value it changed, so that fields computed from
// them are refreshed.
void MarkChangedFields(Database& db, const RecordValues& before, const RecordValues& after) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (before.present[slot] != after.present[slot] || before.values[slot] != after.values[slot])
      db.field_changed[slot] = 1;
}

std::optional<std::uint32_t> FindByUid(const Database& db, std::uint32_t uid) {
  for (std::uint32_t i = 0; i < db.count(); ++i)
    if (db.records[i].uid == uid) return i;
  return std::nullopt;
}

}  // namespace

std::optional<std::uint32_t> StoreRecordSorted(Database& db, const RecordValues& values,
                                               std::uint32_t number, bool keep_sorted,
                                               Prompter& prompter) {
  const bool fresh = number == kNewRecord || number >= db.count();
  RecordValues before = fresh ? RecordValues{} : DecodeRecord(db.records[number].data);
  auto stored = StoreRecord(db, values, fresh ? kNewRecord : number);
  if (!stored) return std::nullopt;
  const std::uint32_t old_position = *stored;
  MarkChangedFields(db, before, values);
  // The record's own calculated values first: one of them may be a sort key.
  RecalculateRecord(db, old_position, prompter);
  std::uint32_t position = old_position;
  if (keep_sorted)
    position = fresh ? FindInsertPosition(db, old_position) : RepositionRecord(db, old_position);
  const std::uint32_t uid = db.records[position].uid;
  RecalculateAfterChange(db, old_position, position, prompter);
  ClearChangedFlags(db);
  RebuildFilteredList(db);
  db.changed = true;
  NoteStoredRecord(db, position);
  // A resort during the pass may have moved the record again.
  return FindByUid(db, uid).value_or(position);
}

void DeleteRecordsAndRecalculate(Database& db, std::vector<std::uint32_t> numbers,
                                 Prompter& prompter) {
  std::sort(numbers.rbegin(), numbers.rend());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  std::uint32_t first = kNewRecord;
  for (std::uint32_t n : numbers) {
    if (n >= db.count()) continue;
    DeleteRecord(db, n);
    first = n;
  }
  if (first != kNewRecord) RecalculateAfterChange(db, first, first + 1, prompter);
  ClearChangedFlags(db);
  RebuildFilteredList(db);
}

void PositionOpenedDatabase(Database& db, Prompter& prompter, bool list_visible) {
  std::uint16_t back = db.definition().return_record();
  bool returned = back >= kSchemaRecords && back - kSchemaRecords < db.count();
  if (returned) db.current = back - kSchemaRecords;
  // The sort itself happens only with a primary key and two records or more.
  if (!returned && db.definition().resort_pending()) ResortAndRecalculate(db, prompter);
  if (list_visible) RebuildFilteredList(db);
  db.loaded = true;
}

}  // namespace qv
