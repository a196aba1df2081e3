#include "processing/views.h"

#include <gtest/gtest.h>

#include <cstring>

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

TEST(ViewsTest, OpeningTheViewsPageMakesADefaultViewOfTheCurrentSettings) {
  auto db = Stock();
  db->definition().set_sort_key(0, SortKey{1, false});
  db->definition().field(1).set_width(77);
  db->definition().field(1).bytes()[5] = 0;
  EXPECT_EQ(ViewCount(*db), 0);
  EXPECT_TRUE(EnsureDefaultView(*db));
  EXPECT_FALSE(EnsureDefaultView(*db));
  EXPECT_EQ(ViewNames(*db), std::vector<std::string>{"Default View"});
  EXPECT_EQ(CurrentView(*db), 0);
  const std::uint8_t* block = db->definition().view_block(0);
  const std::uint8_t* d = db->definition().data();
  EXPECT_EQ(std::memcmp(block + view::kFieldOrder, d + def::kDisplayOrder, 100), 0);
  EXPECT_EQ(std::memcmp(block + view::kSortKeys, d + def::kSort, 6), 0);
  EXPECT_EQ(std::memcmp(block + view::kFilter, d + def::kFilter, 564), 0);
  EXPECT_EQ(GetBE32(block + view::kListSetting), 1u);
  const std::uint8_t* qty = block + view::kFieldSettings + 4;  // slot 1: width, bytes 4 and 5
  EXPECT_EQ(GetBE16(qty), 77);
  EXPECT_EQ(qty[2], 0);
  EXPECT_EQ(qty[3], 0);
  EXPECT_EQ(block[view::kFieldSettings + 3], 1);  // slot 0 is shown
  EXPECT_EQ(GetBE32(d + 35838), 1u);
}

TEST(ViewsTest, TheTwentyFirstNewViewIsRefusedButTheTwentyFirstCopyIsSilent) {
  auto db = Stock();
  ScriptedPrompter prompter;
  EnsureDefaultView(*db);
  for (int i = 1; i < 20; ++i) ASSERT_EQ(NewView(*db, prompter), i);
  EXPECT_EQ(ViewName(*db, 19), "New View");
  EXPECT_EQ(db->definition().view_block(19)[view::kFlags], 0);
  EXPECT_TRUE(prompter.Messages().empty());
  EXPECT_FALSE(NewView(*db, prompter));
  EXPECT_EQ(prompter.Messages(),
            std::vector<std::string>{
                "Sorry, you have reached the maximum number of Views for this database."});
  EXPECT_EQ(prompter.calls().back().caption, "ERROR");
  EXPECT_FALSE(CopyView(*db, 0));
  EXPECT_EQ(prompter.Messages().size(), 1u);
  EXPECT_EQ(ViewCount(*db), 20);
}

TEST(ViewsTest, CopyIsByteForByteIncludingTheName) {
  auto db = Stock();
  EnsureDefaultView(*db);
  EXPECT_FALSE(CopyView(*db, 1));  // nothing selected there
  ASSERT_EQ(CopyView(*db, 0), 1);
  EXPECT_EQ(std::memcmp(db->definition().view_block(0), db->definition().view_block(1), kViewSize),
            0);
}

TEST(ViewsTest, DeletingViewZeroOfThreeLeavesTheOtherTwoInOrder) {
  auto db = Stock();
  ScriptedPrompter prompter;
  EnsureDefaultView(*db);
  NewView(*db, prompter);
  NewView(*db, prompter);
  PutCString(db->definition().view_block(1), 32, "Cheap");
  PutCString(db->definition().view_block(2), 32, "Dear");
  PutCString(db->definition().view_block(19), 32, "stale");
  prompter.Queue(Answer::No);
  EXPECT_FALSE(DeleteView(*db, 0, prompter));
  EXPECT_EQ(ViewCount(*db), 3);
  prompter.Queue(Answer::Yes);
  EXPECT_TRUE(DeleteView(*db, 0, prompter));
  EXPECT_EQ(ViewNames(*db), (std::vector<std::string>{"Cheap", "Dear"}));
  EXPECT_EQ(ViewName(*db, 19), "");
  EXPECT_EQ(prompter.Questions(),
            (std::vector<std::string>(2, "Are you sure you want to delete this view?")));
  EXPECT_FALSE(DeleteView(*db, 2, prompter));  // no such view: nothing asked
  EXPECT_EQ(prompter.Questions().size(), 2u);
}

TEST(ViewsTest, ApplyingAViewRestoresItsSettingsSortsAndFilters) {
  auto db = Stock();
  ScriptedPrompter prompter;
  EnsureDefaultView(*db);
  // A second view: Qty descending, only Qty of 2 and more, Qty shown first and wider.
  int v = *NewView(*db, prompter);
  std::uint8_t* block = db->definition().view_block(v);
  block[view::kSortKeys] = 1;
  block[view::kSortKeys + 1] = 0;
  Condition c;
  c.in_use = 1;
  c.field = 1;
  c.lower = 2;
  c.upper = 100;
  c.Write(block + view::kFilter);
  block[view::kFieldOrder] = 1;
  block[view::kFieldOrder + 1] = 0;
  PutBE16(block + view::kFieldSettings + 4, 120);
  db->current = 0;  // bolt
  ASSERT_TRUE(ApplyView(*db, v, prompter));
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"washer", "bolt", "nut"}));
  EXPECT_EQ(db->visible, (std::vector<std::uint32_t>{0, 1}));
  EXPECT_EQ(db->current, 1u);  // still bolt
  EXPECT_EQ(db->definition().display_slot(0), 1);
  EXPECT_EQ(db->definition().field(1).width(), 120u);
  EXPECT_EQ(CurrentView(*db), v);
  EXPECT_TRUE(db->changed);
  // Back to the default view: everything shown, the table left in its sorted order.
  ASSERT_TRUE(ApplyView(*db, 0, prompter));
  EXPECT_EQ(db->visible.size(), 3u);
  EXPECT_EQ(db->definition().display_slot(0), 0);
  EXPECT_EQ(CurrentView(*db), 0);
  EXPECT_FALSE(ApplyView(*db, 5, prompter));
}

TEST(ViewsTest, AViewWithABrokenFieldOrderIsRepairedWhenApplied) {
  auto db = Stock();
  ScriptedPrompter prompter;
  EnsureDefaultView(*db);
  std::memset(db->definition().view_block(0) + view::kFieldOrder, 7, 100);
  ApplyView(*db, 0, prompter);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(db->definition().display_slot(i), i);
  db->definition().set_view_count(200);  // a damaged count never reaches past the 20 blocks
  EXPECT_EQ(ViewCount(*db), 20);
}

}  // namespace
}  // namespace qv::test
