#include "security/cipher_session.h"

#include <gtest/gtest.h>

#include "engine/record_check.h"
#include "security/database_crypt.h"
#include "security/enciphered.h"
#include "security/protected_open.h"
#include "security/record_crypt.h"
#include "security/settings.h"
#include "tests/security/crypt_fixture.h"
#include "tests/support/scripted_passwords.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

class CipherSessionTest : public ::testing::Test {
 protected:
  // A database saved with its marked fields enciphered under "key" in `mode`, opened again.
  std::unique_ptr<Database> Enciphered(int mode) {
    auto db = SecretsDatabase(3);
    MarkAll(*db);
    SetEncryptionMode(db->definition(), mode);
    if (mode == kManualEncryption) {
      auto header = ReadRecordHeader(db->records[1].data);
      header->set(kRecordManualEncrypt, true);
      WriteRecordHeader(db->records[1].data.edit(), *header);
    }
    EXPECT_TRUE(EncryptDatabase(*db, "key"));
    db->path = folder_.Path("Secrets.PDB");
    EXPECT_TRUE(SaveDatabase(*db, clock_));
    auto opened = std::make_unique<Database>();
    EXPECT_TRUE(LoadDatabase(*opened, db->path, prompter_));
    return opened;
  }

  TempFolder folder_;
  FixedClock clock_;
  ScriptedPrompter prompter_;
  ScriptedPasswords passwords_;
  std::string buffer_;
  SecurityUi ui_{prompter_, passwords_, buffer_};
};

TEST_F(CipherSessionTest, ReadersGetPlainValuesAndASaveWritesTheSameBytesBack) {
  for (int mode : {kEncryptMarkedFields, kManualEncryption}) {
    SCOPED_TRACE(mode);
    auto db = Enciphered(mode);
    const Bytes file = SerializeDatabase(*db);
    const std::size_t enciphered = mode == kEncryptMarkedFields ? 3 : 1;
    EXPECT_EQ(CountEnciphered(*db), enciphered);
    EXPECT_EQ(ShownValueText(*db, 1, kName, {}), kEncipheredValueText);
    EXPECT_EQ(ShownValueText(*db, 1, kQty, {}), kEncipheredValueText);

    passwords_.Type("key");
    EXPECT_EQ(DecipherForReading(*db, ui_), 0u);
    EXPECT_EQ(ShownValueText(*db, 1, kName, {}), "name 1");
    EXPECT_EQ(db->session_password, "key");
    EXPECT_EQ(SavedImage(*db), file);

    // The save asks nothing more and enciphers exactly what was enciphered.
    std::size_t asked = passwords_.calls.size();
    ASSERT_TRUE(EncipherBeforeSave(*db, ui_));
    EXPECT_EQ(passwords_.calls.size(), asked);
    EXPECT_EQ(SerializeDatabase(*db), file);
  }
}

TEST_F(CipherSessionTest, ARefusedPasswordLeavesEveryRecordEnciphered) {
  auto db = Enciphered(kEncryptMarkedFields);
  std::string refused;
  for (int i = 0; refused.empty(); ++i)
    if (!CheckVerifier(db->definition(), "no" + std::to_string(i)))
      refused = "no" + std::to_string(i);
  passwords_.Type(refused);  // then Cancel
  EXPECT_EQ(DecipherForReading(*db, ui_), 3u);
  EXPECT_EQ(prompter_.Messages(),
            (std::vector<std::string>{
                "ERROR: Password does not properly decrypt this data.  Please Try again."}));
  EXPECT_FALSE(db->session_password);
}

TEST_F(CipherSessionTest, StoredRecordsAreEncipheredBeforeTheSaveUnderOneNewPassword) {
  auto db = SecretsDatabase(2);
  db->definition().field(kName).set_encrypted(true);
  SetEncryptionMode(db->definition(), kEncryptMarkedFields);
  NoteStoredRecord(*db, 1);
  // No verifier yet: a new password, asked twice; a typo in the second entry asks again.
  passwords_.Type("one").Type("onw").Type("one").Type("one");
  ASSERT_TRUE(EncipherBeforeSave(*db, ui_));
  EXPECT_EQ(prompter_.Messages(), (std::vector<std::string>{kPasswordsDiffer}));
  EXPECT_FALSE(IsRecordEnciphered(*db, 0));
  EXPECT_TRUE(IsRecordEnciphered(*db, 1));
  EXPECT_TRUE(CheckVerifier(db->definition(), "one"));
  EXPECT_TRUE(db->encipher_on_save.empty());

  // Mode 2 takes a stored record only when it is marked for manual encryption.
  SetEncryptionMode(db->definition(), kManualEncryption);
  NoteStoredRecord(*db, 0);
  EXPECT_TRUE(db->encipher_on_save.empty());
}

