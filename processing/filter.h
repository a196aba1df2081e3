#pragma once
// The filter: six conditions on fields, joined left to right by AND or OR, each optionally
// negated, grouped by "(" and ")".

#include <cstdint>
#include <span>

#include "engine/database.h"

namespace qv {

// 1 when the record satisfies condition `index`'s test (before any NOT), else 0.
int TestCondition(const Database& db, int index, std::span<const std::uint8_t> record);
// The combination walk from condition `first`; reports the last condition it used. -1 when no
// condition took part.
int EvaluateConditions(const Database& db, int first, int& last_used,
                       std::span<const std::uint8_t> record, bool top_level, bool nested);
// Whether any of the six conditions is in use, or a linked-record restriction is set.
bool FilterActive(const Database& db);
// Whether record `number` passes the current filter and the linked-record restriction
// (Database::restriction_field / restriction_key). An empty table entry fails.
bool RecordPassesFilter(const Database& db, std::uint32_t number);
// Rebuilds db.visible from RecordPassesFilter.
void RebuildFilteredList(Database& db);
// From `position`, the table position `steps` passing records further on (negative: back);
// -1 when there is none. Starting from -1 (or count) finds the first (or last) passing record.
int StepPassingRecords(const Database& db, int position, int steps);

}  // namespace qv
