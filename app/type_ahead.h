#pragma once
// Typing while the record list has the focus jumps to the first record whose look-up field
// begins with what was typed.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "engine/database.h"

namespace qv::app {

class TypeAhead {
 public:
  static constexpr std::size_t kMaxLength = 29;
  // Whether record `number`'s look-up value matches the lower-case text.
  using Matcher = std::function<bool(std::uint32_t number, const std::string& text)>;

  // Adds a character (ignored when the text is full) and searches; when nothing matches the
  // character is removed again. The record to select, if any.
  std::optional<std::uint32_t> Type(char c, const Database& db, const Matcher& matches);
  // Removes the last character and searches again with what is left.
  std::optional<std::uint32_t> Backspace(const Database& db, const Matcher& matches);
  void Clear() { text_.clear(); }
  const std::string& text() const { return text_; }

 private:
  std::optional<std::uint32_t> Search(const Database& db, const Matcher& matches) const;
  std::string text_;
};

}  // namespace qv::app
