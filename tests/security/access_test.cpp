#include "security/access.h"

#include <gtest/gtest.h>

#include "security/settings.h"
#include "tests/support/scripted_passwords.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

class AccessTest : public ::testing::Test {
 protected:
  DatabaseDefinition definition_;
  ScriptedPrompter prompter_;
  ScriptedPasswords passwords_;
  std::string buffer_;
  SecurityUi ui_{prompter_, passwords_, buffer_};
};

TEST_F(AccessTest, ANewDatabaseAllowsEverythingWithoutAsking) {
  for (int action = 0; action < kAccessActions; ++action)
    EXPECT_EQ(CheckAccess(definition_, action, true, ui_), 1);
  EXPECT_TRUE(passwords_.calls.empty());
  EXPECT_TRUE(prompter_.calls().empty());
}

TEST_F(AccessTest, EachActionKeepsItsOwnTwoBits) {
  for (int action = 0; action < 7; ++action) SetAccess(definition_, action, action % 4);
  SetAccess(definition_, kBeamData, kNoAccess);
  for (int action = 0; action < 7; ++action) EXPECT_EQ(GetAccess(definition_, action), action % 4);
  EXPECT_EQ(GetAccess(definition_, kBeamData), kNoAccess);
  EXPECT_EQ(GetAccessWord(definition_) >> 14, 2u);
  // Stored big-endian at 12942.
  SetAccessWord(definition_, 0);
  SetAccess(definition_, kOpenDatabase, kNoAccess);
  EXPECT_EQ(definition_.data()[12945], 2);
}

TEST_F(AccessTest, RefusalsAndViewOnly) {
  SetAccess(definition_, kDeleteRecords, kNoAccess);
  SetAccess(definition_, kAddRecords, kViewRecordsOnly);
  EXPECT_EQ(CheckAccess(definition_, kAddRecords, true, ui_), 2);
  EXPECT_EQ(CheckAccess(definition_, kDeleteRecords, false, ui_), 0);
  EXPECT_TRUE(prompter_.Messages().empty());
  EXPECT_EQ(CheckAccess(definition_, kDeleteRecords, true, ui_), 0);
  ASSERT_EQ(prompter_.calls().size(), 1u);
  EXPECT_EQ(prompter_.calls()[0].text, kNoSecurityAccess);
  EXPECT_EQ(prompter_.calls()[0].caption, "ACCESS DENIED");
}

TEST_F(AccessTest, PasswordRequiredRetriesUntilTheRightPasswordOrCancel) {
  SetAccessPassword(definition_, "opensesame");
  SetAccess(definition_, kEditRecords, kPasswordRequired);
  passwords_.Type("open").Type("opensesame");
  EXPECT_EQ(CheckAccess(definition_, kEditRecords, true, ui_), 1);
  EXPECT_EQ(prompter_.Messages(), (std::vector<std::string>{"Invalid Password"}));
  EXPECT_EQ(prompter_.calls()[0].caption, "ERROR");
  ASSERT_EQ(passwords_.calls.size(), 2u);
  EXPECT_EQ(passwords_.calls[0].title, "Enter Access Password");
  EXPECT_EQ(passwords_.calls[0].prompt, "Please enter your Password");
  EXPECT_EQ(passwords_.calls[1].attempt, 1);

  prompter_.Clear();
  passwords_.Type(std::nullopt);
  EXPECT_EQ(CheckAccess(definition_, kEditRecords, true, ui_), 0);
  EXPECT_EQ(prompter_.Messages(), (std::vector<std::string>{kNoSecurityAccess}));
}

TEST_F(AccessTest, AnEmptyAccessPasswordAcceptsAnEmptyEntry) {
  SetAccess(definition_, kAddRecords, kPasswordRequired);
  passwords_.Type("");
  EXPECT_EQ(CheckAccess(definition_, kAddRecords, true, ui_), 1);
  EXPECT_TRUE(prompter_.Messages().empty());
}

TEST_F(AccessTest, SettingTheAccessPasswordAndLabels) {
  // A new password is typed twice; a typo in the second entry asks for both again.
  passwords_.Type("new one").Type("new 1").Type("new one").Type("new one");
  ASSERT_TRUE(ChangeAccessPassword(definition_, ui_));
  EXPECT_EQ(GetAccessPassword(definition_), "new one");
  EXPECT_EQ(passwords_.calls[0].mode, PasswordMode::kNewAccess);
  EXPECT_EQ(passwords_.calls.size(), 4u);
  EXPECT_EQ(prompter_.Messages(), (std::vector<std::string>{kPasswordsDiffer}));
  EXPECT_FALSE(ChangeAccessPassword(definition_, ui_));  // cancelled
  EXPECT_EQ(GetAccessPassword(definition_), "new one");
  SetAccessPassword(definition_, std::string(60, 'x'));
  EXPECT_EQ(GetAccessPassword(definition_).size(), kMaxPasswordLength);

  EXPECT_EQ(AccessActionByLabel("open database"), kOpenDatabase);
  EXPECT_EQ(AccessValueByLabel("VIEW RECORDS ONLY"), kViewRecordsOnly);
  EXPECT_FALSE(AccessValueByLabel("Full"));
}

TEST_F(AccessTest, EncryptionModeReadsDisabledUntilSet) {
  EXPECT_EQ(GetEncryptionMode(definition_), kEncryptionDisabled);
  SetEncryptionMode(definition_, kEncryptEntireDatabase);
  EXPECT_EQ(definition_.data()[12618], 1);
  EXPECT_EQ(GetEncryptionMode(definition_), kEncryptEntireDatabase);
}

}  // namespace
}  // namespace qv::test
