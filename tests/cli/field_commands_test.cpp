#include <gtest/gtest.h>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class QvdbFieldTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunQvdb({"new", file_, "--field", "Item:Text", "--field", "Qty:Text"}).exit_code, 0);
    for (const char* qty : {"Qty=12", "Qty=many", "Qty=3"})
      ASSERT_EQ(RunQvdb({"add", file_, "Item=bolt", qty}).exit_code, 0);
  }
  TempFolder folder_;
  std::string file_ = folder_.Path("Stock.PDB");
};

TEST_F(QvdbFieldTest, ALossyChangeNeedsForceAndLeavesTheFileAlone) {
  std::string before = Slurp(file_);
  auto refused = RunQvdb({"field", file_, "set", "Qty", "--type", "Integer"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("1 value of 'Qty' cannot be kept"), std::string::npos) << refused.err;
  EXPECT_EQ(Slurp(file_), before);
  auto forced = RunQvdb({"field", file_, "set", "2", "--type", "Integer", "--force"});
  ASSERT_EQ(forced.exit_code, 0) << forced.err;
  EXPECT_EQ(RunQvdb({"list", file_, "--format", "tsv"}).out,
            "Item\tQty\nbolt\t12\nbolt\t0\nbolt\t3\n");
  EXPECT_EQ(RunQvdb({"check", file_}).exit_code, 0);
}

TEST_F(QvdbFieldTest, AddMoveRenameAndDelete) {
  ASSERT_EQ(RunQvdb({"field", file_, "add", "Colour:Pop-Up", "--at", "1", "--popup", "red",
                     "--popup", "blue", "--default", "blue"})
                .exit_code,
            0);
  ASSERT_EQ(RunQvdb({"field", file_, "add", "Total:Calculated", "--formula", "Qty * 2",
                     "--result-kind", "integer"})
                .exit_code,
            0);
  ASSERT_EQ(RunQvdb({"field", file_, "move", "Item", "1"}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"field", file_, "set", "Item", "--name", "Part"}).exit_code, 0);
  auto list = RunQvdb({"field", file_, "list"});
  EXPECT_NE(list.out.find("1         Part"), std::string::npos) << list.out;
  EXPECT_NE(list.out.find("items: red, blue; default: blue"), std::string::npos) << list.out;
  EXPECT_NE(list.out.find("(integer)"), std::string::npos) << list.out;
  EXPECT_EQ(RunQvdb({"list", file_, "--format", "tsv"}).out,
            "Part\tColour\tQty\tTotal\nbolt\t\t12\t24\nbolt\t\tmany\t0\nbolt\t\t3\t6\n");
  // Deleting a field with data: refused without --force, and the formula reading it is named.
  auto refused = RunQvdb({"field", file_, "delete", "Qty"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("The formula of 'Total' uses 'Qty' and is cleared."),
            std::string::npos)
      << refused.err;
  ASSERT_EQ(RunQvdb({"field", file_, "delete", "Qty", "--force"}).exit_code, 0);
  EXPECT_EQ(RunQvdb({"list", file_, "--format", "tsv"}).out,
            "Part\tColour\tTotal\nbolt\t\t0\nbolt\t\t0\nbolt\t\t0\n");
  EXPECT_EQ(RunQvdb({"field", file_, "delete", "Colour"}).exit_code, 0);  // holds nothing
  EXPECT_EQ(RunQvdb({"check", file_}).exit_code, 0);
}

TEST_F(QvdbFieldTest, BadRequestsAreRefused) {
  EXPECT_EQ(RunQvdb({"field", file_, "add", "Item:Text"}).exit_code, 1);  // name taken
  EXPECT_EQ(RunQvdb({"field", file_, "add", "X:Colour"}).exit_code, 2);   // no such type
  EXPECT_EQ(RunQvdb({"field", file_, "set", "Nope", "--name", "Y"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"field", file_, "set", "Item", "--popup", "a"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"field", file_, "add", "T:Calculated", "--formula", "Nope +"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"field", file_, "frob"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"field", file_, "list"}).out.find("T "), std::string::npos);
}

}  // namespace
}  // namespace qv::test
