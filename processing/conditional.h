#pragma once
// Conditional fields: "if FIELD OPERATOR VALUE then A else B", where A and B are each a fixed
// text or another field's value. The settings live in the field definition (docs/FORMAT.md);
// the result is stored as text, like a Text value.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "engine/database.h"

namespace qv {

enum ConditionalOperator : std::uint8_t {
  kCondEqual = 0,
  kCondNotEqual = 1,
  kCondLess = 2,
  kCondLessOrEqual = 3,
  kCondGreater = 4,
  kCondGreaterOrEqual = 5,
  kCondContains = 6,
  kCondIsEmpty = 7,
  kCondIsNotEmpty = 8,
};
inline constexpr int kConditionalOperators = 9;

// "=", "<>", "<", "<=", ">", ">=", "contains", "is empty", "is not empty"; empty otherwise.
std::string_view ConditionalOperatorText(int op);
std::optional<ConditionalOperator> ConditionalOperatorByText(std::string_view text);

struct ConditionalSettings {
  int test_field = -1;  // slot tested; -1 none
  std::uint8_t op = kCondEqual;
  int then_field = -1;  // -1: the result is then_text; else this slot's value
  int else_field = -1;
  std::string value;  // compared with; numbers with ".", dates as day numbers, times as seconds
  std::string then_text;
  std::string else_text;

  static ConditionalSettings Read(ConstFieldDefinition field);
  // Texts are cut to their places: value 19 characters, then and else 15 each.
  void Write(FieldDefinition field) const;
};

// The value of a field as a conditional reads and copies it: texts as stored, numbers as
// stored or "%ld", check boxes "0"/"1", dates "yyyy-mm-dd", times "hh:mm"; "" for empty dates
// and times and for types without a text.
std::string CanonicalValueText(ConstFieldDefinition field, std::span<const std::uint8_t> value);

// Whether the test holds for a record; a test field that is not a used slot never holds.
bool ConditionalTestHolds(const Database& db, const ConditionalSettings& settings,
                          std::span<const std::uint8_t> record);
// The text the field takes in a record.
std::string ConditionalResult(const Database& db, const ConditionalSettings& settings,
                              std::span<const std::uint8_t> record);
// Refreshes a Conditional value in `record`, marking the field changed when its text differs.
void UpdateConditionalField(Database& db, int slot, const DatabaseDefinition& definition,
                            Bytes& record);

// "if Qty < 5 then "Reorder" else Status".
std::string ConditionalDescription(const DatabaseDefinition& definition, int slot);

}  // namespace qv
