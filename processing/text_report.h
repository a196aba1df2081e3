#pragma once
// Text from the user or a file becomes the 8-bit text a database stores. Every path that writes
// text converts through a TextReport, which keeps each value that could not be stored exactly
// (a letter the character set lacks, a NUL, malformed UTF-8) so it can be shown or refused.

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "processing/text_encoding.h"

namespace qv {

// Where a text goes: a row ("line" 3 of a file, "record" 2) and what it is (a field's name as
// stored, or words such as "database name"). Cheap to make; spelled out only for a loss.
struct TextPlace {
  const char* row_kind = nullptr;  // nullptr: no row
  std::size_t row = 0;
  std::string_view what;
};

struct TextLoss {
  std::string place;   // "line 3, Name" (UTF-8)
  std::string given;   // the text as given, malformed bytes shown as \xNN
  std::string stored;  // what is stored instead (UTF-8)
  bool invalid_utf8 = false;
};

class TextReport {
 public:
  // The stored form of `text`; a loss is kept with its place.
  std::string Store(std::string_view text, TextEncoding encoding, const TextPlace& place);
  void Merge(const TextReport& other);

  bool exact() const { return losses_.empty(); }
  const std::vector<TextLoss>& losses() const { return losses_; }
  bool any_invalid_utf8() const;
  // One message per value: line 3, Name: "Łódź" cannot be stored exactly and becomes "?ód?".
  std::vector<std::string> Messages() const;

 private:
  std::vector<TextLoss> losses_;
};

// Whether file text needs Store at all: plain ASCII without NULs is stored as it is.
inline bool NeedsConversion(std::string_view text, TextEncoding encoding) {
  if (std::memchr(text.data(), 0, text.size())) return true;
  return encoding == TextEncoding::Utf8 && !IsAscii(text);
}

}  // namespace qv
