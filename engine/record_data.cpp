#include "engine/record_data.h"

#include <algorithm>

namespace qv {

Bytes& RecordData::edit() {
  if (view_) {
    own_.assign(begin(), end());
    view_.reset();
    view_size_ = 0;
  }
  return own_;
}

bool operator==(const RecordData& a, std::span<const std::uint8_t> b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

}  // namespace qv
