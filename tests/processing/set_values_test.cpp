#include "processing/set_values.h"

#include <gtest/gtest.h>

#include "engine/format.h"
#include "engine/record.h"
#include "processing/filter.h"
#include "processing/filter_dialog.h"
#include "processing/views.h"
#include "security/record_header.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

std::unique_ptr<Database> Stock() {
  return DatabaseBuilder()
      .Field("Name", kText)
      .Field("Qty", kInteger)
      .Row({"bolt", "5"})
      .Row({"nut", "1"})
      .Row({"washer", "9"})
      .Build();
}

std::string Text(const Database& db, std::uint32_t n, int slot) {
  return RecordValueText(db, n, slot, FormatOptions{});
}

TEST(SetValuesTest, OnlyTheShownRecordsTakeTheValueAndTheSortFollows) {
  auto db = Stock();
  Condition c;
  c.in_use = 1;
  c.field = 1;
  c.lower = 2;
  c.upper = 100;
  db->definition().set_condition(0, c);
  db->definition().set_sort_key(0, SortKey{0, false});  // Name, reverse
  RebuildFilteredList(*db);
  db->current = 2;  // washer
  ScriptedPrompter p;
  SetValuesResult r = SetValuesOfField(*db, 0, TextValue("zinc"), p);
  EXPECT_EQ(r.changed, 2u);
  EXPECT_TRUE(db->changed);
  // The two changed records sort before "nut" in reverse order; the current record moved with them.
  EXPECT_EQ(Text(*db, 2, 0), "nut");
  EXPECT_EQ(Text(*db, 0, 0), "zinc");
  EXPECT_EQ(Text(*db, db->current, 1), "9");
  EXPECT_FALSE(p.busy());
}

TEST(SetValuesTest, EncipheredRecordsAreLeftAsTheyWere) {
  auto db = Stock();
  DatabaseDefinition& d = db->definition();
  d.set_record_header_on(true);
  for (auto& record : db->records) record.data = EncodeRecord(d, DecodeRecord(record.data));
  auto header = ReadRecordHeader(db->records[1].data);
  ASSERT_TRUE(header);
  header->set(kRecordBodyEnciphered, true);
  ASSERT_TRUE(WriteRecordHeader(db->records[1].data, *header));
  const Bytes sealed = db->records[1].data;
  RebuildFilteredList(*db);
  ScriptedPrompter p;
  SetValuesResult r = SetValuesOfField(*db, 1, UInt32Value(7), p);
  EXPECT_EQ(r.changed, 2u);
  EXPECT_EQ(r.skipped, 1u);
  EXPECT_EQ(db->records[1].data, sealed);
  EXPECT_EQ(Text(*db, 0, 1), "7");
}

TEST(SetValuesTest, AnUnusedFieldChangesNothing) {
  auto db = Stock();
  RebuildFilteredList(*db);
  ScriptedPrompter p;
  EXPECT_EQ(SetValuesOfField(*db, 5, TextValue("x"), p).changed, 0u);
  EXPECT_FALSE(db->changed);
}

TEST(ViewPartsTest, ListWidthsReachTheCurrentViewAndFiltersCanBeEditedInAView) {
  auto db = Stock();
  ScriptedPrompter p;
  EnsureDefaultView(*db);  // view 0 is the one shown
  ASSERT_TRUE(NewView(*db, p));
  StoreListWidth(*db, 1, 0);
  EXPECT_EQ(db->definition().field(1).width(), 0u);
  EXPECT_EQ(ViewFieldWidth(*db, 0, 1), 0u);
  EXPECT_NE(ViewFieldWidth(*db, 1, 1), 0u);  // other views keep theirs
  ASSERT_TRUE(ApplyView(*db, 0, p));
  EXPECT_EQ(db->definition().field(1).width(), 0u);

  FilterDialogControls controls;
  controls.conditions[0].enabled = true;
  controls.conditions[0].field = 1;
  controls.conditions[0].lower = "6";
  std::string problem;
  ASSERT_TRUE(StoreFilterDialog(*db, controls, FormatOptions{}, problem, 1));
  EXPECT_EQ(ViewCondition(*db, 1, 0).in_use, 1);
  EXPECT_EQ(ViewCondition(*db, 1, 0).lower, 6u);
  EXPECT_FALSE(FilterActive(*db));  // the current filter and list stay
  EXPECT_EQ(db->visible.size(), 3u);
  EXPECT_TRUE(FilterControlsFromDatabase(*db, FormatOptions{}, 1).conditions[0].enabled);
  ASSERT_TRUE(ApplyView(*db, 1, p));
  EXPECT_EQ(db->visible.size(), 1u);
}

}  // namespace
}  // namespace qv::test
