#include "processing/set_values.h"

#include "engine/record.h"
#include "processing/filter.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "security/record_header.h"

namespace qv {

namespace {

// Enciphered bytes are not values: such a record cannot take a new value without its password.
bool Enciphered(const Bytes& record) {
  auto header = ReadRecordHeader(record);
  return header && (header->has(kRecordBodyEnciphered) || header->has(kRecordFieldsEnciphered));
}

}  // namespace

SetValuesResult SetValuesOfField(Database& db, int slot, const Bytes& value, Prompter& prompter) {
  SetValuesResult result;
  if (slot < 0 || slot >= kFieldSlots || !db.definition().field(slot).used()) return result;
  prompter.busy(true);
  for (std::uint32_t n : db.visible) {
    if (n >= db.count()) continue;
    Bytes& data = db.records[n].data;
    if (Enciphered(data)) {
      ++result.skipped;
      continue;
    }
    data = ReplaceValue(data, db.definition(), slot, value);
    RecalculateRecord(db, n, prompter);
    ++result.changed;
  }
  if (result.changed > 0) {
    const std::uint32_t uid = db.current < db.count() ? db.records[db.current].uid : 0;
    db.field_changed[slot] = 1;
    db.changed = true;
    // The field may be a sort key, and later records may read it from the one before.
    SortDatabase(db, false, prompter);
    RecalculateAfterChange(db, 0, 1, prompter);
    ClearChangedFlags(db);
    RebuildFilteredList(db);
    for (std::uint32_t p = 0; p < db.count(); ++p)
      if (db.records[p].uid == uid) db.current = p;
    db.redraw = true;
  }
  prompter.busy(false);
  return result;
}

}  // namespace qv
