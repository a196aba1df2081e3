#include <gtest/gtest.h>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class QvdbTest : public ::testing::Test {
 protected:
  TempFolder folder_;
  std::string file_ = folder_.Path("Stock.PDB");
  std::vector<std::string> With(std::vector<std::string> args) {
    args.insert(args.end(), {"--date-format", "dd/MM/yyyy", "--time-format", "HH:mm"});
    return args;
  }
};

TEST_F(QvdbTest, NewAddListAndCheck) {
  auto made = RunQvdb({"new", file_, "--name", "Stock", "--field", "Item:Text", "--field",
                       "Qty:Integer", "--field", "Bought:Date", "--field", "At:Time"});
  ASSERT_EQ(made.exit_code, 0) << made.err;
  ASSERT_EQ(RunQvdb(With({"add", file_, "Item=Bolt, M4", "Qty=-7", "Bought=05/03/2002", "At=13:05"})).exit_code, 0);
  auto tsv = RunQvdb(With({"list", file_, "--format", "tsv"}));
  EXPECT_EQ(tsv.out, "Item\tQty\tBought\tAt\nBolt, M4\t-7\t05/03/2002\t13:05\n");
  auto json = RunQvdb(With({"list", file_, "--format", "json"}));
  EXPECT_NE(json.out.find("\"Item\": \"Bolt, M4\""), std::string::npos) << json.out;
  auto check = RunQvdb({"check", file_});
  EXPECT_EQ(check.exit_code, 0);
  EXPECT_EQ(check.out, "round trip OK\n");
}

TEST_F(QvdbTest, RefusesBadValuesAndUnknownFieldsWithoutWriting) {
  ASSERT_EQ(RunQvdb({"new", file_, "--field", "Qty:Integer", "--field", "When:Date"}).exit_code, 0);
  auto before = RunQvdb({"list", file_, "--format", "tsv"});
  auto bad_number = RunQvdb(With({"add", file_, "Qty=12x"}));
  EXPECT_EQ(bad_number.exit_code, 1);
  EXPECT_NE(bad_number.err.find("not a valid Integer value for Qty"), std::string::npos);
  EXPECT_EQ(RunQvdb(With({"add", file_, "Colour=red"})).exit_code, 1);
  EXPECT_EQ(RunQvdb(With({"add", file_, "When=31/02/2002"})).exit_code, 1);
  EXPECT_EQ(RunQvdb({"list", file_, "--format", "tsv"}).out, before.out);
  EXPECT_EQ(RunQvdb({"new", file_, "--field", "X:Colour"}).exit_code, 1);  // exists already
  EXPECT_EQ(RunQvdb({"frobnicate"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"list"}).exit_code, 2);
}

TEST_F(QvdbTest, PositionalArgumentsAreCountedFromTheUsageLine) {
  ASSERT_EQ(RunQvdb({"new", file_, "--field", "Name:Text"}).exit_code, 0);
  auto extra = RunQvdb({"info", file_, "more"});
  EXPECT_EQ(extra.exit_code, 2);
  EXPECT_NE(extra.err.find("unexpected argument 'more'"), std::string::npos) << extra.err;
  // "[FIELD]"-style words are optional positionals; "[--not]" and the like are options.
  EXPECT_EQ(RunQvdb({"sort", file_, "Name"}).exit_code, 0);
  auto too_many = RunQvdb({"export", file_, folder_.Path("a.csv"), "b", "c"});
  EXPECT_EQ(too_many.exit_code, 2);
  EXPECT_NE(too_many.err.find("unexpected argument"), std::string::npos) << too_many.err;
}

TEST_F(QvdbTest, SetAndDeleteByNumberFromOne) {
  ASSERT_EQ(RunQvdb({"new", file_, "--field", "Name:Text"}).exit_code, 0);
  for (const char* n : {"Name=a", "Name=b", "Name=c"}) ASSERT_EQ(RunQvdb({"add", file_, n}).exit_code, 0);
  EXPECT_EQ(RunQvdb({"set", file_, "2", "Name=B"}).exit_code, 0);
  EXPECT_EQ(RunQvdb({"delete", file_, "1", "3"}).exit_code, 0);
  EXPECT_EQ(RunQvdb({"list", file_, "--format", "tsv"}).out, "Name\nB\n");
  EXPECT_EQ(RunQvdb({"set", file_, "5", "Name=x"}).exit_code, 1);
}

TEST_F(QvdbTest, OpenFailuresUseTheProgramsMessages) {
  auto missing = RunQvdb({"info", folder_.Path("nothing.PDB")});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_NE(missing.err.find("ERROR: Cannot Open File: "), std::string::npos);
}

}  // namespace
}  // namespace qv::test
