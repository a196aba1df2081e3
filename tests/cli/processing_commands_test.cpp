#include <gtest/gtest.h>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class ProcessingCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunQvdb({"new", file_, "--field", "Name:Text", "--field", "Qty:Integer", "--field",
                       "Day:Date", "--field", "Pic:Image"})
                  .exit_code,
              0);
    for (auto row : {std::vector<std::string>{"Name=Banana", "Qty=-5", "Day=02/01/2003"},
                     {"Name=apple", "Qty=2000000000", "Day=05/03/2002"},
                     {"Name=cherry", "Qty=7", "Day=NO DATE"}}) {
      std::vector<std::string> args{"add", file_};
      args.insert(args.end(), row.begin(), row.end());
      ASSERT_EQ(Run(args).exit_code, 0);
    }
  }
  QvdbResult Run(std::vector<std::string> args) {
    args.insert(args.end(), {"--date-format", "dd/MM/yyyy"});
    return RunQvdb(args);
  }
  std::string Column(const std::vector<std::string>& extra = {}) {
    std::vector<std::string> args{"list", file_, "--format", "tsv"};
    args.insert(args.end(), extra.begin(), extra.end());
    std::string out = Run(args).out;
    std::string names;
    std::size_t at = out.find('\n') + 1;
    while (at < out.size()) {
      std::size_t tab = out.find('\t', at);
      names += out.substr(at, tab - at) + " ";
      at = out.find('\n', at) + 1;
    }
    return names;
  }
  TempFolder folder_;
  std::string file_ = folder_.Path("Stock.PDB");
};

TEST_F(ProcessingCommandsTest, SortStoresTheKeysAndNewRecordsKeepTheOrder) {
  EXPECT_EQ(Run({"sort", file_, "Name"}).exit_code, 0);
  EXPECT_EQ(Column(), "apple Banana cherry ");
  auto added = Run({"add", file_, "Name=Avocado", "Qty=1"});
  EXPECT_EQ(added.out, "added record 2\n");
  EXPECT_EQ(Run({"set", file_, "1", "Name=zebra"}).exit_code, 0);
  EXPECT_EQ(Column(), "Avocado Banana cherry zebra ");
  EXPECT_EQ(Run({"sort", file_, "Qty", "Name:reverse"}).exit_code, 0);
  EXPECT_EQ(Column(), "Banana Avocado cherry zebra ");
  EXPECT_EQ(Run({"sort", file_, "Qty:reverse"}).exit_code, 0);
  EXPECT_EQ(Column(), "zebra cherry Avocado Banana ");
}

TEST_F(ProcessingCommandsTest, SortRefusesFieldsThatCannotBeKeys) {
  auto pic = Run({"sort", file_, "Pic"});
  EXPECT_EQ(pic.exit_code, 1);
  EXPECT_NE(pic.err.find("This type of field (Pic) cannot currently be sorted!"), std::string::npos);
  EXPECT_EQ(Run({"sort", file_, "Colour"}).exit_code, 1);
  EXPECT_EQ(Run({"sort", file_, "Name", "Qty", "Day", "Name"}).exit_code, 2);
  EXPECT_EQ(Column(), "Banana apple cherry ");
}

TEST_F(ProcessingCommandsTest, FilterSetShowClearAndListAll) {
  EXPECT_EQ(Run({"filter", file_, "set", "1", "--field", "Qty", "--range", "-5", "10"}).exit_code, 0);
  EXPECT_EQ(Column(), "Banana cherry ");
  EXPECT_EQ(Column({"--all"}), "Banana apple cherry ");
  EXPECT_EQ(Run({"filter", file_, "set", "2", "--field", "Name", "--contains", "AP", "--or"}).exit_code, 0);
  EXPECT_EQ(Column(), "Banana apple cherry ");
  EXPECT_EQ(Run({"filter", file_, "set", "3", "--field", "Day", "--range", "01/01/2003", "",
                 "--not"}).exit_code, 0);
  EXPECT_EQ(Column(), "apple cherry ");
  auto show = Run({"filter", file_, "show"});
  EXPECT_EQ(show.out,
            "1: Qty from -5 to 10\n"
            "2: OR Name contains \"AP\"\n"
            "3: AND NOT Day from 01/01/2003 on\n"
            "4: off\n5: off\n6: off\n"
            "2 of 3 records pass\n") << show.err;
  EXPECT_EQ(Run({"filter", file_, "clear", "3"}).exit_code, 0);
  EXPECT_EQ(Column(), "Banana apple cherry ");
  EXPECT_EQ(Run({"filter", file_, "clear"}).exit_code, 0);
  EXPECT_NE(Run({"filter", file_, "show"}).out.find("1: off\n"), std::string::npos);
}

