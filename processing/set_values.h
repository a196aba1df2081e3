#pragma once
// "Set Values To..": one field of every record the list shows gets the same value.

#include <cstdint>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

struct SetValuesResult {
  std::uint32_t changed = 0;
  std::uint32_t skipped = 0;  // records whose stored bytes are enciphered, left as they were
};

// Sets field `slot` of every record in the visible list to `value` (the stored value bytes),
// refreshes the computed values, restores the sort order, rebuilds the filtered list and marks
// the database changed. The current record stays the same record.
SetValuesResult SetValuesOfField(Database& db, int slot, const Bytes& value, Prompter& prompter);

}  // namespace qv