TEST_F(CipherSessionTest, ATypoAtASecondPromptCannotReKeyAWholeDatabaseEncryption) {
  auto db = SecretsDatabase(3);
  SetEncryptionMode(db->definition(), kEncryptEntireDatabase);
  ASSERT_TRUE(EncryptDatabase(*db, "right"));
  db->path = folder_.Path("Whole.PDB");
  ASSERT_TRUE(SaveDatabase(*db, clock_));

  Database opened;
  passwords_.Type("right").Type("typo");
  ASSERT_TRUE(OpenProtectedDatabase(opened, db->path, ui_));
  ASSERT_TRUE(EncipherBeforeSave(opened, ui_));
  ASSERT_TRUE(SaveDatabase(opened, clock_));
  EXPECT_EQ(passwords_.entries.size(), 1u);  // "typo" was never asked for

  Database again;
  passwords_.entries.clear();
  passwords_.Type("right");
  ASSERT_TRUE(OpenProtectedDatabase(again, db->path, ui_));
  EXPECT_EQ(ValueText(ValueBytes(again.records[2].data, kName)), "name 0");
}

TEST_F(CipherSessionTest, AWrongPasswordThatPassesTheVerifierOpensNothing) {
  auto db = SecretsDatabase(3);
  SetEncryptionMode(db->definition(), kEncryptEntireDatabase);
  ASSERT_TRUE(EncryptDatabase(*db, "right"));
  db->path = folder_.Path("Lucky.PDB");
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  std::string lucky;
  for (int i = 0; lucky.empty() && i < 20000; ++i)
    if (CheckVerifier(db->definition(), "guess" + std::to_string(i)))
      lucky = "guess" + std::to_string(i);
  ASSERT_FALSE(lucky.empty());

  Database opened;
  passwords_.Type(lucky);  // then Cancel
  EXPECT_FALSE(OpenProtectedDatabase(opened, db->path, ui_));
  EXPECT_EQ(prompter_.Messages(),
            (std::vector<std::string>{
                "ERROR: Password does not properly decrypt this data. Please Try again."}));
  passwords_.Type(lucky).Type("right");
  ASSERT_TRUE(OpenProtectedDatabase(opened, db->path, ui_));
  EXPECT_EQ(opened.session_password, "right");
}

TEST_F(CipherSessionTest, TheRightPasswordOpensValuesOfAnyContent) {
  auto db = SecretsDatabase(2);
  db->records[0].data =
      ReplaceValue(db->records[0].data, db->definition(), kName, TextValue("\x01\x07\x1b\xff"));
  db->records[1].data = ReplaceValue(db->records[1].data, db->definition(), kMemo, Bytes{});
  SetEncryptionMode(db->definition(), kEncryptEntireDatabase);
  ASSERT_TRUE(EncryptDatabase(*db, "right"));
  db->path = folder_.Path("Odd.PDB");
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  Database opened;
  passwords_.Type("right");
  ASSERT_TRUE(OpenProtectedDatabase(opened, db->path, ui_));
  EXPECT_EQ(ValueText(ValueBytes(opened.records[0].data, kName)), "\x01\x07\x1b\xff");
}

TEST(RecordFieldsDecode, NoWrongPasswordDeciphersAManualRecord) {
  auto db = SecretsDatabase(1);
  MarkAll(*db);
  ASSERT_TRUE(EncryptRecordFields(db->definition(), db->records[0].data.edit(), "key"));
  const Bytes enciphered = db->records[0].data;
  // About one wrong password in 256 matches the 8-bit record checksum; none may decipher.
  for (int i = 0; i < 1500; ++i) {
    Bytes copy = enciphered;
    ASSERT_NE(DecryptRecordFields(db->definition(), copy, MakeKey("w" + std::to_string(i))), 1)
        << "w" << i;
    EXPECT_EQ(copy, enciphered);
  }
  Bytes copy = enciphered;
  ASSERT_EQ(DecryptRecordFields(db->definition(), copy, MakeKey("key")), 1);
  EXPECT_TRUE(RecordDecodes(db->definition(), copy));
}

}  // namespace
}  // namespace qv::test
