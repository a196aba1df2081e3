#include <gtest/gtest.h>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class QvdbViewsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunQvdb({"new", file_, "--field", "Name:Text", "--field", "Qty:Integer", "--field",
                       "Done:Check-Box"})
                  .exit_code,
              0);
    for (auto row : {std::vector<std::string>{"Name=Smith", "Qty=112", "Done=1"},
                     {"Name=jones", "Qty=7", "Done=0"}}) {
      row.insert(row.begin(), {"add", file_});
      ASSERT_EQ(RunQvdb(row).exit_code, 0);
    }
  }
  TempFolder folder_;
  std::string file_ = folder_.Path("People.PDB");
};

TEST_F(QvdbViewsTest, FindPrintsRecordFieldAndValueOrSaysNotFound) {
  auto found = RunQvdb({"find", file_, "12"});
  EXPECT_EQ(found.exit_code, 0);
  EXPECT_EQ(found.out, "1\tQty\t112\n");
  EXPECT_EQ(RunQvdb({"find", file_, "smith"}).out, "1\tName\tSmith\n");
  auto exact = RunQvdb({"find", file_, "smith", "--case"});
  EXPECT_EQ(exact.exit_code, 1);
  EXPECT_NE(exact.err.find("Not Found in Database!"), std::string::npos);
  EXPECT_EQ(RunQvdb({"find", file_, "12", "--begins"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"find", file_, "1", "--field", "Done", "--from", "2"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"find", file_, "o", "--from", "2"}).out, "2\tName\tjones\n");
  EXPECT_EQ(RunQvdb({"find", file_, "x", "--field", "Colour"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"find", file_, "x", "--from", "0"}).exit_code, 2);
}

TEST_F(QvdbViewsTest, ReportPrintsTheTextOrTheRefusal) {
  auto report = RunQvdb({"report", file_, "Qty"});
  EXPECT_EQ(report.exit_code, 0);
  EXPECT_EQ(report.out,
            "Report for Qty\nNumber of Entries:\t2\nMinimum Value:\t7\nMaximum Value:\t112\n"
            "Sum:\t\t119\nMinimum Total:\t112\nMaximum Total:\t119\nAverage:\t\t60\n");
  auto text = RunQvdb({"report", file_, "Name"});
  EXPECT_EQ(text.exit_code, 1);
  EXPECT_NE(text.err.find("ERROR: Can only run reports"), std::string::npos);
  auto none = RunQvdb({"report", file_, "Nothing"});
  EXPECT_NE(none.err.find("You must first select a field to run the report on!"),
            std::string::npos);
}

TEST_F(QvdbViewsTest, ViewsAreListedMadeCopiedDeletedAndApplied) {
  EXPECT_EQ(RunQvdb({"views", file_, "list"}).out, "1\tDefault View\tcurrent\n");
  EXPECT_EQ(RunQvdb({"views", file_, "new"}).out, "added view 2\n");
  EXPECT_EQ(RunQvdb({"views", file_, "copy", "2"}).out, "added view 3\n");
  EXPECT_EQ(RunQvdb({"views", file_, "delete", "1"}).exit_code, 1);  // no terminal: answered no
  EXPECT_EQ(RunQvdb({"views", file_, "delete", "1", "--yes"}).exit_code, 0);
  auto list = RunQvdb({"views", file_, "list"}).out;
  EXPECT_EQ(list, "1\tNew View\n2\tNew View\n");
  EXPECT_EQ(RunQvdb({"views", file_, "apply", "2"}).out, "applied view 2: 2 of 2 records shown\n");
  EXPECT_EQ(RunQvdb({"views", file_, "list"}).out, "1\tNew View\n2\tNew View\tcurrent\n");
  EXPECT_EQ(RunQvdb({"views", file_, "apply", "40"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"views", file_, "rename"}).exit_code, 2);
}

}  // namespace
}  // namespace qv::test
