#include "platform/system_clock.h"

#include <ctime>

namespace qv {

std::int64_t SystemClock::LocalNow() const {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return static_cast<std::int64_t>(now) + local.tm_gmtoff;
}

}  // namespace qv
