#pragma once
// Sorting the record table by up to three keys, and placing stored records in sort order.

#include <array>
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

// The sort key k of the current settings, or no key (-1) when its field byte names no slot
// 0..99: a damaged key cannot name a field, so it sorts on nothing.
SortKey EffectiveSortKey(const Database& db, int k);

// "Sort Forward" / "Sort Reverse" of the record list's column menu: field `slot` becomes the
// only key, the table is sorted, position-dependent values are refreshed from record 0 and the
// filtered list is rebuilt. No sortability check, as on the menu.
void SortOnColumn(Database& db, int slot, bool forward, Prompter& prompter);

// The "Sorting" dialog's controls on OK: the field chosen in each list (-1 for "No Field") and
// the state of each list's "Forward" button.
struct SortDialogState {
  std::array<int, kSortKeys> field{-1, -1, -1};
  std::array<bool, kSortKeys> forward{true, true, true};
};
// Checks each chosen field, primary first, with reporting on; the first refusal stores nothing
// and answers false. Otherwise stores the keys into the current settings (view -1) or into view
// `view`'s entries. The tertiary direction is read from the primary "Forward" button, on purpose.
bool StoreSortDialog(Database& db, const SortDialogState& state, int view, Prompter& prompter);

// Pop-Up fields: the "Sort Popups" flag (bit 0 of per-type settings byte 0, definition offset
// 24) makes the sort compare item texts ignoring case instead of their first bytes.
bool SortPopups(ConstFieldDefinition field);
void SetSortPopups(FieldDefinition field, bool on);

}  // namespace qv
