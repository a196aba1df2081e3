// qvdb on databases with enciphered records: no writing command leaves a marked value in plain
// text, readers decipher with the password or leave the records out and say so, and passwords
// are asked once and never taken on a preset answer.

#include <gtest/gtest.h>

#include <fstream>

#include "engine/container.h"
#include "engine/database.h"
#include "security/database_crypt.h"
#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class EncipheredRecordsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(password_file_) << "field key\n";
    Build();
  }
  void Build() {
    ASSERT_EQ(RunQvdb({"new", file_, "--field", "Name:Text", "--field", "Qty:Integer"}).exit_code,
              0);
    for (auto row :
         {std::vector<std::string>{"Name=Xanthippe", "Qty=4"}, {"Name=Yolanda", "Qty=12"}}) {
      std::vector<std::string> args = {"add", file_};
      args.insert(args.end(), row.begin(), row.end());
      ASSERT_EQ(RunQvdb(args).exit_code, 0);
    }
  }

  QvdbResult Run(std::vector<std::string> args, bool with_password = true) {
    if (with_password) args.insert(args.end(), {"--password-file", password_file_});
    return RunQvdb(args);
  }
  std::string FileText() { return Slurp(file_); }
  std::string Write(const std::string& name, const std::string& text) {
    WriteText(folder_.Path(name), text);
    return folder_.Path(name);
  }

  TempFolder folder_;
  std::string file_ = folder_.Path("People.PDB");
  std::string password_file_ = folder_.Path("pw.txt");
};

// Every writing command, each storing a new secret where it stores a value.
std::vector<std::pair<std::vector<std::string>, std::string>> WritingCommands(
    const std::string& file, const std::string& csv) {
  return {
      {{"add", file, "Name=Secret-add"}, "Secret-add"},
      {{"set", file, "1", "Name=Secret-set"}, "Secret-set"},
      {{"import", file, csv}, "Secret-import"},
      {{"sort", file, "Qty"}, ""},
      {{"filter", file, "set", "1", "--field", "Qty", "--range", "0", "100"}, ""},
      {{"filter", file, "clear"}, ""},
      {{"calc", file, "--field", "Twice", "--formula", "F2 * 2"}, ""},
      {{"recalc", file}, ""},
      {{"views", file, "new"}, ""},
      {{"security", file, "--set", "Beam Data=No Access"}, ""},
      {{"delete", file, "1"}, ""},  // the added record, sorted first
  };
}

TEST_F(EncipheredRecordsTest, NoWritingCommandStoresAMarkedValueInPlainText) {
  std::string csv = Write("more.csv", "Name,Qty\nSecret-import,7\n");
  for (int mode : {1, 2}) {
    SCOPED_TRACE(mode);
    file_ = folder_.Path("Mode" + std::to_string(mode) + ".PDB");
    Build();
    std::vector<std::string> encrypt = {"encrypt", file_, "--mode", std::to_string(mode),
                                        "--field", "Name"};
    if (mode == 2) encrypt.insert(encrypt.end(), {"--record", "1", "--record", "2"});
    ASSERT_EQ(Run(encrypt).exit_code, 0);
    std::vector<std::string> secrets = {"Xanthippe", "Yolanda"};
    for (auto& [args, secret] : WritingCommands(file_, csv)) {
      auto result = Run(args);
      ASSERT_EQ(result.exit_code, 0) << args[0] << ": " << result.err;
      // Mode 2 enciphers the records marked for it: record 1 is, new records are not.
      if (!secret.empty() && (mode == 1 || args[0] == "set")) secrets.push_back(secret);
      std::string text = FileText();
      for (const std::string& s : secrets)
        EXPECT_EQ(text.find(s), std::string::npos) << args[0] << " left " << s << " in plain text";
    }
    // Nothing was lost: the password gives every value back (record 1 was set, the added
    // record deleted).
    std::string listed = Run({"list", file_, "--format", "tsv"}).out;
    for (const char* kept : {"Secret-set", "Yolanda", "Secret-import"})
      EXPECT_NE(listed.find(kept), std::string::npos) << kept << " in\n" << listed;
  }
}

