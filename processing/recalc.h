#pragma once
// Recalculation: when Calculated and Conditional values are brought up to date, over which
// records and in which order, and how that meets sorting and the filter.

#include <cstdint>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

// After an edit, insert, delete or sort that moved a record from position a to b (a == b when
// nothing moved): runs the full pass from the smaller of the two when values depend on record
// position or on a changed field of the previous record.
void RecalculateAfterChange(Database& db, std::uint32_t a, std::uint32_t b, Prompter& prompter);
// Whether a Calculated field reads a changed field of the previous record, directly or through
// the Calculated fields it reads.
bool HasCrossRecordDependency(const Database& db);
// The full pass from position `start`: 0, or -1 when a record could not be read.
int RecalculateFrom(Database& db, std::uint32_t start, Prompter& prompter);
// Refreshes the Calculated and Conditional values of one record; 0, or -1 when it cannot be read.
int RecalculateRecord(Database& db, std::uint32_t position, Prompter& prompter);
// The second pass over the fields whose values refer to other records; 0, or -1 when a record
// could not be read.
int RecalculatePreviousRecordFields(Database& db, Prompter& prompter);
// Sorts with the filtered-list rebuild, recalculates as after a change of position 0 to 1, and
// clears the resort-pending flag.
void ResortAndRecalculate(Database& db, Prompter& prompter);

// Whether any field slot holds a position-dependent Calculated or Conditional field.
bool HasPositionDependentFields(const Database& db);
// Clears the per-field changed flags.
void ClearChangedFlags(Database& db);

}  // namespace qv
