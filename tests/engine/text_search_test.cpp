#include <gtest/gtest.h>

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

}  // namespace
}  // namespace qv
