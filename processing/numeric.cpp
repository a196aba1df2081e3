#include "processing/numeric.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "engine/field_types.h"
#include "engine/record.h"

namespace qv {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

std::string_view SkipBlanks(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  return text.substr(i);
}

}  // namespace

double TextToDouble(std::string_view text) {
  text = SkipBlanks(text);
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) return 0.0;
  }
  double value = 0.0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec == std::errc::result_out_of_range) {
    // atof answers an infinity (or 0 for an underflow); from_chars leaves the value alone.
    bool tiny = false;
    for (const char* p = text.data(); p < end; ++p)
      if (*p == 'e' || *p == 'E') tiny = p + 1 < end && p[1] == '-';
    value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
  } else if (ec != std::errc()) {
    return 0.0;
  }
  return negative ? -value : value;
}

std::int32_t TextToLong(std::string_view text) {
  text = SkipBlanks(text);
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  std::int64_t value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') break;
    value = value * 10 + (c - '0');
    if (value > std::int64_t{1} << 32) break;  // far enough to know it overflows
  }
  if (negative) value = -value;
  if (value > std::numeric_limits<std::int32_t>::max()) return std::numeric_limits<std::int32_t>::max();
  if (value < std::numeric_limits<std::int32_t>::min()) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(value);
}

int ResultKindDecimals(int kind) {
  switch (kind) {
    case 0: return 4;
    case 4: return 3;
    case 5: return 2;
    case 6: return 1;
    default: return 0;
  }
}

std::int32_t TimeBytesToSeconds(const std::uint8_t* bytes) {
  int hours = bytes[2] == 255 ? 0 : bytes[2];
  return (hours * 60 + bytes[1]) * 60 + bytes[0];
}

double FieldNumericValue(ConstFieldDefinition field, std::span<const std::uint8_t> value) {
  switch (field.type()) {
    case kInteger: return ValueInt32(value);
    case kUnique:
    case kDate: return ValueUInt32(value);
    case kTime: return value.size() >= 3 ? TimeBytesToSeconds(value.data()) : 0.0;
    case kCheckBox: return value.empty() ? 0.0 : value[0];
    case kFloat:
    case kCalculated:
    case kText:
    case kNote:
    case kDbPopup:
    case kPopUp:
    case kConditional: return TextToDouble(ValueText(value));
    case kLinked: return value.size() >= 25 ? TextToDouble(ValueText(value.subspan(24))) : 0.0;
    default: return 0.0;
  }
}

}  // namespace qv
