#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class QvdbExchangeTest : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(folder_.Path(name), std::ios::binary) << text;
    return folder_.Path(name);
  }
  TempFolder folder_;
  const std::string csv_ =
      "Item,Qty,Price,Bought\n"
      "\"Bolt, M4 \"\"long\"\"\",350,0.04,14/03/2024\n"
      "Caf\xC3\xA9 table,1,89.90,\n"
      "\"two\nlines\",-2,1.50,01/01/2000\n";
};

TEST_F(QvdbExchangeTest, NewFromCsvThenExportGivesTheFileBack) {
  std::string db = folder_.Path("Stock.PDB"), out = folder_.Path("out.csv");
  auto made =
      RunQvdb({"new", db, "--from-csv", Write("in.csv", csv_), "--date-format", "dd/MM/yyyy"});
  ASSERT_EQ(made.exit_code, 0) << made.err;
  EXPECT_EQ(made.out,
            "Item: Text (guessed)\nQty: Integer (guessed)\nPrice: Float (guessed)\n"
            "Bought: Date (guessed)\nimported 3 records\n");
  ASSERT_EQ(RunQvdb({"export", db, out, "--header", "--date-format", "dd/MM/yyyy"}).exit_code, 0);
  EXPECT_EQ(Slurp(out),
            "Item,Qty,Price,Bought\n"
            "\"Bolt, M4 \"\"long\"\"\",350,0.04,14/03/2024\n"
            "Caf\xC3\xA9 table,1,89.90,NO DATE\n"
            "\"two\nlines\",-2,1.50,01/01/2000\n");
  ASSERT_EQ(RunQvdb({"export", db, out, "--quote-all", "--separator", ";", "--encoding", "cp1252",
                     "--date-format", "M/d/yyyy"})
                .exit_code,
            0);
  EXPECT_EQ(Slurp(out).substr(0, 36), "\"Bolt, M4 \"\"long\"\"\";\"350\";\"0.04\";\"3/");
  EXPECT_NE(Slurp(out).find("\"Caf\xE9 table\""), std::string::npos);
  ASSERT_EQ(RunQvdb({"export", db, out, "--json"}).exit_code, 0);
  EXPECT_NE(Slurp(out).find("{\"Item\": \"two\\nlines\", \"Qty\": -2"), std::string::npos);
  EXPECT_EQ(RunQvdb({"export", db, out, "--json", "--text"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"export", db, out, "--separator", "ab"}).exit_code, 2);
}

TEST_F(QvdbExchangeTest, ImportKeepsGoodRowsAndNamesTheBadOnes) {
  std::string db = folder_.Path("Stock.PDB");
  ASSERT_EQ(RunQvdb({"new", db, "--field", "Item:Text", "--field", "Qty:Integer"}).exit_code, 0);
  auto result = RunQvdb({"import", db, Write("in.csv", "Qty,Item\n3,a\nlots,b\n4,c\n")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "line 3: 'lots' is not a valid Integer value for Qty\n");
  EXPECT_EQ(result.out, "imported 2 records, refused 1 rows\n");
  EXPECT_EQ(RunQvdb({"list", db, "--format", "tsv"}).out, "Item\tQty\na\t3\nc\t4\n");
  auto tabs = RunQvdb({"import", db, Write("tabs.tsv", "d\t5\n"), "--separator", "tab"});
  EXPECT_EQ(tabs.exit_code, 0) << tabs.err;
  auto unknown = RunQvdb({"import", db, Write("bad.csv", "Colour\nred\n"), "--header"});
  EXPECT_EQ(unknown.exit_code, 1);
  EXPECT_NE(unknown.err.find("does not have: 'Colour'; its fields are Item, Qty"),
            std::string::npos);
  EXPECT_EQ(RunQvdb({"import", db, folder_.Path("missing.csv")}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"list", db, "--format", "tsv"}).out, "Item\tQty\na\t3\nc\t4\nd\t5\n");
}

TEST_F(QvdbExchangeTest, TextExportWritesTheRecordBlocks) {
  std::string db = folder_.Path("Stock.PDB"), out = folder_.Path("out.txt");
  ASSERT_EQ(RunQvdb({"new", db, "--field", "Item:Text", "--field", "Qty:Integer"}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"add", db, "Item=bolt", "Qty=3"}).exit_code, 0);
  auto result = RunQvdb({"export", db, out, "--text"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_NE(result.err.find("File Exported OK"), std::string::npos);
  EXPECT_EQ(Slurp(out), "Item: bolt\nQty: 3\n----------------------------------------\n");
}

}  // namespace
}  // namespace qv::test
