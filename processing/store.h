#pragma once
// Storing records as the record editor does, and positioning a database after it is opened:
// the engine's table operations combined with the sort and filter rules.

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

// Stores a new (kNewRecord) or edited record; with keep_sorted it is moved to its place in
// sort order. Recalculates dependent fields and rebuilds the filtered list. Returns the
// record's final number, or nothing when the table is full.
std::optional<std::uint32_t> StoreRecordSorted(Database& db, const RecordValues& values,
                                               std::uint32_t number, bool keep_sorted,
                                               Prompter& prompter);
// Deletes records (numbers in any order, repeats ignored), recalculates the values that depend
// on record position from the first deleted place, and rebuilds the filtered list.
void DeleteRecordsAndRecalculate(Database& db, std::vector<std::uint32_t> numbers,
                                 Prompter& prompter);
// After a load: the record to return to, the pending resort with its recalculation, the
// filtered list, the loaded flag.
// `list_visible` false leaves the visible list empty, for a caller that rebuilds it anyway.
void PositionOpenedDatabase(Database& db, Prompter& prompter, bool list_visible = true);

}  // namespace qv
