#include <gtest/gtest.h>

#include <random>
#include <string>

#include "engine/text.h"

namespace qv {
namespace {

TEST(ContainsNoCase, MatchesAsciiLettersInEitherCaseAndAllElseExactly) {
  EXPECT_TRUE(ContainsNoCase("Hex BOLT 12", "bolt"));
  EXPECT_TRUE(ContainsNoCase("bobolt", "BOLT"));  // a false start just before the match
  EXPECT_TRUE(ContainsNoCase("size 12mm", "12MM"));
  EXPECT_TRUE(ContainsNoCase("anything", ""));
  EXPECT_TRUE(ContainsNoCase("end", "END"));
  EXPECT_FALSE(ContainsNoCase("bol", "bolt"));
  EXPECT_FALSE(ContainsNoCase("b-o-l-t", "bolt"));
  EXPECT_FALSE(ContainsNoCase("[x]", "{X}"));  // only A to Z fold: '[' is not '{'
  EXPECT_TRUE(ContainsNoCase("Caf\xC9", "caf\xC9"));
  EXPECT_FALSE(ContainsNoCase("Caf\xC9", "caf\xE9"));  // Windows-1252 letters compare exactly
}

TEST(ContainsNoCase, StoredTextEndsAtItsFirstNul) {
  using namespace std::string_view_literals;
  EXPECT_TRUE(CStringContainsNoCase("xBOLT\0junk"sv, "bolt"));
  EXPECT_TRUE(CStringContainsNoCase("no nul bolt"sv, "BOLT"));
  EXPECT_FALSE(CStringContainsNoCase("ab\0bolt"sv, "bolt"));  // after the text: not in it
  EXPECT_FALSE(CStringContainsNoCase("bo\0lt"sv, "bolt"));
  EXPECT_TRUE(CStringContainsNoCase("\0"sv, ""));
}

// The search looks at eight bytes at once; the plain definition decides. Texts of a few letters,
// their capitals, bytes that fold onto letters without being ones ('@'), NULs and bytes above 127.
TEST(ContainsNoCase, AgreesWithTheDefinitionOnRandomTexts) {
  std::mt19937 random(7);
  const std::string alphabet("aBbAo@`\0\xC9\xE9", 10);
  auto pick = [&](std::size_t n) {
    std::string t;
    while (t.size() < n) t += alphabet[random() % alphabet.size()];
    return t;
  };
  auto contains = [](std::string_view hay, std::string_view needle) {
    return ToLowerAscii(hay).find(ToLowerAscii(needle)) != std::string::npos;
  };
  for (int round = 0; round < 20000; ++round) {
    const std::string hay = pick(random() % 30);
    std::string needle = pick(1 + random() % 3);
    ASSERT_EQ(ContainsNoCase(hay, needle), contains(hay, needle)) << round;
    needle.erase(needle.find('\0') == std::string::npos ? needle.size() : needle.find('\0'));
    const std::string_view text(hay.c_str());  // up to the first NUL
    ASSERT_EQ(CStringContainsNoCase(hay, needle), contains(text, needle)) << round;
  }
}

}  // namespace
}  // namespace qv
