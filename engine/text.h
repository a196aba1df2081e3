#pragma once
// Text helpers shared by the core: the one checked printf, and the ASCII case rules of the
// C library's _stricmp that the sort, filter and find rules are written against.

#include <cstdarg>
#include <string>
#include <string_view>

namespace qv {

// snprintf into a std::string; the format is the system's own printf format.
std::string StringPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

inline char LowerAscii(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
}
std::string ToLowerAscii(std::string_view text);

// Case-insensitive comparison as _stricmp: negative, 0 or positive.
int Stricmp(std::string_view a, std::string_view b);
// Whether needle occurs in hay, ignoring ASCII case.
bool ContainsNoCase(std::string_view hay, std::string_view needle);
// The same for the text that ends at the first NUL of `bytes` (or at their end), in one pass: a
// filter asks this of every record. `needle` holds no NUL.
bool CStringContainsNoCase(std::string_view bytes, std::string_view needle);
bool EqualsNoCase(std::string_view a, std::string_view b);

// Windows-1252 <-> UTF-8 at the user-facing boundaries (files keep 8-bit text).
std::string Cp1252ToUtf8(std::string_view text);

// Text as a database stores it, and whether it is the text that was given.
struct StoredText {
  std::string text;
  bool exact = true;       // false when a letter the character set lacks, a NUL or a
                           // malformed byte was replaced by kReplacement
  bool valid_utf8 = true;  // false when the given text was not well-formed UTF-8
};
inline constexpr char kReplacement = '?';

// Strict UTF-8 decoding: each malformed sequence (overlong forms included) is one replacement
// and never takes the letters after it.
StoredText Utf8ToStored(std::string_view text);
// Windows-1252 text kept as it is, save for NULs.
StoredText Cp1252ToStored(std::string_view text);
// Utf8ToStored's text alone, for text whose loss is reported elsewhere or cannot occur.
std::string Utf8ToCp1252(std::string_view text);
// UTF-8 for a message: malformed bytes and NULs shown as \xNN.
std::string ShowUtf8(std::string_view text);

}  // namespace qv
