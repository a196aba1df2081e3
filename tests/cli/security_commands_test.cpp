#include <gtest/gtest.h>

#include <fstream>

#include "engine/container.h"
#include "engine/database.h"
#include "security/database_crypt.h"
#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class SecurityCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunQvdb({"new", file_, "--field", "Name:Text", "--field", "Qty:Integer", "--field",
                       "Memo:Note"})
                  .exit_code,
              0);
    for (auto row : {std::vector<std::string>{"Name=bolt", "Qty=4", "Memo=left shelf"},
                     {"Name=nut", "Qty=12", "Memo=right shelf"},
                     {"Name=bolt", "Qty=4", "Memo="}}) {
      std::vector<std::string> args = {"add", file_};
      args.insert(args.end(), row.begin(), row.end());
      ASSERT_EQ(RunQvdb(args).exit_code, 0);
    }
    plain_list_ = List();
  }

  std::string List(const std::map<std::string, std::string>& env = {}) {
    return RunQvdb({"list", file_, "--format", "tsv"}, "", env).out;
  }
  Bytes FileBytes() { return ReadWholeFile(file_).value_or(Bytes{}); }
  // A password the file's verifier refuses (one wrong password in 256 would pass it).
  std::string RefusedPassword() {
    Database db;
    std::uint32_t bad = 0;
    EXPECT_EQ(ParseDatabase(FileBytes(), db, bad), ReadError::None);
    for (int i = 0;; ++i)
      if (!CheckVerifier(db.definition(), "wrong" + std::to_string(i)))
        return "wrong" + std::to_string(i);
  }

  TempFolder folder_;
  std::string file_ = folder_.Path("Parts.PDB");
  std::string plain_list_;
  std::map<std::string, std::string> password_ = {{"QUORVANT_PASSWORD", "s3cret"}};
};

TEST_F(SecurityCommandsTest, WholeRecordEncryptionRoundTrips) {
  auto encrypted = RunQvdb({"encrypt", file_, "--mode", "0"}, "", password_);
  ASSERT_EQ(encrypted.exit_code, 0) << encrypted.err;
  auto locked = RunQvdb({"list", file_});
  EXPECT_EQ(locked.exit_code, 1);
  EXPECT_NE(locked.err.find("QUORVANT_PASSWORD"), std::string::npos);
  EXPECT_EQ(List(password_), plain_list_);

  // Adding under the password enciphers the file again on save.
  ASSERT_EQ(RunQvdb({"add", file_, "Name=washer"}, "", password_).exit_code, 0);
  EXPECT_EQ(RunQvdb({"list", file_}).exit_code, 1);

  ASSERT_EQ(RunQvdb({"delete", file_, "4"}, "", password_).exit_code, 0);
  auto decrypted = RunQvdb({"decrypt", file_}, "", password_);
  ASSERT_EQ(decrypted.exit_code, 0) << decrypted.err;
  EXPECT_EQ(List(), plain_list_);
  EXPECT_EQ(RunQvdb({"check", file_}).exit_code, 0);
}

TEST_F(SecurityCommandsTest, MarkedFieldEncryptionRoundTripsThroughAPasswordFile) {
  std::string password_file = folder_.Path("pw.txt");
  std::ofstream(password_file) << "field key\n";
  auto encrypted = RunQvdb({"encrypt", file_, "--mode", "1", "--field", "Name", "--field", "Memo",
                            "--password-file", password_file});
  ASSERT_EQ(encrypted.exit_code, 0) << encrypted.err;
  std::string enciphered = List();
  EXPECT_NE(enciphered, plain_list_);
  EXPECT_NE(enciphered.find("\t4\t"), std::string::npos);  // the unmarked field stays readable

  // Editing deciphers the record and enciphers it again under the same password.
  ASSERT_EQ(RunQvdb({"set", file_, "2", "Qty=13", "--password-file", password_file}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"decrypt", file_, "--password-file", password_file}).exit_code, 0);
  std::string expected = plain_list_;
  expected.replace(expected.find("\t12\t"), 4, "\t13\t");
  EXPECT_EQ(List(), expected);
}

TEST_F(SecurityCommandsTest, AWrongPasswordIsRefusedAndTheFileKept) {
  ASSERT_EQ(RunQvdb({"encrypt", file_, "--mode", "0"}, "", password_).exit_code, 0);
  Bytes before = FileBytes();
  std::map<std::string, std::string> wrong = {{"QUORVANT_PASSWORD", RefusedPassword()}};
  for (const char* command : {"list", "decrypt"}) {
    auto refused = RunQvdb({command, file_}, "", wrong);
    EXPECT_EQ(refused.exit_code, 1) << command;
    EXPECT_NE(
        refused.err.find("ACCESS DENIED: ERROR: Password does not properly decrypt this data. "
                         "Please Try again."),
        std::string::npos)
        << refused.err;
  }
  EXPECT_EQ(RunQvdb({"add", file_, "Name=x"}, "", wrong).exit_code, 1);
  EXPECT_EQ(FileBytes(), before);
}

TEST_F(SecurityCommandsTest, AccessPermissionsGuardTheCommands) {
  std::string new_password = folder_.Path("new.txt");
  std::ofstream(new_password) << "door";
  ASSERT_EQ(RunQvdb({"security", file_, "--access-password", "--new-password-file", new_password})
                .exit_code,
            0);
  ASSERT_EQ(RunQvdb({"security", file_, "--set", "delete records=password required", "--set",
                     "Edit Records=View Records Only"})
                .exit_code,
            0);
  auto shown = RunQvdb({"security", file_, "--show"});
  EXPECT_NE(shown.out.find("Delete Records:     Password Required"), std::string::npos)
      << shown.out;
  EXPECT_NE(shown.out.find("Access password:    set"), std::string::npos);

  auto wrong = RunQvdb({"delete", file_, "1"}, "", {{"QUORVANT_PASSWORD", "window"}});
  EXPECT_EQ(wrong.exit_code, 1);
  EXPECT_NE(wrong.err.find("ERROR: Invalid Password"), std::string::npos);
  auto view_only = RunQvdb({"set", file_, "1", "Qty=5"});
  EXPECT_EQ(view_only.exit_code, 1);
  EXPECT_NE(view_only.err.find("Sorry, You do Not have Security Access to Perform this Operation!"),
            std::string::npos);
  EXPECT_EQ(List(), plain_list_);
  EXPECT_EQ(RunQvdb({"delete", file_, "1"}, "", {{"QUORVANT_PASSWORD", "door"}}).exit_code, 0);

  EXPECT_EQ(RunQvdb({"security", file_, "--set", "Beam Data=View Records Only"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"security", file_, "--set", "Beam=No Access"}).exit_code, 1);
  ASSERT_EQ(RunQvdb({"security", file_, "--set", "Open Database=No Access"}).exit_code, 0);
  auto refused = RunQvdb({"list", file_});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_EQ(refused.out, "");
  EXPECT_NE(refused.err.find("ACCESS DENIED: Action Not Allowed for this Database!"),
            std::string::npos);
}

}  // namespace
}  // namespace qv::test
