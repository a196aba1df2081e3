#include "processing/text_report.h"

#include "engine/text.h"

namespace qv {

std::string TextReport::Store(std::string_view text, TextEncoding encoding,
                              const TextPlace& place) {
  StoredText stored = encoding == TextEncoding::Utf8 ? Utf8ToStored(text) : Cp1252ToStored(text);
  if (stored.exact) return std::move(stored.text);
  TextLoss loss;
  if (place.row_kind) loss.place = StringPrintf("%s %zu", place.row_kind, place.row);
  if (!place.what.empty())
    loss.place += (loss.place.empty() ? "" : ", ") + Cp1252ToUtf8(place.what);
  loss.given = encoding == TextEncoding::Utf8 ? ShowUtf8(text) : ShowUtf8(Cp1252ToUtf8(text));
  loss.stored = Cp1252ToUtf8(stored.text);
  loss.invalid_utf8 = !stored.valid_utf8;
  losses_.push_back(std::move(loss));
  return std::move(stored.text);
}

void TextReport::Merge(const TextReport& other) {
  losses_.insert(losses_.end(), other.losses_.begin(), other.losses_.end());
}

bool TextReport::any_invalid_utf8() const {
  for (const TextLoss& loss : losses_)
    if (loss.invalid_utf8) return true;
  return false;
}

std::vector<std::string> TextReport::Messages() const {
  std::vector<std::string> out;
  for (const TextLoss& loss : losses_)
    out.push_back(StringPrintf("%s%s\"%s\" cannot be stored exactly and becomes \"%s\"",
                               loss.place.c_str(), loss.place.empty() ? "" : ": ",
                               loss.given.c_str(), loss.stored.c_str()));
  return out;
}

}  // namespace qv