TEST_F(EncipheredRecordsTest, ReadersDecipherWithThePasswordOrLeaveRecordsOut) {
  ASSERT_EQ(Run({"calc", file_, "--field", "Twice", "--formula", "F2 * 2", "--result-kind", "1"})
                .exit_code,
            0);
  ASSERT_EQ(Run({"encrypt", file_, "--mode", "1", "--field", "Qty", "--field", "Name"}).exit_code,
            0);
  std::string out = folder_.Path("out.csv");

  // Without the password: marked values are marked, whole records are left out and counted.
  auto listed = Run({"list", file_, "--format", "tsv"}, false);
  EXPECT_EQ(listed.out,
            "Name\tQty\tTwice\n(enciphered)\t(enciphered)\t8\n"
            "(enciphered)\t(enciphered)\t24\n");
  EXPECT_NE(listed.err.find("2 records show (enciphered)"), std::string::npos) << listed.err;
  auto exported = Run({"export", file_, out}, false);
  EXPECT_EQ(exported.exit_code, 0);
  EXPECT_EQ(Slurp(out), "");
  EXPECT_NE(exported.err.find("left out 2 enciphered records"), std::string::npos);
  auto found = Run({"find", file_, "Yolanda"}, false);
  EXPECT_EQ(found.exit_code, 1);
  EXPECT_NE(found.err.find("left out 2 enciphered records"), std::string::npos);
  auto report = Run({"report", file_, "Twice"}, false);
  EXPECT_NE(report.err.find("left out 2 enciphered records"), std::string::npos);

  // Recalculation leaves enciphered records as they are, so nothing is computed from
  // ciphertext and the password still deciphers every record afterwards.
  auto recalculated = Run({"recalc", file_}, false);
  EXPECT_EQ(recalculated.exit_code, 0) << recalculated.err;
  EXPECT_NE(recalculated.err.find("2 enciphered records were not recalculated"), std::string::npos);

  // With it: plain values everywhere, and recalculation works on them; the settings still
  // count the records the file holds enciphered.
  EXPECT_NE(Run({"security", file_, "--show"}).out.find("Enciphered records: 2 of 2"),
            std::string::npos);
  EXPECT_EQ(Run({"list", file_, "--format", "tsv"}).out,
            "Name\tQty\tTwice\nXanthippe\t4\t8\nYolanda\t12\t24\n");
  ASSERT_EQ(Run({"export", file_, out}).exit_code, 0);
  EXPECT_EQ(Slurp(out), "Xanthippe,4,8\nYolanda,12,24\n");
  EXPECT_EQ(Run({"find", file_, "Yolanda"}).out, "2\tName\tYolanda\n");
  ASSERT_EQ(Run({"set", file_, "2", "Qty=20"}).exit_code, 0);
  EXPECT_EQ(Run({"check", file_}).out, "round trip OK\n");
  auto decrypted = Run({"decrypt", file_});
  ASSERT_EQ(decrypted.exit_code, 0) << decrypted.err;
  EXPECT_EQ(Run({"list", file_, "--format", "tsv"}, false).out,
            "Name\tQty\tTwice\nXanthippe\t4\t8\nYolanda\t20\t40\n");
}

TEST_F(EncipheredRecordsTest, CheckComparesLikeWithLikeOnAWholeDatabaseEncryption) {
  ASSERT_EQ(Run({"encrypt", file_, "--mode", "0"}).exit_code, 0);
  auto checked = Run({"check", file_});
  EXPECT_EQ(checked.out, "round trip OK\n") << checked.err;
  EXPECT_EQ(checked.exit_code, 0);
}

TEST_F(EncipheredRecordsTest, AWrongPasswordThatPassesTheVerifierIsRefused) {
  ASSERT_EQ(Run({"encrypt", file_, "--mode", "0"}).exit_code, 0);
  Database db;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(ReadWholeFile(file_).value(), db, bad), ReadError::None);
  std::string lucky;
  for (int i = 0; lucky.empty() && i < 20000; ++i)
    if (CheckVerifier(db.definition(), "guess" + std::to_string(i)))
      lucky = "guess" + std::to_string(i);
  ASSERT_FALSE(lucky.empty());
  std::string before = FileText();
  auto refused = RunQvdb({"add", file_, "Name=x"}, "", {{"QUORVANT_PASSWORD", lucky}});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("Password does not properly decrypt this data"), std::string::npos);
  EXPECT_EQ(FileText(), before);
  EXPECT_EQ(Run({"list", file_, "--format", "tsv"}).out, "Name\tQty\nXanthippe\t4\nYolanda\t12\n");
}

TEST_F(EncipheredRecordsTest, PasswordsAreNeverTakenLightly) {
  // An empty line in a password file is refused unless allowed.
  std::string empty = Write("empty.txt", "\n");
  auto refused = RunQvdb({"encrypt", file_, "--mode", "0", "--password-file", empty});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("--allow-empty-password"), std::string::npos);
  std::string before = FileText();

  // A password the verifier refuses is not taken on --yes.
  ASSERT_EQ(Run({"encrypt", file_, "--mode", "1", "--field", "Name"}).exit_code, 0);
  before = FileText();
  Database db;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(ReadWholeFile(file_).value(), db, bad), ReadError::None);
  std::string other;
  for (int i = 0; other.empty(); ++i)
    if (!CheckVerifier(db.definition(), "other" + std::to_string(i)))
      other = "other" + std::to_string(i);
  auto mismatch = RunQvdb({"add", file_, "Name=Zed", "--yes"}, "", {{"QUORVANT_PASSWORD", other}});
  EXPECT_EQ(mismatch.exit_code, 1);
  EXPECT_NE(mismatch.err.find("Continue anyway? [a password given ahead is never confirmed"),
            std::string::npos)
      << mismatch.err;
  EXPECT_EQ(FileText(), before);

  ASSERT_EQ(Run({"decrypt", file_}).exit_code, 0);
  auto allowed = RunQvdb(
      {"encrypt", file_, "--mode", "0", "--password-file", empty, "--allow-empty-password"});
  EXPECT_EQ(allowed.exit_code, 0) << allowed.err;
}

}  // namespace
}  // namespace qv::test
