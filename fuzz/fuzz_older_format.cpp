// libFuzzer target: a 2.x database image from outside bytes. Reading and converting it must
// never crash, and whatever converts must save without trouble.

#include <cstddef>
#include <cstdint>

#include "exchange/conversion.h"
#include "exchange/older_format.h"

namespace {
class FixedClock : public qv::Clock {
 public:
  std::int64_t LocalNow() const override { return 1700000000; }
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto old = qv::ReadOldDatabase({data, size});
  if (!old) return 0;
  qv::SilentPrompter prompter;
  FixedClock clock;
  qv::ConvertedDatabase converted = qv::ConvertInMemory(*old, prompter, clock);
  qv::FormatOptions options;
  for (std::uint32_t r = 0; r < converted.db->count(); ++r)
    for (int slot = 0; slot < qv::kOldFieldSlots; ++slot)
      qv::RecordValueText(*converted.db, r, slot, options);
  qv::SerializeDatabase(*converted.db);
  return 0;
}
