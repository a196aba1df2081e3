#include "processing/recalc.h"

#include <gtest/gtest.h>

#include "processing/filter.h"
#include "processing/formula_builder.h"
#include "processing/store.h"
#include "tests/processing/fixtures.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

void SetText(Database& db, std::uint32_t record, int slot, std::string_view text) {
  db.records[record].data = ReplaceValue(db.records[record].data, db.definition(), slot, TextValue(text));
}

TEST(RecalculateFromTest, WithoutCalculatedFieldsNothingIsTouched) {
  auto db = DatabaseBuilder().Field("A", kInteger).Row({"1"}).Row({"2"}).Build();
  ScriptedPrompter p;
  Bytes before = db->records[1].data;
  EXPECT_EQ(RecalculateFrom(*db, 0, p), 0);
  EXPECT_EQ(p.Progress(), (std::vector<std::string>{"Recalculating Fields"}));
  EXPECT_TRUE(db->redraw);
  EXPECT_FALSE(db->recalculating);
  EXPECT_FALSE(db->changed);
  EXPECT_EQ(db->records[1].data, before);
}

// "Prev" is ten times the previous record's A; its only operand comes from the previous record.
class PreviousRecordTest : public ::testing::Test {
 protected:
  void SetUp() override {
    DatabaseBuilder b;
    b.Field("A", kInteger).Field("Prev", kCalculated);
    for (int i = 0; i < 15; ++i) b.Row({std::to_string(i)});
    db_ = b.Build();
    ASSERT_TRUE(BuildFormula(db_->definition(), 1, "P1 * 10", p_));
    ASSERT_EQ(db_->definition().field(1).refers_byte(), 1);
    ASSERT_EQ(RecalculateFrom(*db_, 0, p_), 0);
    ASSERT_EQ(Texts(*db_, 1)[11], "100.0000");
  }
  std::unique_ptr<Database> db_;
  ScriptedPrompter p_;
};

TEST_F(PreviousRecordTest, EditingRecord10RecalculatesFromThereToTheEnd) {
  SetText(*db_, 5, 1, "stale");  // before the edit: must stay untouched
  SetText(*db_, 14, 1, "stale");
  RecordValues values = DecodeRecord(db_->records[10].data);
  values.Set(0, Int32Value(77));
  p_.Clear();
  auto number = StoreRecordSorted(*db_, values, 10, true, p_);
  ASSERT_EQ(number, 10u);
  std::vector<std::string> prev = Texts(*db_, 1);
  EXPECT_EQ(prev[5], "stale");
  EXPECT_EQ(prev[11], "770.0000");
  EXPECT_EQ(prev[14], "130.0000");
  EXPECT_EQ(p_.Progress().front(), "Recalculating Fields");
  for (std::uint8_t flag : db_->field_changed) EXPECT_EQ(flag, 0);  // cleared after the store
}

TEST_F(PreviousRecordTest, AMovedRecordRecalculatesFromTheSmallerPosition) {
  db_->definition().set_sort_key(0, SortKey{0, true});
  SetText(*db_, 2, 1, "stale");
  SetText(*db_, 3, 1, "stale");
  RecordValues values = DecodeRecord(db_->records[12].data);
  values.Set(0, Int32Value(3));  // sorts after the 3 at position 3
  auto number = StoreRecordSorted(*db_, values, 12, true, p_);
  ASSERT_EQ(number, 4u);
  std::vector<std::string> prev = Texts(*db_, 1);
  EXPECT_EQ(prev[2], "stale");
  EXPECT_EQ(prev[3], "stale");  // recalculated only from position 4
  EXPECT_EQ(prev[4], "30.0000");
  EXPECT_EQ(prev[5], "30.0000");
  EXPECT_EQ(prev[13], "110.0000");  // 11 now sits at 12
}

TEST_F(PreviousRecordTest, DeletingRecalculatesFromTheFirstDeletedPlace) {
  SetText(*db_, 1, 1, "stale");
  DeleteRecordsAndRecalculate(*db_, {7, 3, 7}, p_);
  ASSERT_EQ(db_->count(), 13u);
  std::vector<std::string> prev = Texts(*db_, 1);
  EXPECT_EQ(prev[1], "stale");
  EXPECT_EQ(prev[3], "20.0000");  // 4 follows 2 now
  EXPECT_EQ(prev[6], "60.0000");  // 8 follows 6
}

