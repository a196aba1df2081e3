// The cipher against libtomcrypt's SAFER SK-128 and the published example.

#include "security/safer.h"

#include <gtest/gtest.h>
#include <tomcrypt.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "security/cfb.h"

namespace qv {
namespace {

symmetric_key TomKey(const UserKey& user_key) {
  symmetric_key skey;
  EXPECT_EQ(safer_sk128_setup(user_key.data(), 16, kSaferRounds, &skey), CRYPT_OK);
  return skey;
}

UserKey RandomKey(std::mt19937& rng) {
  UserKey key;
  for (auto& b : key) b = static_cast<std::uint8_t>(rng());
  return key;
}

TEST(Safer, PublishedExampleAndLibraryAgree) {
  // The designers' SAFER SK-128 example: key 1..8 then eight zeros, plaintext 1..8.
  UserKey key = {1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0};
  std::uint8_t block[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const std::uint8_t expected[8] = {0xFF, 0x78, 0x11, 0xE4, 0xB3, 0xA7, 0x2E, 0x71};
  ExpandedKey expanded = ExpandKey(key);
  EncryptBlock(block, expanded);
  EXPECT_EQ(0, std::memcmp(block, expected, 8));
  DecryptBlock(block, expanded);
  EXPECT_EQ(block[0], 1);
  EXPECT_EQ(block[7], 8);
  EXPECT_EQ(safer_sk128_test(), CRYPT_OK);
}

TEST(Safer, KeyScheduleMatchesLibraryOnRandomKeys) {
  std::mt19937 rng(20240601);
  for (int n = 0; n < 500; ++n) {
    UserKey key = RandomKey(rng);
    ExpandedKey ours = ExpandKey(key);
    symmetric_key theirs = TomKey(key);
    ASSERT_TRUE(std::equal(ours.begin(), ours.end(), theirs.safer.key)) << "key " << n;
    // Byte 0 is the round count and the first subkey is the second key half as it stands.
    EXPECT_EQ(ours[0], 10);
    EXPECT_TRUE(std::equal(ours.begin() + 1, ours.begin() + 9, key.begin() + 8));
  }
}

TEST(Safer, BlocksMatchLibraryOnRandomKeysAndBlocks) {
  std::mt19937 rng(7);
  for (int n = 0; n < 300; ++n) {
    UserKey key = RandomKey(rng);
    ExpandedKey ours = ExpandKey(key);
    symmetric_key theirs = TomKey(key);
    for (int b = 0; b < 20; ++b) {
      std::uint8_t plain[8], mine[8], lib[8];
      for (auto& x : plain) x = static_cast<std::uint8_t>(rng());
      std::copy(plain, plain + 8, mine);
      EncryptBlock(mine, ours);
      ASSERT_EQ(safer_ecb_encrypt(plain, lib, &theirs), CRYPT_OK);
      ASSERT_EQ(0, std::memcmp(mine, lib, 8)) << "key " << n << " block " << b;
      DecryptBlock(mine, ours);
      ASSERT_EQ(0, std::memcmp(mine, plain, 8));
      // Decrypting an arbitrary block agrees as well, not only undoing our own encryption.
      std::copy(plain, plain + 8, mine);
      DecryptBlock(mine, ours);
      ASSERT_EQ(safer_ecb_decrypt(plain, lib, &theirs), CRYPT_OK);
      ASSERT_EQ(0, std::memcmp(mine, lib, 8));
    }
  }
}

std::string KeyText(const UserKey& key) {
  return std::string(key.begin(), key.end());
}

TEST(Safer, PasswordPaddingRepeatsThePassword) {
  EXPECT_EQ(KeyText(PadPassword("abc")), "abc abc abc abc ");
  EXPECT_EQ(KeyText(PadPassword("")), std::string(16, ' '));
  EXPECT_EQ(KeyText(PadPassword("secret")), "secret secret se");
  EXPECT_EQ(KeyText(PadPassword("fifteen chars!!")), "fifteen chars!! ");
  EXPECT_EQ(KeyText(PadPassword("exactly16chars!!")), "exactly16chars!!");
  EXPECT_EQ(MakeKey("exactly16chars!!"), MakeKey("exactly16chars!!X"));
  EXPECT_NE(MakeKey("abc"), MakeKey("abc "));
}

TEST(Cfb, MatchesLibraryCipherFeedback) {
  int cipher = register_cipher(&safer_sk128_desc);
  ASSERT_GE(cipher, 0);
  std::mt19937 rng(99);
  for (std::size_t length : {1u, 7u, 8u, 9u, 16u, 63u, 200u}) {
    std::string password = "pw" + std::to_string(length);
    UserKey user_key = PadPassword(password);
    ExpandedKey key = ExpandKey(user_key);
    std::vector<std::uint8_t> plain(length), lib(length);
    for (auto& b : plain) b = static_cast<std::uint8_t>(rng());
    symmetric_CFB cfb;
    // The register starts from the expanded key's first 8 bytes.
    ASSERT_EQ(cfb_start(cipher, key.data(), user_key.data(), 16, kSaferRounds, &cfb), CRYPT_OK);
    ASSERT_EQ(cfb_encrypt(plain.data(), lib.data(), length, &cfb), CRYPT_OK);
    cfb_done(&cfb);
    std::vector<std::uint8_t> ours = plain;
    CfbEncrypt(ours.data(), ours.size(), key);
    EXPECT_EQ(ours, lib) << length;
  }
}

TEST(Cfb, EdgeLengths) {
  ExpandedKey key = MakeKey("edge");
  std::uint8_t untouched[4] = {9, 9, 9, 9};
  CfbEncrypt(untouched, 0, key);
  CfbDecrypt(untouched, 0, key);
  EXPECT_EQ(untouched[0], 9);

  // Nine bytes: one full chunk, then one byte from the register enciphered again.
  std::uint8_t data[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  std::uint8_t reg[8];
  std::copy(key.begin(), key.begin() + 8, reg);
  EncryptBlock(reg, key);
  std::uint8_t expected[9];
  for (int i = 0; i < 8; ++i) expected[i] = reg[i] = data[i] ^ reg[i];
  EncryptBlock(reg, key);
  expected[8] = data[8] ^ reg[0];
  CfbEncrypt(data, 9, key);
  EXPECT_EQ(0, std::memcmp(data, expected, 9));
}

TEST(Cfb, SamePlaintextSameCiphertextAndRoundTrips) {
  ExpandedKey key = MakeKey("one key");
  std::uint8_t a[12] = "same words!", b[12] = "same words!";
  CfbEncrypt(a, 11, key);
  CfbEncrypt(b, 11, key);
  EXPECT_EQ(0, std::memcmp(a, b, 11));
  EXPECT_NE(0, std::memcmp(a, "same words!", 11));
  for (std::size_t n = 0; n <= 100; ++n) {
    std::vector<std::uint8_t> data(n);
    for (std::size_t i = 0; i < n; ++i) data[i] = static_cast<std::uint8_t>(i * 37 + n);
    std::vector<std::uint8_t> copy = data;
    CfbEncrypt(copy.data(), n, key);
    CfbDecrypt(copy.data(), n, key);
    ASSERT_EQ(copy, data) << n;
  }
}

TEST(Cfb, RecordVariantsStayInsideTheRecord) {
  ExpandedKey key = MakeKey("r");
  Bytes record(30, 0x41);
  Bytes original = record;
  EXPECT_FALSE(CfbEncryptRecord(record, 25, 6, key));
  EXPECT_FALSE(CfbEncryptRecord(record, 31, 0, key));
  EXPECT_FALSE(CfbDecryptRecord(record, 0, SIZE_MAX, key));
  EXPECT_EQ(record, original);
  ASSERT_TRUE(CfbEncryptRecord(record, 23, 7, key));
  EXPECT_TRUE(std::equal(record.begin(), record.begin() + 23, original.begin()));
  Bytes direct(original.begin() + 23, original.end());
  CfbEncrypt(direct.data(), direct.size(), key);
  EXPECT_TRUE(std::equal(direct.begin(), direct.end(), record.begin() + 23));
  ASSERT_TRUE(CfbDecryptRecord(record, 23, 7, key));
  EXPECT_EQ(record, original);
}

}  // namespace
}  // namespace qv
