#include <gtest/gtest.h>

#include <array>

#include "engine/format.h"

namespace qv {
namespace {

// The reusing parse gives what the plain one gives, for every type and text, valid or not,
// whatever the buffer held before.
TEST(ParseValueInto, AgreesWithParseValue) {
  const char* texts[] = {
      "",    "0",  "12", "-7",   "2147483648", "0012",  "3.14159",  "1e3",  "abc",
      "yes", "No", "X",  "true", "maybe",      "12:30", "1/2/2024", "  5 ", "12345678901234567890",
      "4,5"};
  const FieldType types[] = {kText, kInteger, kUnique, kFloat, kCheckBox, kDate, kTime, kPopUp};
  FormatOptions options;
  FieldRecord items;
  Bytes out = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
  for (FieldType type : types) {
    for (int decimals : {0, 2}) {
      std::array<std::uint8_t, kFieldDefinitionSize> bytes{};
      FieldDefinition field(bytes.data());
      field.set_type(type);
      field.set_length(type == kText ? 5 : 40);  // "abc" fits, longer texts do not
      field.settings()[0] = static_cast<std::uint8_t>(decimals);
      for (const char* text : texts) {
        auto expected = ParseValue(field, items, text, options);
        bool ok = ParseValueInto(field, items, text, options, out);
        ASSERT_EQ(ok, expected.has_value()) << type << " '" << text << "'";
        if (ok) EXPECT_EQ(out, *expected) << type << " '" << text << "'";
      }
    }
  }
}

}  // namespace
}  // namespace qv