TEST_F(PreviousRecordTest, UnderAFilterOnlyPassingRecordsCountAndChange) {
  Condition even;
  even.in_use = 1;
  even.field = 0;
  even.lower = 0;
  even.upper = 9;
  db_->definition().set_condition(0, even);
  for (std::uint32_t i = 0; i < db_->count(); ++i) SetText(*db_, i, 1, "stale");
  ASSERT_EQ(RecalculateFrom(*db_, 5, p_), 0);
  std::vector<std::string> prev = Texts(*db_, 1);
  EXPECT_EQ(prev[4], "stale");
  EXPECT_EQ(prev[5], "40.0000");  // the previous passing record is 4, though not recalculated
  EXPECT_EQ(prev[9], "80.0000");
  EXPECT_EQ(prev[10], "stale");  // hidden by the filter, kept on purpose
}

TEST(CrossRecordDependencyTest, FollowsCalculatedOperandsToAChangedPreviousField) {
  auto db = DatabaseBuilder().Field("A", kInteger).Field("B", kInteger).Field("X", kCalculated)
                .Field("Y", kCalculated).Field("Z", kConditional).Build();
  ScriptedPrompter p;
  ASSERT_TRUE(BuildFormula(db->definition(), 2, "F2 + P1", p));  // second operand: previous A
  ASSERT_TRUE(BuildFormula(db->definition(), 3, "F3 * 2", p));
  EXPECT_FALSE(HasCrossRecordDependency(*db));
  db->field_changed[1] = 1;  // B is read from this record only
  EXPECT_FALSE(HasCrossRecordDependency(*db));
  db->field_changed[0] = 1;
  EXPECT_TRUE(HasCrossRecordDependency(*db));
  // A field operand naming slot 120 is outside the slot range: no, and no crash.
  db->definition().field(3).bytes()[12] = 121;
  db->definition().field(2).set_type(kInteger);
  EXPECT_FALSE(HasCrossRecordDependency(*db));
}

// "Neg" (0 - A) is the sort key; "Row" counts records in display order (the previous Row + 1).
class CalculatedSortKeyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    DatabaseBuilder b;
    b.Field("A", kInteger).Field("Neg", kCalculated).Field("Row", kCalculated);
    for (int a : {3, 1, 4, 1, 5}) b.Row({std::to_string(a)});
    db_ = b.Build();
    ASSERT_TRUE(BuildFormula(db_->definition(), 1, "-F1", p_));
    ASSERT_TRUE(BuildFormula(db_->definition(), 2, "P3 + 1", p_));
    db_->definition().field(1).bytes()[43] = 1;
    db_->definition().field(2).bytes()[43] = 1;
    db_->definition().set_sort_key(0, SortKey{1, true});
  }
  std::unique_ptr<Database> db_;
  ScriptedPrompter p_;
};

TEST_F(CalculatedSortKeyTest, SortsAgainAfterThePassAndRunsTheSecondPass) {
  ASSERT_EQ(RecalculateFrom(*db_, 0, p_), 0);
  EXPECT_EQ(Ints(*db_, 0), (std::vector<std::int32_t>{5, 4, 3, 1, 1}));
  EXPECT_EQ(Texts(*db_, 2), (std::vector<std::string>{"1", "2", "3", "4", "5"}));
  EXPECT_FALSE(db_->definition().resort_pending());
  EXPECT_EQ(p_.Progress(), (std::vector<std::string>{"Recalculating Fields", "Recalculating Fields...",
                                                     "Recalculating Previous Record Calculations..."}));
}

