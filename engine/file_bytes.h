#pragma once
// A whole file's bytes as read into memory: storage that is not zero-filled first (the read fills
// it), a large block of its own for a large file (see large_memory.h).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "engine/bytes.h"

namespace qv {

class FileBytes {
 public:
  FileBytes() = default;
  explicit FileBytes(std::size_t size);                          // the contents are not set
  explicit FileBytes(Bytes bytes) : bytes_(std::move(bytes)) {}  // adopted, not copied
  explicit FileBytes(std::span<const std::uint8_t> bytes);       // a copy
  FileBytes(FileBytes&& other) noexcept;
  FileBytes& operator=(FileBytes&& other) noexcept;
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;
  ~FileBytes();

  std::uint8_t* data() { return mapped_ ? mapped_ : heap_ ? heap_.get() : bytes_.data(); }
  const std::uint8_t* data() const {
    return mapped_ ? mapped_ : heap_ ? heap_.get() : bytes_.data();
  }
  std::size_t size() const { return mapped_ || heap_ ? size_ : bytes_.size(); }
  bool empty() const { return size() == 0; }
  const std::uint8_t* begin() const { return data(); }
  const std::uint8_t* end() const { return data() + size(); }
  std::uint8_t operator[](std::size_t i) const { return data()[i]; }
  operator std::span<const std::uint8_t>() const { return {data(), size()}; }  // NOLINT
  operator std::span<std::uint8_t>() { return {data(), size()}; }              // NOLINT

  // Keeps the first `size` bytes (a file that shrank while it was read).
  void Shrink(std::size_t size);

  friend bool operator==(const FileBytes& a, const Bytes& b);

 private:
  void Release();

  Bytes bytes_;                           // bytes handed over
  std::unique_ptr<std::uint8_t[]> heap_;  // small files
  std::uint8_t* mapped_ = nullptr;        // large files: a block of their own
  std::size_t size_ = 0;
  std::size_t mapped_size_ = 0;
};

}  // namespace qv
