// qvdb link and qvdb add --linked-to, run as users run them.

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/qvdb_runner.h"
#include "tests/support/linked_family.h"

namespace qv::test {
namespace {

class LinkCommandsTest : public ::testing::Test {
 protected:
  TempFolder folder_;
  LinkedFamily family_ = SaveLinkedFamily(folder_.path());
};

TEST_F(LinkCommandsTest, ListsTheRecordsThatBelongAndAddsUnderAParent) {
  QvdbResult garden = RunQvdb(
      {"link", family_.projects, "1", "Tasks", "--format", "csv", "--fields", "Task,Project"});
  EXPECT_EQ(garden.exit_code, 0) << garden.err;
  EXPECT_EQ(garden.out, "Task,Project\nDig,Garden\nPlant,Garden\n");

  // A parent without a key yet gets one, saved before the child record is.
  ASSERT_EQ(RunQvdb({"add", family_.projects, "Name=Shed"}).exit_code, 0);
  QvdbResult added =
      RunQvdb({"add", family_.tasks, "Task=Paint", "--linked-to", family_.projects + ":3:Tasks"});
  EXPECT_EQ(added.exit_code, 0) << added.err;
  QvdbResult keys = RunQvdb({"list", family_.projects, "--format", "csv"});
  EXPECT_NE(keys.out.find("Shed,3"), std::string::npos) << keys.out;
  QvdbResult shed = RunQvdb({"link", family_.projects, "3", "Tasks", "--format", "jsonl", "--raw"});
  EXPECT_EQ(shed.out, "{\"Task\": \"Paint\", \"Project\": \"Shed\", \"Steps\": \"0\"}\n");
  // Two levels down, through the child's own Link field.
  QvdbResult steps = RunQvdb({"link", family_.tasks, "1", "Steps", "--fields", "Step"});
  EXPECT_EQ(steps.out, "Step\nSpade\nGloves\n");
}

TEST_F(LinkCommandsTest, ARelationshipIsSetUpAndFollowedByItsNumberFields) {
  const std::string orders = folder_.Path("Orders.PDB");
  ASSERT_EQ(RunQvdb({"new", orders, "--name", "Orders", "--field", "Item:Text", "--field",
                     "Step:Integer"})
                .exit_code,
            0);
  ASSERT_EQ(RunQvdb({"field", family_.steps, "add", "No:Integer"}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"set", family_.steps, "2", "No=5"}).exit_code, 0);
  QvdbResult added = RunQvdb({"field", orders, "add", "For:Relationship", "--link-to", "Steps",
                              "--key-field", "Step", "--link-field", "No"});
  ASSERT_EQ(added.exit_code, 0) << added.err;
  ASSERT_EQ(RunQvdb({"add", orders, "Item=glue", "Step=5"}).exit_code, 0);
  QvdbResult related = RunQvdb({"link", orders, "1", "For", "--fields", "Step"});
  EXPECT_EQ(related.out, "Step\nGloves\n") << related.err;
  EXPECT_EQ(RunQvdb({"field", orders, "set", "Item", "--key-field", "Step"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"field", orders, "set", "For", "--link-field", "Nothing"}).exit_code, 1);
}

TEST_F(LinkCommandsTest, DeletingWithLinkedTakesTheirRecordsAlong) {
  ASSERT_EQ(RunQvdb({"delete", family_.projects, "1", "--linked"}).exit_code, 0);
  QvdbResult tasks = RunQvdb({"list", family_.tasks, "--fields", "Task"});
  EXPECT_EQ(tasks.out, "Task\nSweep\n");
  ASSERT_EQ(RunQvdb({"delete", family_.projects, "1"}).exit_code, 0);  // Garage, without --linked
  EXPECT_EQ(RunQvdb({"list", family_.tasks, "--fields", "Task"}).out, "Task\nSweep\n");
}

TEST_F(LinkCommandsTest, RefusesWithTheSystemsMessagesAndBadSpecs) {
  QvdbResult wrong =
      RunQvdb({"add", family_.steps, "Step=x", "--linked-to", family_.projects + ":1:Tasks"});
  EXPECT_EQ(wrong.exit_code, 1);
  EXPECT_NE(wrong.err.find("links to 'Project Tasks', not to 'Steps'"), std::string::npos);
  EXPECT_EQ(RunQvdb({"add", family_.tasks, "Task=x", "--linked-to", "P.PDB:1"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"link", family_.projects, "1", "Name"}).exit_code, 1);

  ASSERT_EQ(RunQvdb({"security", family_.tasks, "--set", "Open Database=No Access"}).exit_code, 0);
  QvdbResult refused = RunQvdb({"link", family_.projects, "1", "Tasks"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find(
                "ACCESS DENIED: Sorry, You do Not have Security Access to Perform this Operation!"),
            std::string::npos)
      << refused.err;

  std::filesystem::remove(family_.tasks);
  QvdbResult missing = RunQvdb({"link", family_.projects, "1", "Tasks"});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_EQ(missing.err, "ERROR: Linked Database is not present in this folder!\n");
  EXPECT_TRUE(missing.out.empty());
}

}  // namespace
}  // namespace qv::test
