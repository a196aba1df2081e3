#pragma once
// Whether a record's bytes read as values of its database: the test that tells a wrong
// password the 8-bit verifier and record checksums let through, before anything is written.

#include <cstdint>
#include <span>

#include "engine/schema.h"

namespace qv {

// True when the value entries fit the record (each length inside it, the list ended by the
// end marker or the record's end) and every value of a used field has its type's shape: texts
// NUL-terminated, Float texts made of number characters, fixed-size values of their size, times
// in range, check boxes of one byte. Deliberately lenient beyond that: refusing the right
// password would lock a user out of their own data.
bool RecordDecodes(const DatabaseDefinition& definition, std::span<const std::uint8_t> record);

}  // namespace qv
