#pragma once
// A record's bytes as the open database holds them: a view into the file image the database was
// read from, or storage of its own once the record is given new bytes or changed in place. An
// unchanged record costs no copy on open and is written back from the image as it was read.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/bytes.h"
#include "engine/file_bytes.h"
#include "engine/large_memory.h"

namespace qv {

// A whole file as read, shared by every record that still views it.
using FileImage = std::shared_ptr<const FileBytes>;

class RecordData {
 public:
  RecordData() = default;
  RecordData(Bytes bytes)  // NOLINT: records are assigned new bytes
      : own_(std::make_unique<Bytes>(std::move(bytes))) {}
  // A view of `length` bytes at `offset` of the image; the caller has checked the range.
  RecordData(const FileImage& image, std::size_t offset, std::size_t length)
      : view_(image, image->data() + offset), view_size_(length) {}
  RecordData(const RecordData& other);
  RecordData& operator=(const RecordData& other);
  RecordData(RecordData&&) noexcept = default;
  RecordData& operator=(RecordData&&) noexcept = default;
  ~RecordData() = default;

  RecordData& operator=(Bytes bytes) { return *this = RecordData(std::move(bytes)); }

  const std::uint8_t* data() const { return view_ ? view_.get() : own_ ? own_->data() : nullptr; }
  std::size_t size() const { return view_ ? view_size_ : own_ ? own_->size() : 0; }
  bool empty() const { return size() == 0; }
  const std::uint8_t* begin() const { return data(); }
  const std::uint8_t* end() const { return data() + size(); }
  std::uint8_t operator[](std::size_t i) const { return data()[i]; }

  operator std::span<const std::uint8_t>() const { return {data(), size()}; }  // NOLINT
  operator Bytes() const { return Bytes(begin(), end()); }                     // NOLINT: a copy

  // The bytes to change in place: the record takes storage of its own first.
  Bytes& edit();
  void clear() { *this = RecordData(); }
  // Whether the bytes are still the ones read from the file image.
  bool is_view() const { return view_ != nullptr; }

  friend bool operator==(const RecordData& a, std::span<const std::uint8_t> b);
  friend bool operator==(const RecordData& a, const Bytes& b) {
    return a == std::span<const std::uint8_t>(b);
  }
  friend bool operator==(const RecordData& a, const RecordData& b) {
    return a == std::span<const std::uint8_t>(b);
  }

 private:
  // 32 bytes in all, as there is one for every record: a view shares ownership of the image;
  // bytes of its own are held apart, and copied when the record is.
  std::shared_ptr<const std::uint8_t> view_;
  std::size_t view_size_ = 0;
  std::unique_ptr<Bytes> own_;
};

// One entry of the record table: the bytes, the 24-bit identifier and the attribute byte.
struct RecordSlot {
  RecordData data;  // usable as a byte span; data.edit() to change it in place
  std::uint32_t uid = 0;
  std::uint8_t attributes = 0;
};

// The record table of an open database; tens of thousands of slots, so a large block.
using RecordTable = std::vector<RecordSlot, LargeAllocator<RecordSlot>>;

}  // namespace qv
