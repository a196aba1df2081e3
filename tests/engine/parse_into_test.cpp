#include <gtest/gtest.h>

#include <array>

#include "engine/format.h"
#include "engine/record.h"

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

// Plain decimals take a faster path than the other spellings; both read the same numbers.
TEST(ParseValueInto, NumbersReadAlikeWhateverTheSpelling) {
  std::array<std::uint8_t, kFieldDefinitionSize> bytes{};
  FieldDefinition field(bytes.data());
  field.set_type(kFloat);
  field.set_length(40);
  field.settings()[0] = 2;
  FieldRecord items;
  FormatOptions options;
  auto text = [&](const char* typed) {
    auto v = ParseValue(field, items, typed, options);
    return v ? std::string(ValueText(*v)) : std::string("refused");
  };
  EXPECT_EQ(text("2.5"), "2.50");
  EXPECT_EQ(text("-.5"), "-0.50");
  EXPECT_EQ(text(".5"), "0.50");
  EXPECT_EQ(text("1."), "1.00");
  EXPECT_EQ(text("+7"), "7.00");
  EXPECT_EQ(text(" 12 "), "12.00");
  EXPECT_EQ(text("1e3"), "1000.00");
  EXPECT_EQ(text("0.125"), "0.12");  // rounds as printf does: to even on an exact half
  EXPECT_EQ(text("1.2.3"), "refused");
  EXPECT_EQ(text("-"), "refused");
  field.set_type(kInteger);
  auto whole = [&](const char* typed) {
    auto v = ParseValue(field, items, typed, options);
    return v ? std::to_string(ValueInt32(*v)) : std::string("refused");
  };
  EXPECT_EQ(whole("-42"), "-42");
  EXPECT_EQ(whole("+5"), "5");
  EXPECT_EQ(whole("007"), "7");
  EXPECT_EQ(whole("2147483647"), "2147483647");
  EXPECT_EQ(whole("2147483648"), "refused");
  EXPECT_EQ(whole("99999999999999999999"), "refused");
  EXPECT_EQ(whole("1.5"), "refused");
}

}  // namespace
}  // namespace qv
