#include "engine/record_check.h"

#include <cstring>

#include "engine/bytes.h"
#include "engine/record.h"

namespace qv {

namespace {

// An empty value, or text up to a terminating NUL; a number's text of number characters only.
bool TerminatedText(std::span<const std::uint8_t> value, bool number) {
  if (value.empty()) return true;
  const void* nul = std::memchr(value.data(), 0, value.size());
  if (nul == nullptr) return false;
  if (!number) return true;
  auto end = static_cast<const std::uint8_t*>(nul);
  for (const std::uint8_t* c = value.data(); c != end; ++c)
    if (!std::strchr("0123456789+-.,eE ", *c)) return false;
  return true;
}

bool ValueFits(unsigned type, std::span<const std::uint8_t> value) {
  switch (type) {
    case kText:
    case kNote:
    case kDbPopup:
    case kCalculated:
    case kConditional:
      return TerminatedText(value, false);
    case kFloat:
      return TerminatedText(value, true);
    case kInteger:
    case kUnique:
    case kDate:
    case kLink:
      return value.empty() || value.size() == 4;
    case kTime:
      // seconds, minutes, hours (255: no time)
      if (value.empty()) return true;
      return value.size() >= 3 && value.size() <= 4 && value[0] < 60 && value[1] < 60 &&
             (value[2] < 24 || value[2] == 255);
    case kCheckBox:
      return value.size() <= 1;
    case kImage:
      return value.empty() || value[0] <= 1;
    case kLinked:
      return value.size() <= 24 || TerminatedText(value.subspan(24), false);
    default:
      return true;  // Pop-Up items, External data and the rest: no shape to test
  }
}

}  // namespace

bool RecordDecodes(const DatabaseDefinition& definition, std::span<const std::uint8_t> record) {
  std::size_t at = ValuesOffset(record);
  if (at > record.size()) return false;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    if (at == record.size()) return true;  // every slot after the last value is empty
    if (at + 2 > record.size()) return false;
    std::uint16_t length = GetLE16(record.data() + at);
    if (length == kEndMarker) return true;
    if (at + 2 + length > record.size()) return false;
    ConstFieldDefinition field = definition.field(slot);
    if (field.used() && !ValueFits(field.type(), record.subspan(at + 2, length))) return false;
    at += 2 + std::size_t{length};
  }
  return true;
}

}  // namespace qv
