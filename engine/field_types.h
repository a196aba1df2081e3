#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace qv {

enum FieldType : std::uint16_t {
  kNotUsed = 0,
  kText = 1,
  kInteger = 2,
  kFloat = 3,
  kPopUp = 4,
  kCheckBox = 5,
  kUnique = 6,
  kImage = 7,
  kDate = 8,
  kTime = 9,
  kLink = 10,
  kLinked = 11,
  kNote = 12,
  kHeading = 13,
  kDbPopup = 14,
  kCalculated = 15,
  kRelationship = 16,
  kConditional = 17,
  kExternal = 18,
};

inline constexpr int kFieldTypeCount = 19;

// The displayed name of a type code; empty for codes outside 0..18.
std::string_view FieldTypeName(unsigned code);
// The code whose displayed name equals `name` (case ignored), if any.
std::optional<FieldType> FieldTypeByName(std::string_view name);
// Types whose value is typed in as text by the user (Text, Integer, Float, Pop-Up, Check-Box,
// Date, Time, Note): the ones that take a default, a "Set Values To.." value, and that a CSV
// header can recreate.
bool HoldsTypedValue(unsigned code);

}  // namespace qv
