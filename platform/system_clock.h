#pragma once
#include "platform/clock.h"

namespace qv {

// Local time from the C library; daylight saving is part of the local offset.
class SystemClock : public Clock {
 public:
  std::int64_t LocalNow() const override;
};

}  // namespace qv
