#include "processing/table_change.h"

#include <gtest/gtest.h>

#include "processing/store.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

TEST(TableChangeTest, UndoAndRedoAnEditAnAddAndARangeDelete) {
  auto db = DatabaseBuilder().Field("Name", kText).Sort(0).Row({"b"}).Row({"d"}).Row({"f"}).Build();
  ScriptedPrompter prompter;
  const Bytes original = SerializeDatabase(*db);
  auto before = db->records;
  // An edit that moves the record in sort order, and a new record.
  StoreRecordSorted(*db, ValuesFromTexts(*db, {{0, "z"}}), 0, true, prompter);
  StoreRecordSorted(*db, ValuesFromTexts(*db, {{0, "a"}}), kNewRecord, true, prompter);
  TableChange edit = TableChange::Between(before, *db);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"a", "d", "f", "z"}));
  edit.Undo(*db);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"b", "d", "f"}));
  db->changed = false;
  EXPECT_EQ(SerializeDatabase(*db), original);
  edit.Redo(*db);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"a", "d", "f", "z"}));

  before = db->records;
  DeleteRecordsAndRecalculate(*db, {0, 1, 2, 3}, prompter);
  TableChange wipe = TableChange::Between(before, *db);
  EXPECT_EQ(db->count(), 0u);
  wipe.Undo(*db);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"a", "d", "f", "z"}));
  EXPECT_EQ(db->visible.size(), 4u);
  EXPECT_TRUE(db->changed);
}

TEST(TableChangeTest, RepeatedIdentifiersKeepWholeTables) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Row({"b"}).Build();
  db->records[1].uid = db->records[0].uid;  // a damaged file
  auto before = db->records;
  db->records.erase(db->records.begin());
  TableChange change = TableChange::Between(before, *db);
  change.Undo(*db);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"a", "b"}));
  change.Redo(*db);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"b"}));
}

}  // namespace
}  // namespace qv::test
