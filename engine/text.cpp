#include "engine/text.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

namespace qv {

std::string StringPrintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  // Most texts fit a small buffer: one formatting pass instead of two.
  char small[256];
  int needed = std::vsnprintf(small, sizeof small, format, copy);
  va_end(copy);
  std::string out;
  if (needed > 0 && static_cast<size_t>(needed) < sizeof small) {
    out.assign(small, static_cast<size_t>(needed));
  } else if (needed > 0) {
    std::vector<char> buffer(static_cast<size_t>(needed) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, args);
    out.assign(buffer.data(), static_cast<size_t>(needed));
  }
  va_end(args);
  return out;
}

std::string ToLowerAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = LowerAscii(c);
  return out;
}

int Stricmp(std::string_view a, std::string_view b) {
  size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    int ca = static_cast<unsigned char>(LowerAscii(a[i]));
    int cb = static_cast<unsigned char>(LowerAscii(b[i]));
    if (ca != cb) return ca - cb;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -static_cast<unsigned char>(LowerAscii(b[n]))
                             : static_cast<unsigned char>(LowerAscii(a[n]));
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && Stricmp(a, b) == 0;
}

namespace {

constexpr std::uint64_t kEveryByte = 0x0101010101010101ull;

bool HasZeroByte(std::uint64_t v) {
  return ((v - kEveryByte) & ~v & (kEveryByte << 7)) != 0;
}

// Only places that start with the needle's first letter, in either case, are compared. For a
// letter, setting bit 5 folds the capital onto it and maps nothing else there. Eight bytes are
// looked at at once for such a place (or a NUL), as most of a text holds none. A needle holds no
// NUL, so a comparison never runs past one.
template <bool kStopAtNul>
bool SearchNoCase(std::string_view hay, std::string_view needle) {
  if (needle.empty()) return true;
  if (needle.size() > hay.size()) return false;
  const char first = LowerAscii(needle[0]);
  const char fold = first >= 'a' && first <= 'z' ? 0x20 : 0;
  const std::uint64_t folds = kEveryByte * static_cast<unsigned char>(fold);
  const std::uint64_t firsts = kEveryByte * static_cast<unsigned char>(first);
  const std::size_t last = hay.size() - needle.size();
  for (std::size_t i = 0; i <= last;) {
    if (i + 8 <= hay.size()) {
      std::uint64_t word;
      std::memcpy(&word, hay.data() + i, 8);
      if (!HasZeroByte((word | folds) ^ firsts) && !(kStopAtNul && HasZeroByte(word))) {
        i += 8;
        continue;
      }
    }
    if (kStopAtNul && hay[i] == '\0') return false;
    if (static_cast<char>(hay[i] | fold) == first) {
      std::size_t k = 1;
      while (k < needle.size() && LowerAscii(hay[i + k]) == LowerAscii(needle[k])) ++k;
      if (k == needle.size()) return true;
    }
    ++i;
  }
  return false;
}

}  // namespace

bool ContainsNoCase(std::string_view hay, std::string_view needle) {
  return SearchNoCase<false>(hay, needle);
}

bool CStringContainsNoCase(std::string_view bytes, std::string_view needle) {
  return SearchNoCase<true>(bytes, needle);
}

namespace {
// Windows-1252 code points for 0x80..0x9F; 0 where the code page leaves a hole.
constexpr char16_t kHigh[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}
}  // namespace

std::string Cp1252ToUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char ch : text) {
    auto c = static_cast<unsigned char>(ch);
    char32_t cp = c;
    if (c >= 0x80 && c < 0xA0) cp = kHigh[c - 0x80] ? kHigh[c - 0x80] : c;
    AppendUtf8(out, cp);
  }
  return out;
}

namespace {

// The next code point of UTF-8 text at `i`, advancing `i`. A malformed sequence (a stray
// continuation byte, an overlong form, a surrogate, a value past U+10FFFF, a sequence cut short)
// gives nothing and advances past its lead byte and the continuation bytes that may still
// belong to it, so the letters after it are kept.
std::optional<char32_t> NextCodePoint(std::string_view text, std::size_t& i) {
  auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char c = byte(i++);
  if (c < 0x80) return c;
  int extra = c >= 0xC2 && c <= 0xDF   ? 1
              : c >= 0xE0 && c <= 0xEF ? 2
              : c >= 0xF0 && c <= 0xF4 ? 3
                                       : 0;
  if (extra == 0) return std::nullopt;
  char32_t cp = c & (0x3F >> extra);
  for (int k = 0; k < extra; ++k) {
    if (i >= text.size()) return std::nullopt;
    const unsigned char next = byte(i);
    // The second byte's range also rules out overlong forms, surrogates and values too large.
    unsigned char low = 0x80, high = 0xBF;
    if (k == 0 && c == 0xE0) low = 0xA0;
    if (k == 0 && c == 0xED) high = 0x9F;
    if (k == 0 && c == 0xF0) low = 0x90;
    if (k == 0 && c == 0xF4) high = 0x8F;
    if (next < low || next > high) return std::nullopt;
    cp = (cp << 6) | (next & 0x3F);
    ++i;
  }
  return cp;
}

char ToCp1252(char32_t cp) {
  if (cp < 0x80 || (cp >= 0xA0 && cp < 0x100)) return static_cast<char>(cp);
  // The code page's holes come back as the control characters Cp1252ToUtf8 made of them.
  if (cp < 0xA0 && kHigh[cp - 0x80] == 0) return static_cast<char>(cp);
  for (int k = 0; k < 32; ++k)
    if (kHigh[k] == cp) return static_cast<char>(0x80 + k);
  return 0;
}

}  // namespace

StoredText Utf8ToStored(std::string_view text) {
  StoredText out;
  out.text.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    auto cp = NextCodePoint(text, i);
    if (!cp) out.valid_utf8 = false;
    char c = cp ? ToCp1252(*cp) : 0;
    // A NUL would end the stored text early, so it is replaced like a letter the set lacks.
    if (c == 0) {
      c = kReplacement;
      out.exact = false;
    }
    out.text += c;
  }
  return out;
}

StoredText Cp1252ToStored(std::string_view text) {
  StoredText out{std::string(text)};
  for (char& c : out.text) {
    if (c != 0) continue;
    c = kReplacement;
    out.exact = false;
  }
  return out;
}

std::string Utf8ToCp1252(std::string_view text) {
  return Utf8ToStored(text).text;
}

std::string ShowUtf8(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t start = i;
    auto cp = NextCodePoint(text, i);
    if (cp && *cp != 0) {
      out.append(text.substr(start, i - start));
      continue;
    }
    for (std::size_t k = start; k < i; ++k)
      out += StringPrintf("\\x%02X", static_cast<unsigned char>(text[k]));
  }
  return out;
}

}  // namespace qv
