#include "engine/record_data.h"

#include <algorithm>

namespace qv {

RecordData::RecordData(const RecordData& other)
    : view_(other.view_),
      view_size_(other.view_size_),
      own_(other.own_ ? std::make_unique<Bytes>(*other.own_) : nullptr) {}

RecordData& RecordData::operator=(const RecordData& other) {
  if (this != &other) *this = RecordData(other);
  return *this;
}

Bytes& RecordData::edit() {
  if (view_ || !own_) {
    own_ = std::make_unique<Bytes>(begin(), end());
    view_.reset();
    view_size_ = 0;
  }
  return *own_;
}

bool operator==(const RecordData& a, std::span<const std::uint8_t> b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

}  // namespace qv