TEST_F(ProcessingCommandsTest, FilterRefusesMismatchedOrBadConditions) {
  auto wrong = Run({"filter", file_, "set", "1", "--field", "Qty", "--contains", "x"});
  EXPECT_EQ(wrong.exit_code, 2);
  EXPECT_NE(wrong.err.find("Qty is a Integer field: give --range LOW HIGH"), std::string::npos);
  EXPECT_EQ(Run({"filter", file_, "set", "7", "--field", "Qty", "--range", "1", "2"}).exit_code, 2);
  EXPECT_EQ(Run({"filter", file_, "set", "1", "--field", "Qty", "--range", "1"}).exit_code, 2);
  auto bad = Run({"filter", file_, "set", "1", "--field", "Day", "--range", "31/02/2002", ""});
  EXPECT_EQ(bad.exit_code, 1);
  EXPECT_NE(bad.err.find("the limits for Day are not valid Date values"), std::string::npos);
  EXPECT_EQ(Column(), "Banana apple cherry ");
}

TEST_F(ProcessingCommandsTest, CalculatedFieldsAreDefinedAndKeptUpToDate) {
  auto calc = Run({"calc", file_, "--field", "Double", "--formula", "Qty * 2", "--result-kind", "1"});
  ASSERT_EQ(calc.exit_code, 0) << calc.err;
  EXPECT_EQ(calc.out, "Double = F2 2 *\n");
  auto list = Run({"list", file_, "--format", "tsv"});
  EXPECT_EQ(list.out,
            "Name\tQty\tDay\tPic\tDouble\nBanana\t-5\t02/01/2003\t\t-10\n"
            "apple\t2000000000\t05/03/2002\t\t4000000000\ncherry\t7\tNO DATE\t\t14\n");
  EXPECT_EQ(Run({"set", file_, "3", "Qty=8"}).exit_code, 0);  // recalculated as the editor does
  EXPECT_NE(Run({"list", file_, "--format", "tsv"}).out.find("cherry\t8\tNO DATE\t\t16\n"),
            std::string::npos);
  EXPECT_EQ(Run({"calc", file_, "--field", "Double", "--formula", "Sqrt(Qty + 1)"}).exit_code, 0);
  EXPECT_NE(Run({"list", file_, "--format", "tsv"}).out.find("cherry\t8\tNO DATE\t\t3\n"),
            std::string::npos);
  EXPECT_EQ(Run({"recalc", file_}).exit_code, 0);

  auto invalid = Run({"calc", file_, "--field", "Double", "--formula", "Qty +"});
  EXPECT_EQ(invalid.exit_code, 1);
  EXPECT_NE(invalid.err.find("ERROR: Invalid formula. Please enter a valid formula."), std::string::npos);
  auto empty = Run({"calc", file_, "--field", "Other", "--formula", " "});
  EXPECT_NE(empty.err.find("ERROR: Formula is empty. Please enter a valid formula."), std::string::npos);
  auto text = Run({"calc", file_, "--field", "Name", "--formula", "1"});
  EXPECT_EQ(text.exit_code, 1);
  EXPECT_NE(text.err.find("Name is a Text field, not a Calculated one"), std::string::npos);
  EXPECT_EQ(Run({"calc", file_, "--field", "X", "--formula", "1", "--result-kind", "9"}).exit_code, 2);
  EXPECT_EQ(Run({"info", file_}).out.find("Other"), std::string::npos);  // nothing stored
}

}  // namespace
}  // namespace qv::test
