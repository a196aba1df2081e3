#pragma once
// Reading stored values as numbers, the way comparisons, filters and formulas read them. The
// C library's atof/atol are followed, but independent of the process locale: stored numbers
// always use ".".

#include <cstdint>
#include <span>
#include <string_view>

#include "engine/schema.h"

namespace qv {

// As atof: leading blanks, the longest numeric prefix, 0 when there is none.
double TextToDouble(std::string_view text);
// As atol with a 32-bit long: leading blanks, sign, digits; clamped on overflow.
std::int32_t TextToLong(std::string_view text);

// The result kind of a Calculated field (definition offset 43), a small signed number.
inline int CalculatedResultKind(ConstFieldDefinition field) {
  return static_cast<std::int8_t>(field.bytes()[43]);
}
// Decimals of a stored Calculated result: kind 0 four, 4 three, 5 two, 6 one, else none.
int ResultKindDecimals(int kind);

// A value as a formula operand: Integer signed, Unique and Date unsigned, Time as seconds
// since midnight (no time counts 0), Check-Box its byte, Float, Calculated and texts by their
// numeric prefix, Linked by the text after its 24-byte block; anything else 0.
double FieldNumericValue(ConstFieldDefinition field, std::span<const std::uint8_t> value);

// Seconds of a 3-byte time (seconds, minutes, hours; an hour of 255 counts as 0).
std::int32_t TimeBytesToSeconds(const std::uint8_t* bytes);

}  // namespace qv
