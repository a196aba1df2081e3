#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/cli/qvdb_runner.h"
#include "tests/support/old_database_builder.h"

namespace qv::test {
namespace {

const std::string kRule = "----------------------------------------\n";

class QvdbTransferTest : public ::testing::Test {
 protected:
  std::string NewDatabase(const std::string& name, const std::vector<std::string>& items) {
    std::string path = folder_.Path(name + ".PDB");
    EXPECT_EQ(RunQvdb({"new", path, "--field", "Item:Text", "--field", "Qty:Integer"}).exit_code,
              0);
    int qty = 1;
    for (const std::string& item : items)
      EXPECT_EQ(RunQvdb({"add", path, "Item=" + item, "Qty=" + std::to_string(qty++)}).exit_code,
                0);
    return path;
  }
  std::string List(const std::string& path) {
    return RunQvdb({"list", path, "--format", "tsv"}).out;
  }

  std::string StandIn(int exit_code) {
    std::string script = folder_.Path("print.sh");
    WriteText(script, "#!/bin/sh\nfor last; do :; done\ncp \"$last\" '" + folder_.Path("printed") +
                          "'\nexit " + std::to_string(exit_code) + "\n");
    ::chmod(script.c_str(), 0755);
    return script;
  }
  QvdbResult Run(const std::vector<std::string>& arguments) {
    return RunQvdb(arguments, "", {{"QUORVANT_HOME", folder_.path()}});
  }

  TempFolder folder_;
};

TEST_F(QvdbTransferTest, PrintHandsTheTextToTheCommandAndReportsItsExitCode) {
  std::string db = NewDatabase("Stock", {"bolt", "nut"});
  auto ok = Run({"print", db, "--command", StandIn(0)});
  EXPECT_EQ(ok.exit_code, 0) << ok.err;
  EXPECT_EQ(ok.err, "Update: Data Printed OK\n");
  EXPECT_EQ(Slurp(folder_.Path("printed")),
            "Item: bolt\nQty: 1\n" + kRule + "Item: nut\nQty: 2\n" + kRule);
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("qvprnttemp.txt")));

  auto problem = Run({"print", db, "--record", "2", "--command", StandIn(5)});
  EXPECT_EQ(problem.exit_code, 1);
  EXPECT_EQ(problem.err, "Update: There was a problem printing to PrintPocketCE\n");
  EXPECT_EQ(Slurp(folder_.Path("printed")), "Item: nut\nQty: 2\n" + kRule);

  auto missing = Run({"print", db, "--command", folder_.Path("nothing-here")});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_EQ(missing.err,
            "ERROR: Unable to call PrintPocketCE.  Please check to see if it is properly "
            "installed.\nERROR: File not found\n");

  ASSERT_EQ(Run({"print", db, "--to-file", folder_.Path("out.txt"), "--record", "1"}).exit_code, 0);
  EXPECT_EQ(Slurp(folder_.Path("out.txt")), "Item: bolt\nQty: 1\n" + kRule);
  EXPECT_EQ(Run({"print", db, "--record", "3"}).exit_code, 1);
  EXPECT_EQ(Run({"print", db, "--record", "1", "--view"}).exit_code, 2);
}

TEST_F(QvdbTransferTest, CopyAndMoveBetweenDatabases) {
  std::string stock = NewDatabase("Stock", {"bolt", "nut"});
  std::string shop = NewDatabase("Shop", {"old"});
  auto copied = RunQvdb({"copy", stock, shop});
  EXPECT_EQ(copied.exit_code, 0) << copied.err;
  EXPECT_EQ(copied.out, "copied 2 records\n");
  EXPECT_EQ(List(shop), "Item\tQty\nold\t1\nnut\t2\nbolt\t1\n");

  auto same = RunQvdb({"move", stock, stock});
  EXPECT_EQ(same.exit_code, 1);
  EXPECT_EQ(same.err, "ERROR: Cannot perform this operation to the same database\n");
  EXPECT_EQ(RunQvdb({"copy", stock, stock, "--record", "1"}).exit_code, 0);
  EXPECT_EQ(List(stock), "Item\tQty\nbolt\t1\nnut\t2\nbolt\t1\n");

  auto moved = RunQvdb({"move", stock, shop, "--record", "2"});
  EXPECT_EQ(moved.out, "moved 1 records\n");
  EXPECT_EQ(List(stock), "Item\tQty\nbolt\t1\nbolt\t1\n");
  EXPECT_EQ(List(shop), "Item\tQty\nold\t1\nnut\t2\nbolt\t1\nnut\t2\n");

  std::string other = folder_.Path("Other.PDB");
  ASSERT_EQ(RunQvdb({"new", other, "--field", "Item:Text", "--field", "When:Date"}).exit_code, 0);
  auto mismatch = RunQvdb({"move", stock, other});
  EXPECT_EQ(mismatch.exit_code, 1);
  EXPECT_EQ(mismatch.err,
            "ERROR: Field Types of Database:Other do not match that of this database!\n");
  EXPECT_EQ(List(stock), "Item\tQty\nbolt\t1\nbolt\t1\n");
}

TEST_F(QvdbTransferTest, ConvertTurnsA2xFileIntoACurrentOne) {
  std::string path = folder_.Path("Inventory.PDB");
  OldDatabaseBuilder("Inventory")
      .Field(OldFieldSpec(1, "Item"))
      .Field(OldFieldSpec(10, "Number"))
      .Row({OldDatabaseBuilder::Text("bolt"), OldDatabaseBuilder::Text("41")})
      .Write(path);
  EXPECT_EQ(RunQvdb({"list", path}).exit_code, 1);
  auto converted = RunQvdb({"convert", path, "--yes-unique"});
  EXPECT_EQ(converted.exit_code, 0) << converted.err;
  EXPECT_EQ(converted.err, "Update: Conversion Successful!\n");
  EXPECT_EQ(converted.out,
            "converted; the old file is kept as " + folder_.Path("Inventory-Old.PDB") + "\n");
  EXPECT_EQ(List(path), "Item\tNumber\nbolt\t41\n");

  auto again = RunQvdb({"convert", path});
  EXPECT_EQ(again.exit_code, 1);
  EXPECT_EQ(again.err, "Error: File is not a Quorvant 2.x file, cannot convert.\n");
}

}  // namespace
}  // namespace qv::test
