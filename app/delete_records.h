#pragma once
// The record sets "Delete Records..." removes.

#include <cstdint>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv::app {

enum class DeleteScope { WithinFilter, OutsideFilter, All };

// Whether deleting from this database may leave records of linked databases behind (it has
// Link fields whose records hang on these).
bool HasLinkedRecords(const Database& db);
// Deletes the chosen set in one pass and brings the visible list and the current record up to
// date, refreshing the values that depend on record position. Returns how many records went.
std::uint32_t DeleteRecordSet(Database& db, DeleteScope scope, Prompter& prompter);

}  // namespace qv::app
