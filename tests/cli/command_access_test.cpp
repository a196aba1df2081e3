// Every writing qvdb command checks the access action of the application's command that does
// the same thing: under No Access for that action it exits 1 and leaves the file as it was.

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

struct Guarded {
  std::vector<std::string> args;  // "DB" stands for the database file
  std::string action;             // the row label of the Security Access dialog
};

std::vector<Guarded> GuardedCommands(const std::string& csv) {
  return {
      {{"add", "DB", "Name=new"}, "Add Records"},
      {{"import", "DB", csv}, "Add Records"},
      {{"new", "DB", "--from-csv", csv, "--force"}, "Add Records"},
      {{"set", "DB", "1", "Name=changed"}, "Edit Records"},
      {{"recalc", "DB"}, "Edit Records"},
      {{"delete", "DB", "1"}, "Delete Records"},
      {{"calc", "DB", "--field", "Twice", "--formula", "F2 * 2"}, "DB Properties"},
      {{"views", "DB", "new"}, "DB Properties"},
      {{"views", "DB", "copy", "1"}, "DB Properties"},
      {{"views", "DB", "delete", "1"}, "DB Properties"},
      {{"security", "DB", "--set", "Beam Data=No Access"}, "DB Properties"},
      {{"encrypt", "DB", "--mode", "1", "--field", "Name"}, "DB Properties"},
      {{"decrypt", "DB"}, "DB Properties"},
      {{"new", "DB", "--field", "Other:Text", "--force"}, "Delete Database"},
  };
}

TEST(CommandAccessTest, EveryWritingCommandIsRefusedUnderNoAccessForItsAction) {
  TempFolder folder;
  std::string base = folder.Path("Base.PDB"), csv = folder.Path("in.csv");
  WriteText(csv, "Name,Qty\nwasher,3\n");
  ASSERT_EQ(RunQvdb({"new", base, "--field", "Name:Text", "--field", "Qty:Integer"}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"add", base, "Name=bolt", "Qty=4"}).exit_code, 0);
  std::map<std::string, std::string> password = {{"QUORVANT_PASSWORD", "key"}};
  int n = 0;
  for (Guarded& g : GuardedCommands(csv)) {
    std::string file = folder.Path("Case" + std::to_string(n++) + ".PDB");
    std::filesystem::copy_file(base, file);
    ASSERT_EQ(RunQvdb({"security", file, "--set", g.action + "=No Access"}).exit_code, 0);
    std::string before = Slurp(file);
    for (auto& a : g.args)
      if (a == "DB") a = file;
    SCOPED_TRACE(g.args[0] + " " + g.args.back());
    auto refused = RunQvdb(g.args, "", password);
    EXPECT_EQ(refused.exit_code, 1) << refused.err;
    EXPECT_NE(
        refused.err.find(
            "ACCESS DENIED: Sorry, You do Not have Security Access to Perform this Operation!"),
        std::string::npos)
        << refused.err;
    EXPECT_EQ(Slurp(file), before);
    // The same command goes ahead once the action is open again (reopening DB Properties is
    // itself a DB Properties change).
    if (g.action == "DB Properties") continue;
    ASSERT_EQ(RunQvdb({"security", file, "--set", g.action + "=Full Access"}).exit_code, 0);
    auto allowed = RunQvdb(g.args, "", password);
    EXPECT_EQ(allowed.exit_code, 0) << allowed.err;
  }
}

TEST(CommandAccessTest, ReadingSortingAndFilteringNeedOnlyOpenDatabase) {
  TempFolder folder;
  std::string file = folder.Path("Open.PDB");
  ASSERT_EQ(RunQvdb({"new", file, "--field", "Name:Text", "--field", "Qty:Integer"}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"add", file, "Name=bolt", "Qty=4"}).exit_code, 0);
  for (const char* action : {"Add Records", "Edit Records", "Delete Records", "Beam Data"})
    ASSERT_EQ(RunQvdb({"security", file, "--set", std::string(action) + "=No Access"}).exit_code,
              0);
  for (std::vector<std::string> args : {std::vector<std::string>{"list", file},
                                        {"find", file, "bolt"},
                                        {"report", file, "Qty"},
                                        {"sort", file, "Qty"},
                                        {"filter", file, "clear"},
                                        {"views", file, "apply", "1"},
                                        {"export", file, folder.Path("out.csv")},
                                        {"check", file}}) {
    auto result = RunQvdb(args);
    EXPECT_EQ(result.exit_code, 0) << args[0] << ": " << result.err;
  }
}

}  // namespace
}  // namespace qv::test
