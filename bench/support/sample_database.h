#pragma once
// Generated databases for the benchmarks: realistic values, fixed seed, so runs compare.

#include <cstdint>
#include <memory>
#include <string>

#include "engine/database.h"

namespace qv::bench {

// Ten fields: Name (Text), Qty (Integer), Price (Float), Bought (Date), At (Time),
// Done (Check-Box), Size (Pop-Up), Notes (Note), City (Text), Code (Text).
std::unique_ptr<Database> MakeSampleDatabase(std::uint32_t records, std::uint32_t seed = 42);

// Saves MakeSampleDatabase(records) once per process as `file_name` in the temporary folder and
// returns its path.
std::string SavedSampleFile(const std::string& file_name, std::uint32_t records);

// The values a new record of that database would get.
RecordValues SampleRecordValues(const Database& db, std::uint32_t n);

}  // namespace qv::bench
