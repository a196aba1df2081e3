// What qvdb does with text it cannot store exactly, CSV files with mistakes, patterns it cannot
// read and formulas too long to store.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class QvdbInputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunQvdb({"new", db_, "--field", "Name:Text", "--field", "Qty:Integer"}).exit_code, 0);
  }
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(folder_.Path(name), std::ios::binary) << text;
    return folder_.Path(name);
  }
  std::string List() { return RunQvdb({"list", db_, "--format", "tsv"}).out; }
  TempFolder folder_;
  const std::string db_ = folder_.Path("F.PDB");
  const std::string lodz_ =
      "\xC5\x81\xC3\xB3"
      "d\xC5\xBA";  // Łódź
};

TEST_F(QvdbInputTest, TextTheDatabaseCannotHoldIsReportedOrUnderStrictRefused) {
  const std::string before = Slurp(db_);
  auto strict = RunQvdb({"add", db_, "Name=" + lodz_, "Qty=1", "--strict"});
  EXPECT_EQ(strict.exit_code, 1);
  EXPECT_NE(strict.err.find("nothing was saved: 1 text cannot be stored exactly"),
            std::string::npos);
  EXPECT_EQ(Slurp(db_), before);
  auto added = RunQvdb({"add", db_, "Name=" + lodz_, "Qty=1"});
  EXPECT_EQ(added.exit_code, 0);
  EXPECT_EQ(added.err, "Warning: Name: \"" + lodz_ +
                           "\" cannot be stored exactly and becomes \"?\xC3\xB3"
                           "d?\"\n");
  auto set = RunQvdb({"set", db_, "1", "Name=\xE2\x98\x83"});
  EXPECT_NE(set.err.find("Warning: record 1, Name: \"\xE2\x98\x83\""), std::string::npos);
  auto named = RunQvdb({"new", folder_.Path("G.PDB"), "--name", lodz_, "--field",
                        "\xE2\x82\xAC"
                        "\xE2\x98\x83:Text",
                        "--strict"});
  EXPECT_EQ(named.exit_code, 1);
  EXPECT_NE(named.err.find("database name: \"" + lodz_), std::string::npos);
  EXPECT_NE(named.err.find("field name: \"\xE2\x82\xAC\xE2\x98\x83\""), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("G.PDB")));
}

TEST_F(QvdbInputTest, ALatin1FileReadAsUtf8KeepsItsLettersAndSaysHowToReadIt) {
  const std::string csv = Write("latin1.csv", "Name,Qty\n\xE9t\xE9 caf\xE9,1\n");
  const std::string before = Slurp(db_);
  EXPECT_EQ(RunQvdb({"import", db_, csv, "--strict"}).exit_code, 1);
  EXPECT_EQ(Slurp(db_), before);
  auto plain = RunQvdb({"import", db_, csv});
  EXPECT_EQ(plain.exit_code, 0);
  EXPECT_NE(plain.err.find("line 2, Name: \"\\xE9t\\xE9 caf\\xE9\""), std::string::npos);
  EXPECT_NE(plain.err.find("--encoding cp1252"), std::string::npos);
  ASSERT_EQ(RunQvdb({"import", db_, csv, "--encoding", "cp1252"}).exit_code, 0);
  EXPECT_EQ(List(), "Name\tQty\n?t? caf?\t1\n\xC3\xA9t\xC3\xA9 caf\xC3\xA9\t1\n");
}

TEST_F(QvdbInputTest, AHeaderWithMistakesIsRefusedAndStrictImportsAllOrNothing) {
  const std::string before = Slurp(db_);
  auto typo = RunQvdb({"import", db_, Write("typo.csv", "Nme,Qty\nbolt,2\n")});
  EXPECT_EQ(typo.exit_code, 1);
  EXPECT_NE(typo.err.find("does not have: 'Nme'; its fields are Name, Qty"), std::string::npos);
  EXPECT_EQ(Slurp(db_), before);
  const std::string mixed = Write("mixed.csv", "Qty,Name\n2,bolt\nmany,nut\n");
  auto strict = RunQvdb({"import", db_, mixed, "--strict"});
  EXPECT_EQ(strict.exit_code, 1);
  EXPECT_NE(strict.err.find("nothing was imported: 1 of 2 rows were refused"), std::string::npos);
  EXPECT_EQ(Slurp(db_), before);
  auto partial = RunQvdb({"import", db_, mixed});
  EXPECT_EQ(partial.exit_code, 1);
  EXPECT_EQ(partial.out, "imported 1 records, refused 1 rows\n");
  EXPECT_EQ(List(), "Name\tQty\nbolt\t2\n");
}

TEST_F(QvdbInputTest, UnreadableDatePatternsAreRefusedWithAnExample) {
  ASSERT_EQ(RunQvdb({"add", db_, "Name=a"}).exit_code, 0);
  auto date = RunQvdb({"list", db_, "--date-format", "%d.%m.%Y"});
  EXPECT_EQ(date.exit_code, 2);
  EXPECT_NE(date.err.find("for example dd.MM.yyyy"), std::string::npos);
  EXPECT_EQ(RunQvdb({"list", db_, "--time-format", "%H:%M"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"list", db_, "--date-format", "dd.MM.yyyy"}).exit_code, 0);
}

TEST_F(QvdbInputTest, NewFromCsvTakesFilesAsPeopleHaveThem) {
  const std::string csv =
      Write("people.csv",
            "\xEF\xBB\xBF"
            "Name of the person in full,Qty,Note\r\n\"Smith, \"\"Jr\"\"\",1,\"a\r\nb\"\r\n"
            "\r\nJones,,c");
  const std::string made = folder_.Path("P.PDB");
  auto result = RunQvdb({"new", made, "--from-csv", csv});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  EXPECT_NE(result.out.find("the field 'Name of the person'"), std::string::npos);
  EXPECT_NE(result.out.find("Qty: Float (guessed; Integer cannot hold its empty cells)"),
            std::string::npos);
  const std::string out = folder_.Path("out.csv");
  ASSERT_EQ(RunQvdb({"export", made, out, "--header"}).exit_code, 0);
  EXPECT_EQ(Slurp(out),
            "Name of the person,Qty,Note\n\"Smith, \"\"Jr\"\"\",1,\"a\r\nb\"\nJones,,c\n");
  auto cp1252 = RunQvdb({"new", folder_.Path("Q.PDB"), "--from-csv",
                         Write("cp.csv", "Caf\xE9\n\xE9t\xE9\n"), "--encoding", "cp1252"});
  ASSERT_EQ(cp1252.exit_code, 0) << cp1252.err;
  EXPECT_EQ(RunQvdb({"list", folder_.Path("Q.PDB"), "--format", "tsv"}).out,
            "Caf\xC3\xA9\n\xC3\xA9t\xC3\xA9\n");
}

TEST_F(QvdbInputTest, AFormulaTooLongToStoreIsRefusedWithoutACrash) {
  auto deep = RunQvdb({"calc", db_, "--field", "R", "--formula",
                       std::string(20000, '(') + "1" + std::string(20000, ')')});
  EXPECT_EQ(deep.exit_code, 1);
  EXPECT_EQ(deep.err, "ERROR: Invalid formula. Please enter a valid formula.\n");
  auto minus = RunQvdb({"calc", db_, "--field", "R", "--formula", std::string(100000, '-') + "1"});
  EXPECT_EQ(minus.exit_code, 1);
  EXPECT_EQ(minus.err, "Error: All available operators are used up.\n");
}

}  // namespace
}  // namespace qv::test
