#include "engine/large_memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace qv {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

std::size_t RoundUp(std::size_t n, std::size_t unit) {
  return (n + unit - 1) / unit * unit;
}

}  // namespace

void* MapLargeBlock(std::size_t bytes) {
  // Huge pages must start on a 2 MiB boundary: map a page more and give back the ends.
  const std::size_t wanted = RoundUp(bytes, kHugePage);
  const std::size_t mapped = wanted + kHugePage;
  void* raw = ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) throw std::bad_alloc();
  auto* base = static_cast<std::uint8_t*>(raw);
  auto* block = reinterpret_cast<std::uint8_t*>(
      RoundUp(reinterpret_cast<std::uintptr_t>(base), kHugePage));
  if (block > base) ::munmap(base, static_cast<std::size_t>(block - base));
  const std::size_t tail = static_cast<std::size_t>(base + mapped - (block + wanted));
  if (tail > 0) ::munmap(block + wanted, tail);
  ::madvise(block, wanted, MADV_HUGEPAGE);  // only advice: without it, small pages serve
  return block;
}

void UnmapLargeBlock(void* block, std::size_t bytes) {
  ::munmap(block, RoundUp(bytes, kHugePage));
}

}  // namespace qv
