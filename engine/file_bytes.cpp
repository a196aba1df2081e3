#include "engine/file_bytes.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "engine/large_memory.h"

namespace qv {

FileBytes::FileBytes(std::size_t size) : size_(size) {
  if (size < kLargeBlock) {
    if (size > 0) heap_.reset(new std::uint8_t[size]);  // NOLINT: left unset on purpose
    return;
  }
  mapped_ = static_cast<std::uint8_t*>(MapLargeBlock(size));
  mapped_size_ = size;
}

FileBytes::FileBytes(std::span<const std::uint8_t> bytes) : FileBytes(bytes.size()) {
  if (!bytes.empty()) std::memcpy(data(), bytes.data(), bytes.size());
}

FileBytes::FileBytes(FileBytes&& other) noexcept
    : bytes_(std::move(other.bytes_)),
      heap_(std::move(other.heap_)),
      mapped_(std::exchange(other.mapped_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      mapped_size_(std::exchange(other.mapped_size_, 0)) {}

FileBytes& FileBytes::operator=(FileBytes&& other) noexcept {
  if (this == &other) return *this;
  Release();
  bytes_ = std::move(other.bytes_);
  heap_ = std::move(other.heap_);
  mapped_ = std::exchange(other.mapped_, nullptr);
  size_ = std::exchange(other.size_, 0);
  mapped_size_ = std::exchange(other.mapped_size_, 0);
  return *this;
}

FileBytes::~FileBytes() {
  Release();
}

void FileBytes::Release() {
  if (mapped_) UnmapLargeBlock(mapped_, mapped_size_);
  mapped_ = nullptr;
  heap_.reset();
  size_ = mapped_size_ = 0;
}

void FileBytes::Shrink(std::size_t size) {
  if (mapped_ || heap_)
    size_ = std::min(size_, size);
  else if (size < bytes_.size())
    bytes_.resize(size);
}

bool operator==(const FileBytes& a, const Bytes& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

}  // namespace qv
