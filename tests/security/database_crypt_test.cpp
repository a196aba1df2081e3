#include "security/database_crypt.h"

#include <gtest/gtest.h>

#include "security/settings.h"
#include "tests/security/crypt_fixture.h"

namespace qv::test {
namespace {

std::vector<Bytes> Records(const Database& db) {
  std::vector<Bytes> out;
  for (const auto& r : db.records) out.push_back(r.data);
  return out;
}

// A password the stored verifier refuses (one wrong password in 256 would pass it).
std::string RefusedPassword(const Database& db) {
  for (int i = 0;; ++i) {
    std::string candidate = "wrong" + std::to_string(i);
    if (!CheckVerifier(db.definition(), candidate)) return candidate;
  }
}

TEST(DatabaseCrypt, DisabledModeRefusesBothWays) {
  auto db = SecretsDatabase();
  MarkAll(*db);
  EXPECT_EQ(GetEncryptionMode(db->definition()), kEncryptionDisabled);  // a new database
  Bytes before = SerializeDatabase(*db);
  EXPECT_FALSE(EncryptDatabase(*db, "pw"));
  EXPECT_EQ(DecryptDatabase(*db, "pw", true), 0);
  EXPECT_EQ(SerializeDatabase(*db), before);
}

TEST(DatabaseCrypt, WholeRecordModeRoundTrips) {
  auto db = SecretsDatabase();
  SetEncryptionMode(db->definition(), kEncryptEntireDatabase);
  auto plain = Records(*db);
  ASSERT_TRUE(EncryptDatabase(*db, "entire"));
  EXPECT_TRUE(IsDatabaseEnciphered(db->definition()));
  EXPECT_TRUE(GetVerifier(db->definition()).present);
  EXPECT_TRUE(db->changed);
  for (std::uint32_t i = 0; i < db->count(); ++i) EXPECT_EQ(FlagsOf(*db, i), kRecordBodyEnciphered);
  EXPECT_TRUE(AnyRecordEnciphered(*db));

  Bytes before = SerializeDatabase(*db);
  EXPECT_EQ(DecryptDatabase(*db, RefusedPassword(*db), false), -1);
  EXPECT_EQ(SerializeDatabase(*db), before);

  EXPECT_EQ(DecryptDatabase(*db, "entire", false), 1);
  EXPECT_EQ(Records(*db), plain);
  EXPECT_FALSE(IsDatabaseEnciphered(db->definition()));
}

TEST(DatabaseCrypt, MarkedFieldsWithAWrongPasswordChangeNoByte) {
  auto db = SecretsDatabase(5);
  MarkAll(*db);
  SetEncryptionMode(db->definition(), kEncryptMarkedFields);
  auto plain = Records(*db);
  ASSERT_TRUE(EncryptDatabase(*db, "marked"));
  for (std::uint32_t i = 0; i < db->count(); ++i)
    EXPECT_EQ(FlagsOf(*db, i), kRecordFieldsEnciphered);

  Bytes before = SerializeDatabase(*db);
  EXPECT_EQ(DecryptDatabase(*db, RefusedPassword(*db), true), -1);
  EXPECT_EQ(SerializeDatabase(*db), before);

  // Without a verifier any password gets through to the records, whose checksums refuse it.
  SetVerifierPresent(db->definition(), false);
  EXPECT_TRUE(CheckVerifier(db->definition(), "anything"));
  before = SerializeDatabase(*db);
  EXPECT_EQ(DecryptDatabase(*db, "not the password", true), 0);
  EXPECT_EQ(SerializeDatabase(*db), before);

  EXPECT_EQ(DecryptDatabase(*db, "marked", true), 1);
  auto now = Records(*db);
  for (std::size_t i = 0; i < now.size(); ++i) {
    now[i][21] = plain[i][21];  // the checksum byte stays behind
    EXPECT_EQ(now[i], plain[i]) << i;
  }
}

TEST(DatabaseCrypt, ManualModeTakesOnlyMarkedRecords) {
  auto db = SecretsDatabase(3);
  db->definition().field(kName).set_encrypted(true);
  SetEncryptionMode(db->definition(), kManualEncryption);
  auto header = ReadRecordHeader(db->records[1].data);
  header->set(kRecordManualEncrypt, true);
  WriteRecordHeader(db->records[1].data.edit(), *header);
  Bytes untouched0 = db->records[0].data;

  ASSERT_TRUE(EncryptDatabase(*db, "manual"));
  EXPECT_EQ(db->records[0].data, untouched0);
  EXPECT_EQ(FlagsOf(*db, 1), kRecordFieldsEnciphered);  // the manual mark is used up

  Bytes enciphered = db->records[1].data;
  EXPECT_EQ(DecryptDatabase(*db, "manual", false), 1);
  EXPECT_EQ(db->records[1].data, enciphered);
  EXPECT_EQ(DecryptDatabase(*db, "manual", true), 1);
  EXPECT_EQ(FlagsOf(*db, 1), kRecordManualEncrypt);  // marked again for the next time
  EXPECT_EQ(ValueText(ValueBytes(db->records[1].data, kName)), "name 1");
}

TEST(DatabaseCrypt, EncryptingSwitchesTheRecordHeaderOn) {
  auto db = DatabaseBuilder("Plain").Field("Name", kText).Row({"hello there"}).Build();
  ASSERT_FALSE(db->definition().record_header_on());
  db->definition().field(0).set_encrypted(true);
  SetEncryptionMode(db->definition(), kEncryptMarkedFields);
  ASSERT_TRUE(EncryptDatabase(*db, "x"));
  EXPECT_TRUE(db->definition().record_header_on());
  EXPECT_EQ(FlagsOf(*db, 0), kRecordFieldsEnciphered);
  ASSERT_EQ(DecryptDatabase(*db, "x", true), 1);
  EXPECT_EQ(ValueText(ValueBytes(db->records[0].data, 0)), "hello there");
}

}  // namespace
}  // namespace qv::test
