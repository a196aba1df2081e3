#pragma once
// Generated databases for the benchmarks: realistic values, fixed seed, so runs compare.

#include <cstdint>
#include <memory>

#include "engine/database.h"

namespace qv::bench {

// Ten fields: Name (Text), Qty (Integer), Price (Float), Bought (Date), At (Time),
// Done (Check-Box), Size (Pop-Up), Notes (Note), City (Text), Code (Text).
std::unique_ptr<Database> MakeSampleDatabase(std::uint32_t records, std::uint32_t seed = 42);

// The values a new record of that database would get.
RecordValues SampleRecordValues(const Database& db, std::uint32_t n);

}  // namespace qv::bench
