#pragma once
// Sorting the record table by up to three keys, and placing stored records in sort order.

#include <cstdint>
#include <span>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

// Whether a field may be a sort key; with `report` the refusal is shown through the prompter.
bool CanSortOnField(const Database& db, int slot, bool report, Prompter& prompter);
// Negative, 0 or positive for records A and B on one field.
int CompareField(const Database& db, std::span<const std::uint8_t> a,
                 std::span<const std::uint8_t> b, int slot, bool forward);
// Compares table entries i and j by the three sort keys.
int CompareRecords(const Database& db, std::uint32_t i, std::uint32_t j);
// Sorts the whole table when the primary key is set and there are two records or more; then,
// when asked, rebuilds the filtered list.
void SortDatabase(Database& db, bool rebuild_filtered_list, Prompter& prompter);
// Places the record just appended at position `count` in sort order; returns its position.
std::uint32_t FindInsertPosition(Database& db, std::uint32_t count);
// Moves an edited record to its sorted position; returns its new index.
std::uint32_t RepositionRecord(Database& db, std::uint32_t index);
// Removes the entry at `from` and inserts it before `to` (`to` == count: the end).
void MoveTableEntry(Database& db, std::uint32_t from, std::uint32_t to);

}  // namespace qv
