// libFuzzer target: a database file image from outside bytes. Opening must never crash, and
// whatever opens must format every value and save back without trouble.

#include <cstddef>
#include <cstdint>

#include "engine/database.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qv::Database db;
  std::uint32_t bad_record = 0;
  if (qv::ParseDatabase({data, size}, db, bad_record) != qv::ReadError::None) return 0;
  qv::FormatOptions options;
  for (std::uint32_t r = 0; r < db.count(); ++r)
    for (int slot = 0; slot < qv::kFieldSlots; ++slot) qv::RecordValueText(db, r, slot, options);
  qv::SerializeDatabase(db);
  return 0;
}
