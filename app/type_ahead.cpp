#include "app/type_ahead.h"

#include "engine/text.h"

namespace qv::app {

std::optional<std::uint32_t> TypeAhead::Search(const Database& db, const Matcher& matches) const {
  if (text_.empty()) return std::nullopt;
  std::string lower = ToLowerAscii(text_);
  // The visible list holds the records that pass the filter, in database order.
  for (std::uint32_t number : db.visible)
    if (matches(number, lower)) return number;
  return std::nullopt;
}

std::optional<std::uint32_t> TypeAhead::Type(char c, const Database& db, const Matcher& matches) {
  if (text_.size() >= kMaxLength) return std::nullopt;
  text_.push_back(c);
  auto found = Search(db, matches);
  if (!found) text_.pop_back();
  return found;
}

std::optional<std::uint32_t> TypeAhead::Backspace(const Database& db, const Matcher& matches) {
  if (text_.empty()) return std::nullopt;
  text_.pop_back();
  return Search(db, matches);
}

}  // namespace qv::app