TEST_F(CalculatedSortKeyTest, AnUnreadableRecordStopsThePassAndKeepsTheResortPending) {
  db_->records[2].data.clear();
  EXPECT_EQ(RecalculateFrom(*db_, 0, p_), -1);
  EXPECT_TRUE(db_->definition().resort_pending());
  EXPECT_EQ(Texts(*db_, 1)[1], "-1");     // before the failure: done
  EXPECT_EQ(Texts(*db_, 1)[3], "");       // after it: untouched
  EXPECT_EQ(Ints(*db_, 0)[0], 3);         // no sort
  EXPECT_TRUE(db_->redraw);

  // The flag travels with the file; opening sorts and recalculates once the record is back.
  db_->records[2].data = db_->records[1].data;  // A = 1 again
  Bytes image = SerializeDatabase(*db_);
  Database reopened;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(image, reopened, bad), ReadError::None);
  EXPECT_TRUE(reopened.definition().resort_pending());
  PositionOpenedDatabase(reopened, p_);
  EXPECT_FALSE(reopened.definition().resort_pending());
  EXPECT_TRUE(reopened.loaded);
  EXPECT_EQ(reopened.visible.size(), 5u);
  EXPECT_EQ(Ints(reopened, 0), (std::vector<std::int32_t>{5, 3, 1, 1, 1}));
  EXPECT_EQ(Texts(reopened, 1), (std::vector<std::string>{"-5", "-3", "-1", "-1", "-1"}));
}

TEST_F(CalculatedSortKeyTest, APendingResortWaitsForTheRecordToReturnTo) {
  db_->definition().set_resort_pending(true);
  db_->definition().set_return_record(kSchemaRecords + 3);
  PositionOpenedDatabase(*db_, p_);
  EXPECT_EQ(db_->current, 3u);
  EXPECT_TRUE(db_->definition().resort_pending());
  EXPECT_EQ(Ints(*db_, 0), (std::vector<std::int32_t>{3, 1, 4, 1, 5}));
  db_->definition().set_return_record(kSchemaRecords + 5);  // no longer valid
  PositionOpenedDatabase(*db_, p_);
  EXPECT_FALSE(db_->definition().resort_pending());
  EXPECT_EQ(Ints(*db_, 0), (std::vector<std::int32_t>{5, 4, 3, 1, 1}));
}

TEST(ResortPendingTest, APendingResortOnAPlainKeyRunsFirst) {
  auto db = DatabaseBuilder().Field("A", kInteger).Field("C", kCalculated).Sort(0)
                .Row({"2"}).Row({"1"}).Build();
  ScriptedPrompter p;
  ASSERT_TRUE(BuildFormula(db->definition(), 1, "F1 + 1", p));
  db->definition().set_resort_pending(true);
  ASSERT_EQ(RecalculateFrom(*db, 1, p), 0);
  EXPECT_EQ(p.Progress(), (std::vector<std::string>{"Recalculating Fields", "Resorting...",
                                                    "Recalculating Fields..."}));
  EXPECT_EQ(Ints(*db, 0), (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(Texts(*db, 1), (std::vector<std::string>{"2.0000", "3.0000"}));  // from 0 after the sort
}

TEST(StoreRecordSortedTest, NewRecordsArePlacedComputedAndFiltered) {
  auto db = DatabaseBuilder().Field("Name", kText).Field("Len", kCalculated).Sort(0)
                .Row({"b"}).Row({"d"}).Build();
  ScriptedPrompter p;
  ASSERT_TRUE(BuildFormula(db->definition(), 1, "F1 + 1", p));
  Condition c;
  c.in_use = 1;
  c.field = 0;
  PutCString(c.first.data(), 40, "c");
  db->definition().set_condition(0, c);
  auto number = StoreRecordSorted(*db, ValuesFromTexts(*db, {{0, "c"}}), kNewRecord, true, p);
  ASSERT_EQ(number, 1u);
  EXPECT_EQ(Texts(*db, 0), (std::vector<std::string>{"b", "c", "d"}));
  EXPECT_EQ(Texts(*db, 1)[1], "1.0000");
  EXPECT_EQ(db->visible, (std::vector<std::uint32_t>{1}));
  EXPECT_TRUE(db->changed);
  auto unsorted = StoreRecordSorted(*db, ValuesFromTexts(*db, {{0, "a"}}), kNewRecord, false, p);
  EXPECT_EQ(unsorted, 3u);
}

TEST(StoreRecordSortedTest, AFullTableRefusesANewRecord) {
  auto db = DatabaseBuilder().Field("Name", kText).Build();
  db->records.resize(kMaxDataRecords);
  ScriptedPrompter p;
  EXPECT_FALSE(StoreRecordSorted(*db, ValuesFromTexts(*db, {{0, "x"}}), kNewRecord, true, p));
}

}  // namespace
}  // namespace qv::test
