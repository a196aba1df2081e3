#include "processing/find.h"

#include <gtest/gtest.h>

#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

class FindTest : public ::testing::Test {
 protected:
  std::optional<FindMatch> Find(const Database& db, FindSettings s, int start = 0, int field = 0) {
    return FindRecord(db, s, start, field, true, EuropeanOptions(), prompter_);
  }
  static FindSettings Text(std::string text, bool begins = false, bool exact_case = false) {
    FindSettings s;
    s.text = std::move(text);
    s.begins_with = begins;
    s.case_sensitive = exact_case;
    return s;
  }
  ScriptedPrompter prompter_;
};

TEST_F(FindTest, DigitsMatchInsideIntegersUnlessTheyMustBegin) {
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Row({"none", "7"})
                .Row({"bolt", "112"})
                .Build();
  auto found = Find(*db, Text("12"));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->position, 1);
  EXPECT_EQ(found->slot, 1);
  EXPECT_EQ(found->column, 1);
  EXPECT_FALSE(Find(*db, Text("12", true)));
  EXPECT_EQ(prompter_.Messages(), std::vector<std::string>{"Not Found in Database!"});
}

TEST_F(FindTest, IntegerSearchTextMustBeAllDigits) {
  auto db = DatabaseBuilder().Field("Qty", kInteger).Row({"1"}).Row({"-1"}).Row({"10"}).Build();
  EXPECT_FALSE(Find(*db, Text("1x")));
  EXPECT_FALSE(Find(*db, Text("-1")));  // the sign is not a digit
  EXPECT_EQ(Find(*db, Text("1"), 1)->position, 1);
}

TEST_F(FindTest, CheckBoxMatchesOneOnlyWhenChecked) {
  auto db = DatabaseBuilder().Field("Done", kCheckBox).Row({"0"}).Row({"1"}).Build();
  EXPECT_EQ(Find(*db, Text("1"))->position, 1);
  EXPECT_EQ(Find(*db, Text("0"))->position, 0);
  EXPECT_FALSE(Find(*db, Text("yes")));
}

TEST_F(FindTest, StartingPastTheLastRecordReportsAtOnce) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Build();
  EXPECT_FALSE(Find(*db, Text("a"), 1));
  EXPECT_EQ(prompter_.Messages(), std::vector<std::string>{"Not Found in Database!"});
  EXPECT_EQ(Find(*db, Text("a"), -5)->position, 0);  // a negative start counts as 0
  EXPECT_FALSE(FindRecord(*db, Text("zz"), 0, 0, false, {}, prompter_));
  EXPECT_EQ(prompter_.Messages().size(), 1u);  // silent without the report flag
}

TEST_F(FindTest, CaseIsIgnoredUnlessAsked) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"Smith"}).Row({"J\xC4GER"}).Build();
  EXPECT_TRUE(Find(*db, Text("smith")));
  EXPECT_FALSE(Find(*db, Text("smith", false, true)));
  EXPECT_TRUE(Find(*db, Text("Smi", true, true)));
  EXPECT_EQ(Find(*db, Text("j\xE4g"))->position, 1);  // accented capitals of the code page too
}

TEST_F(FindTest, DateAndTimeTextsAreNotLowerCased) {
  auto db = DatabaseBuilder().Field("When", kDate).Field("At", kTime).Row({"", ""}).Build();
  EXPECT_FALSE(Find(*db, Text("No Date")));
  EXPECT_EQ(Find(*db, Text("No Date", false, true))->slot, 0);
  EXPECT_EQ(Find(*db, Text("No Time", false, true))->slot, 1);
}

TEST_F(FindTest, FindAgainGoesOnInTheSameRecordThenTheNext) {
  auto db = DatabaseBuilder()
                .Field("A", kText)
                .Field("B", kText)
                .Row({"red", "dark red"})
                .Row({"blue", "red"})
                .Build();
  FindSettings s = Text("red");
  auto first = Find(*db, s);
  ASSERT_TRUE(first);
  auto second = FindAgain(*db, s, *first, true, {}, prompter_);
  ASSERT_TRUE(second);
  EXPECT_EQ(std::pair(second->position, second->slot), std::pair(0, 1));
  auto third = FindAgain(*db, s, *second, true, {}, prompter_);
  ASSERT_TRUE(third);
  EXPECT_EQ(std::pair(third->position, third->slot), std::pair(1, 1));
  EXPECT_FALSE(FindAgain(*db, s, *third, true, {}, prompter_));
  s.field = 1;  // one field: Find Again moves to the next record
  EXPECT_EQ(FindAgain(*db, s, FindMatch{0, 1, 1}, true, {}, prompter_)->position, 1);
}

TEST_F(FindTest, HiddenFieldsAndFilteredRecordsNeverMatch) {
  auto db = DatabaseBuilder()
                .Field("Secret", kText)
                .Field("Qty", kInteger)
                .Row({"gold", "1"})
                .Row({"gold", "5"})
                .Build();
  FieldHidden hide_secret = [](const Database&, int slot) { return slot == 0; };
  EXPECT_FALSE(FindRecord(*db, Text("gold"), 0, 0, false, {}, prompter_, hide_secret));
  Condition only_five;
  only_five.in_use = 1;
  only_five.field = 1;
  only_five.lower = 5;
  only_five.upper = 5;
  db->definition().set_condition(0, only_five);
  EXPECT_EQ(Find(*db, Text("gold"))->position, 1);
}

TEST_F(FindTest, ColumnCountsOnlyShownColumnsInDisplayOrder) {
  auto db = DatabaseBuilder()
                .Field("A", kText)
                .Field("Pic", kImage)
                .Field("B", kText)
                .Field("C", kText)
                .Build();
  db->definition().field(2).set_width(0);  // hidden column
  db->definition().set_display_slot(0, 3);
  db->definition().set_display_slot(3, 0);
  EXPECT_EQ(FieldColumn(db->definition(), 3), 0);
  EXPECT_EQ(FieldColumn(db->definition(), 0), 1);
  EXPECT_EQ(FieldColumn(db->definition(), 1), -1);
  EXPECT_EQ(FieldColumn(db->definition(), 2), -1);
}

TEST_F(FindTest, SettingsAreKeptInTheDatabaseDefinition) {
  auto db = DatabaseBuilder().Field("A", kText).Build();
  FindSettings fresh = LoadFindSettings(db->definition());
  EXPECT_EQ(fresh.field, -1);
  EXPECT_FALSE(fresh.case_sensitive);
  FindSettings s{std::string(50, 'x'), 7, true, true};
  StoreFindSettings(db->definition(), s);
  const std::uint8_t* d = db->definition().data();
  EXPECT_EQ(d[12230], 7);
  EXPECT_EQ(d[12231], 1);
  EXPECT_EQ(d[12267], 1);
  EXPECT_EQ(d[12232 + 34], 0);  // 34 characters and the terminator
  FindSettings back = LoadFindSettings(db->definition());
  EXPECT_EQ(back.text, std::string(34, 'x'));
  EXPECT_EQ(back.field, 7);
  s.field = -1;
  StoreFindSettings(db->definition(), s);
  EXPECT_EQ(d[12230], 255);
}

}  // namespace
}  // namespace qv::test
