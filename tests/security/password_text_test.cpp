#include "security/password_text.h"

#include <gtest/gtest.h>

namespace qv::test {
namespace {

TEST(PasswordTextTest, TheFirstLineOfAFileWithoutItsLineEnd) {
  EXPECT_EQ(FirstLine("secret\nnext\n"), "secret");
  EXPECT_EQ(FirstLine("secret\r\nnext"), "secret");
  EXPECT_EQ(FirstLine("secret\rnext"), "secret");
  EXPECT_EQ(FirstLine("secret"), "secret");
  EXPECT_EQ(FirstLine("\nsecret"), "");
}

TEST(PasswordTextTest, APasswordIsNeverAlteredToFit) {
  std::string problem;
  EXPECT_EQ(PasswordFromUtf8("caf\xC3\xA9", problem), "caf\xE9");
  // "Łódź" would become "?ód?", which other passwords would match too.
  EXPECT_FALSE(
      PasswordFromUtf8("\xC5\x81\xC3\xB3"
                       "d\xC5\xBA",
                       problem));
  EXPECT_NE(problem, "");
  EXPECT_FALSE(PasswordFromUtf8("caf\xE9", problem));  // Latin-1 bytes, not UTF-8
  EXPECT_FALSE(PasswordFromUtf8(std::string_view("a\0b", 3), problem));
  EXPECT_TRUE(PasswordFromUtf8(std::string(39, 'x'), problem));
  EXPECT_FALSE(PasswordFromUtf8(std::string(40, 'x'), problem));
  EXPECT_EQ(problem, "a password has at most 39 characters");
}

}  // namespace
}  // namespace qv::test
