#pragma once
// Byte codecs, written once: big-endian for the container and the schema records,
// little-endian for the values inside data records.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qv {

using Bytes = std::vector<std::uint8_t>;

inline std::uint16_t GetBE16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}
inline std::uint32_t GetBE32(const std::uint8_t* p) {
  return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
         p[3];
}
inline void PutBE16(std::uint8_t* p, std::uint16_t v) {
  p[0] = static_cast<std::uint8_t>(v >> 8);
  p[1] = static_cast<std::uint8_t>(v);
}
inline void PutBE32(std::uint8_t* p, std::uint32_t v) {
  p[0] = static_cast<std::uint8_t>(v >> 24);
  p[1] = static_cast<std::uint8_t>(v >> 16);
  p[2] = static_cast<std::uint8_t>(v >> 8);
  p[3] = static_cast<std::uint8_t>(v);
}

inline std::uint16_t GetLE16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t GetLE32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} | (std::uint32_t{p[1]} << 8) | (std::uint32_t{p[2]} << 16) |
         (std::uint32_t{p[3]} << 24);
}
inline std::uint32_t GetLE24(const std::uint8_t* p) {
  return std::uint32_t{p[0]} | (std::uint32_t{p[1]} << 8) | (std::uint32_t{p[2]} << 16);
}
inline void PutLE16(std::uint8_t* p, std::uint16_t v) {
  p[0] = static_cast<std::uint8_t>(v);
  p[1] = static_cast<std::uint8_t>(v >> 8);
}
inline void PutLE32(std::uint8_t* p, std::uint32_t v) {
  p[0] = static_cast<std::uint8_t>(v);
  p[1] = static_cast<std::uint8_t>(v >> 8);
  p[2] = static_cast<std::uint8_t>(v >> 16);
  p[3] = static_cast<std::uint8_t>(v >> 24);
}

inline void AppendLE16(Bytes& out, std::uint16_t v) {
  out.push_back(static_cast<std::uint8_t>(v));
  out.push_back(static_cast<std::uint8_t>(v >> 8));
}
inline void AppendLE32(Bytes& out, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
inline void AppendBytes(Bytes& out, const std::uint8_t* p, std::size_t n) {
  out.insert(out.end(), p, p + n);
}

// The NUL-terminated text at p, never reading past n bytes.
inline std::string_view CStringAt(const std::uint8_t* p, std::size_t n) {
  if (n == 0) return {};
  const void* end = std::memchr(p, 0, n);
  std::size_t len = end ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(end) - p) : n;
  return {reinterpret_cast<const char*>(p), len};
}

// Copies text into a fixed NUL-terminated area of n bytes, cutting it to fit.
inline void PutCString(std::uint8_t* p, std::size_t n, std::string_view text) {
  std::memset(p, 0, n);
  if (n == 0) return;
  std::memcpy(p, text.data(), text.size() < n ? text.size() : n - 1);
}

}  // namespace qv
