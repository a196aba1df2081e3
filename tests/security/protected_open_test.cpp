#include "security/protected_open.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "security/database_crypt.h"
#include "security/settings.h"
#include "tests/security/crypt_fixture.h"
#include "tests/support/scripted_passwords.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

class ProtectedOpenTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = (std::filesystem::temp_directory_path() /
             ("qv-protected-" + std::to_string(::getpid()) + ".PDB"))
                .string();
  }
  void TearDown() override { std::filesystem::remove(path_); }

  void Save(Database& db) {
    db.path = path_;
    ASSERT_TRUE(SaveDatabase(db, clock_));
  }

  std::string path_;
  FixedClock clock_;
  ScriptedPrompter prompter_;
  ScriptedPasswords passwords_;
  std::string buffer_;
  SecurityUi ui_{prompter_, passwords_, buffer_};
};

TEST_F(ProtectedOpenTest, OpenDatabaseAccessIsCheckedFirst) {
  auto db = SecretsDatabase();
  SetAccess(db->definition(), kOpenDatabase, kNoAccess);
  Save(*db);
  Database opened;
  EXPECT_FALSE(OpenProtectedDatabase(opened, path_, ui_));
  EXPECT_FALSE(opened.loaded);
  EXPECT_EQ(prompter_.Messages(),
            (std::vector<std::string>{"Action Not Allowed for this Database!"}));
  EXPECT_TRUE(passwords_.calls.empty());

  SetAccess(db->definition(), kOpenDatabase, kPasswordRequired);
  SetAccessPassword(db->definition(), "door");
  Save(*db);
  prompter_.Clear();
  EXPECT_FALSE(OpenProtectedDatabase(opened, path_, ui_));  // cancelled, silently
  EXPECT_TRUE(prompter_.Messages().empty());
  passwords_.Type("door");
  EXPECT_TRUE(OpenProtectedDatabase(opened, path_, ui_));
  EXPECT_EQ(opened.count(), 3u);
}

TEST_F(ProtectedOpenTest, AnEncipheredDatabaseAsksUntilTheVerifierAccepts) {
  auto db = SecretsDatabase();
  auto plain = db->records;
  SetEncryptionMode(db->definition(), kEncryptEntireDatabase);
  ASSERT_TRUE(EncryptDatabase(*db, "vault"));
  Save(*db);
  std::string refused;
  for (int i = 0; refused.empty(); ++i)
    if (!CheckVerifier(db->definition(), "guess" + std::to_string(i)))
      refused = "guess" + std::to_string(i);

  Database opened;
  passwords_.Type(refused);
  EXPECT_FALSE(OpenProtectedDatabase(opened, path_, ui_));  // then Cancel
  EXPECT_EQ(prompter_.Messages(),
            (std::vector<std::string>{
                "ERROR: Password does not properly decrypt this data. Please Try again."}));
  EXPECT_EQ(passwords_.calls[0].title, "Enter Encryption Password");

  passwords_.Type(refused).Type("vault");
  ASSERT_TRUE(OpenProtectedDatabase(opened, path_, ui_));
  for (std::uint32_t i = 0; i < opened.count(); ++i)
    EXPECT_EQ(opened.records[i].data, plain[i].data);
  EXPECT_FALSE(IsDatabaseEnciphered(opened.definition()));
  EXPECT_FALSE(GetVerifier(opened.definition()).present);

  // Closing enciphers it again under the password it opened with, asking nothing, and keeps
  // the verifier, so a typo at a second prompt can never re-key it.
  std::size_t asked = passwords_.calls.size();
  EXPECT_EQ(EncipherOnDatabaseClose(opened, ui_), EncipherResult::kEnciphered);
  EXPECT_EQ(passwords_.calls.size(), asked);
  EXPECT_TRUE(IsDatabaseEnciphered(opened.definition()));
  EXPECT_EQ(FlagsOf(opened, 0), kRecordBodyEnciphered);
  EXPECT_EQ(GetVerifier(opened.definition()).bytes, GetVerifier(db->definition()).bytes);
  EXPECT_TRUE(GetVerifier(opened.definition()).present);
  for (std::uint32_t i = 0; i < opened.count(); ++i)
    EXPECT_EQ(opened.records[i].data, db->records[i].data);
  EXPECT_EQ(EncipherOnDatabaseClose(opened, ui_), EncipherResult::kNotNeeded);
}

TEST_F(ProtectedOpenTest, RecordCloseWarnsAboutADifferentPassword) {
  auto db = SecretsDatabase(2);
  db->definition().field(kName).set_encrypted(true);
  SetEncryptionMode(db->definition(), kEncryptMarkedFields);
  WriteVerifier(db->definition(), "first");
  std::string refused;
  for (int i = 0; refused.empty(); ++i)
    if (!CheckVerifier(db->definition(), "other" + std::to_string(i)))
      refused = "other" + std::to_string(i);

  prompter_.Queue(Answer::No);
  passwords_.Type(refused).Type("first");
  EXPECT_EQ(EncipherOnRecordClose(*db, 0, ui_), EncipherResult::kEnciphered);
  EXPECT_EQ(
      prompter_.Questions(),
      (std::vector<std::string>{"Password entered does not seem to match last password given to a "
                                "record in this database. Continue anyway?"}));
  EXPECT_EQ(FlagsOf(*db, 0), kRecordFieldsEnciphered);

  // Opening it for editing in a later session: a wrong password leaves it enciphered.
  db->session_password.reset();
  Bytes enciphered = db->records[0].data;
  passwords_.Type("second");
  EXPECT_FALSE(DecipherOnRecordOpen(*db, 0, ui_));
  EXPECT_EQ(db->records[0].data, enciphered);
  EXPECT_EQ(prompter_.Messages().back(),
            "Error: Supplied Password does not properly Decrypt Record!");
  passwords_.Type("first");
  EXPECT_TRUE(DecipherOnRecordOpen(*db, 0, ui_));
  EXPECT_EQ(ValueText(ValueBytes(db->records[0].data, kName)), "name 0");
  EXPECT_TRUE(DecipherOnRecordOpen(*db, 1, ui_));  // never enciphered: no question
}

TEST_F(ProtectedOpenTest, WholeDatabaseDecryptAsksAgainAfterARefusedPassword) {
  auto db = SecretsDatabase(2);
  MarkAll(*db);
  SetEncryptionMode(db->definition(), kEncryptMarkedFields);
  passwords_.Type("key").Type("key");  // a new password: typed twice
  ASSERT_TRUE(EncryptDatabaseWithPrompt(*db, ui_));
  std::string refused;
  for (int i = 0; refused.empty(); ++i)
    if (!CheckVerifier(db->definition(), "no" + std::to_string(i)))
      refused = "no" + std::to_string(i);
  passwords_.Type(refused).Type("key");
  EXPECT_EQ(DecryptDatabaseWithPrompt(*db, true, ui_), 1);
  EXPECT_EQ(prompter_.Messages(),
            (std::vector<std::string>{
                "ERROR: Password does not properly decrypt this data.  Please Try again."}));
  EXPECT_FALSE(AnyRecordEnciphered(*db));
}

}  // namespace
}  // namespace qv::test
