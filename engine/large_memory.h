#pragma once
// Memory for the few large blocks a database holds (a file's image, its record table): mapped on
// its own, offered huge pages, and not zero-filled by us. A fresh block of ordinary pages costs a
// page fault for every 4 KiB on first touch, which for a 65,000-record database is thousands of
// faults; with huge pages it is a handful.

#include <cstddef>
#include <memory>

namespace qv {

// Blocks below this come from the heap: a huge page would be mostly unused.
inline constexpr std::size_t kLargeBlock = std::size_t{1} << 20;

// A block of at least `bytes` bytes, aligned for huge pages, its memory taken at once (the blocks
// are filled right after: a file read, a table reserved for its records); throws std::bad_alloc.
void* MapLargeBlock(std::size_t bytes);
// Gives back a block from MapLargeBlock, given the same `bytes`.
void UnmapLargeBlock(void* block, std::size_t bytes);

// An allocator for containers that can grow large: large blocks mapped, small ones from the heap.
template <class T>
struct LargeAllocator {
  using value_type = T;
  LargeAllocator() = default;
  template <class U>
  LargeAllocator(const LargeAllocator<U>&) {}  // NOLINT: rebinding is implicit

  T* allocate(std::size_t n) {
    if (n * sizeof(T) < kLargeBlock) return std::allocator<T>().allocate(n);
    return static_cast<T*>(MapLargeBlock(n * sizeof(T)));
  }
  void deallocate(T* p, std::size_t n) {
    if (n * sizeof(T) < kLargeBlock)
      std::allocator<T>().deallocate(p, n);
    else
      UnmapLargeBlock(p, n * sizeof(T));
  }
  friend bool operator==(const LargeAllocator&, const LargeAllocator&) { return true; }
};

}  // namespace qv
