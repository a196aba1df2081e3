#pragma once
// The list-building and sorting steps the application runs after opening, editing and sorting.
// One place, so the rules of the processing layer reach every caller the same way.

#include <cstdint>
#include <span>
#include <string_view>

#include "engine/database.h"
#include "engine/workspace.h"

namespace qv::app {

// After a load: the record to return to, a pending resort, the visible list.
void PositionOpenedDatabase(Workspace& workspace, Database& db);
// Rebuilds the visible list after records changed.
void RebuildList(Database& db);
// Whether sorting is available in this build.
bool CanSortFromList();
// Replaces one value of record `number` as an in-list edit does and keeps the table in order.
void StoreListEdit(Workspace& workspace, Database& db, std::uint32_t number, int slot,
                   std::span<const std::uint8_t> value);
// Whether the look-up field's value of a record matches typed text (already lower case).
bool LookupMatches(const Database& db, std::uint32_t number, int slot, std::string_view text,
                   const FormatOptions& options);

}  // namespace qv::app
