#pragma once
#include <cstdint>

namespace qv {

class Clock {
 public:
  virtual ~Clock() = default;
  // Local wall-clock time as seconds since 1970-01-01 00:00 (daylight saving included), the
  // counter that file dates and alarms are stamped from.
  virtual std::int64_t LocalNow() const = 0;
};

}  // namespace qv
