#include "engine/large_memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace qv {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kSmallPage = 4096;

std::size_t RoundUp(std::size_t n, std::size_t unit) {
  return (n + unit - 1) / unit * unit;
}

}  // namespace

void* MapLargeBlock(std::size_t bytes) {
  // Huge pages must start on a 2 MiB boundary: map a huge page more and give back the ends. The
  // part past the last whole huge page gets small pages, so no more memory is used than touched.
  const std::size_t wanted = RoundUp(bytes, kSmallPage);
  const std::size_t mapped = wanted + kHugePage;
  void* raw = ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) throw std::bad_alloc();
  auto* base = static_cast<std::uint8_t*>(raw);
  auto* block =
      reinterpret_cast<std::uint8_t*>(RoundUp(reinterpret_cast<std::uintptr_t>(base), kHugePage));
  if (block > base) ::munmap(base, static_cast<std::size_t>(block - base));
  const std::size_t tail = static_cast<std::size_t>(base + mapped - (block + wanted));
  if (tail > 0) ::munmap(block + wanted, tail);
  ::madvise(block, wanted, MADV_HUGEPAGE);  // only advice: without it, small pages serve
#ifdef MADV_POPULATE_WRITE
  // Taken at once rather than by a page fault for each small page of the tail (Linux 5.14 on).
  ::madvise(block, wanted, MADV_POPULATE_WRITE);
#endif
  return block;
}

void UnmapLargeBlock(void* block, std::size_t bytes) {
  ::munmap(block, RoundUp(bytes, kSmallPage));
}

}  // namespace qv
