#include "engine/text.h"

#include <gtest/gtest.h>

namespace qv::test {
namespace {

std::string Stored(std::string_view utf8) {
  return Utf8ToStored(utf8).text;
}

TEST(StoredTextTest, LettersTheCharacterSetLacksAreReplacedAndSaidSo) {
  StoredText lodz = Utf8ToStored(
      "\xC5\x81\xC3\xB3"
      "d\xC5\xBA");  // Łódź
  EXPECT_EQ(lodz.text,
            "?\xF3"
            "d?");
  EXPECT_FALSE(lodz.exact);
  EXPECT_TRUE(lodz.valid_utf8);
  StoredText cafe = Utf8ToStored("Caf\xC3\xA9 \xE2\x82\xAC");  // "Café €" fits
  EXPECT_EQ(cafe.text, "Caf\xE9 \x80");
  EXPECT_TRUE(cafe.exact);
  EXPECT_EQ(Stored("\xF0\x9F\x98\x80!"), "?!");  // one letter beyond 16 bits, one replacement
  // The code page's holes come back as the bytes they were shown from.
  EXPECT_EQ(Cp1252ToUtf8("\x81\x8D"), "\xC2\x81\xC2\x8D");
  EXPECT_TRUE(Utf8ToStored("\xC2\x81\xC2\x8D").exact);
  EXPECT_EQ(Stored("\xC2\x81\xC2\x8D"), "\x81\x8D");
}

TEST(StoredTextTest, AMalformedByteIsOneReplacementAndKeepsWhatFollows) {
  // Latin-1 "été café" read as UTF-8: each lone é is one replacement, the t stays.
  StoredText latin1 = Utf8ToStored("\xE9t\xE9 caf\xE9");
  EXPECT_EQ(latin1.text, "?t? caf?");
  EXPECT_FALSE(latin1.valid_utf8);
  EXPECT_EQ(Stored("\xC0\xAF"), "??");  // an overlong "/" is no "/"
  EXPECT_EQ(Stored("\xE0\x80\xAF"
                   "a"),
            "???a");  // overlong in three bytes
  EXPECT_EQ(Stored("\xED\xA0\x80"
                   "a"),
            "???a");                              // a surrogate
  EXPECT_EQ(Stored("\xF4\x90\x80\x80"), "????");  // past U+10FFFF
  EXPECT_EQ(Stored("\xE2\x82"
                   "A"),
            "?A");                     // cut short before a letter
  EXPECT_EQ(Stored("ab\xE2"), "ab?");  // cut short by the end
  EXPECT_EQ(Stored("\x80"
                   "b"),
            "?b");  // a stray continuation byte
}

TEST(StoredTextTest, ANulIsReplacedInsteadOfCuttingTheValueShort) {
  StoredText utf8 = Utf8ToStored(std::string_view("a\0b", 3));
  EXPECT_EQ(utf8.text, "a?b");
  EXPECT_FALSE(utf8.exact);
  StoredText cp1252 = Cp1252ToStored(std::string_view("\xE9\0b", 3));
  EXPECT_EQ(cp1252.text, "\xE9?b");
  EXPECT_FALSE(cp1252.exact);
  EXPECT_TRUE(Cp1252ToStored("\xE9t\xE9").exact);
  EXPECT_EQ(ShowUtf8(std::string_view("\xE9t\0\xC3\xA9", 5)), "\\xE9t\\x00\xC3\xA9");
}

}  // namespace
}  // namespace qv::test
