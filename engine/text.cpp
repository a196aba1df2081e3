#include "engine/text.h"

#include <cstdio>
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

bool ContainsNoCase(std::string_view hay, std::string_view needle) {
  if (needle.empty()) return true;
  if (needle.size() > hay.size()) return false;
  // Only places that start with the needle's first letter, in either case, are compared.
  const char lower = LowerAscii(needle[0]);
  const char upper = lower >= 'a' && lower <= 'z' ? static_cast<char>(lower - 'a' + 'A') : lower;
  for (size_t i = 0; i + needle.size() <= hay.size(); ++i) {
    if (hay[i] != lower && hay[i] != upper) continue;
    size_t k = 1;
    while (k < needle.size() && LowerAscii(hay[i + k]) == LowerAscii(needle[k])) ++k;
    if (k == needle.size()) return true;
  }
  return false;
}

namespace {
// Windows-1252 code points for 0x80..0x9F; 0 where the code page leaves a hole.
constexpr char16_t kHigh[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

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

std::string Utf8ToCp1252(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    auto c = static_cast<unsigned char>(text[i]);
    char32_t cp = c;
    size_t len = 1;
    if (c >= 0xF0 && i + 3 < text.size() + 0) {
      len = 4;
      cp = '?';
    } else if (c >= 0xE0 && i + 2 < text.size()) {
      cp = ((c & 0x0F) << 12) | ((text[i + 1] & 0x3F) << 6) | (text[i + 2] & 0x3F);
      len = 3;
    } else if (c >= 0xC0 && i + 1 < text.size()) {
      cp = ((c & 0x1F) << 6) | (text[i + 1] & 0x3F);
      len = 2;
    }
    i += len;
    if (cp < 0x80 || (cp >= 0xA0 && cp < 0x100)) {
      out += static_cast<char>(cp);
      continue;
    }
    char mapped = '?';
    for (int k = 0; k < 32; ++k)
      if (kHigh[k] == cp) mapped = static_cast<char>(0x80 + k);
    out += mapped;
  }
  return out;
}

}  // namespace qv
