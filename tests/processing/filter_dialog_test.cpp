#include "processing/filter_dialog.h"

#include <gtest/gtest.h>

#include "engine/format.h"
#include "tests/support/builders.h"

namespace qv::test {
namespace {

TEST(FilterDialogTest, OrBitsComeFromTheirOwnControlsAndTheSecondChoiceIsLost) {
  auto db = DatabaseBuilder().Field("On", kCheckBox).Build();
  FilterDialogControls controls;
  for (auto& c : controls.conditions) {
    c.enabled = true;
    c.field = 0;
  }
  controls.or_buttons = {false, true, false, true, false};  // OR shown between 2-3 and 4-5
  std::string problem;
  ASSERT_TRUE(StoreFilterDialog(*db, controls, {}, problem)) << problem;
  std::vector<int> or_bits;
  for (int i = 0; i < kConditions; ++i) or_bits.push_back(db->definition().condition(i).join & 0x02);
  EXPECT_EQ(or_bits, (std::vector<int>{0, 0, 0, 0, 2, 0}));

  controls.or_buttons = {true, false, false, false, true};
  controls.conditions[1].not_box = true;
  controls.conditions[2].open_group = true;
  controls.conditions[3].close_group = true;
  ASSERT_TRUE(StoreFilterDialog(*db, controls, {}, problem));
  std::vector<int> join, group;
  for (int i = 0; i < kConditions; ++i) {
    join.push_back(db->definition().condition(i).join);
    group.push_back(db->definition().condition(i).group);
  }
  EXPECT_EQ(join, (std::vector<int>{0, 3, 2, 0, 0, 2}));
  EXPECT_EQ(group, (std::vector<int>{0, 0, 1, 2, 0, 0}));
}

TEST(FilterDialogTest, DisabledConditionsKeepTheirValuesAndBadLimitsStoreNothing) {
  auto db = DatabaseBuilder().Field("Qty", kInteger).Field("Day", kDate).Field("Price", kFloat)
                .Row({"5", "NO DATE", "1"}).Build();
  FormatOptions eu = EuropeanOptions();
  eu.decimal_comma = true;
  FilterDialogControls controls;
  controls.conditions[0] = {true, 0, "", "-3", "10"};
  controls.conditions[1] = {true, 1, "", "01/03/2002", ""};
  controls.conditions[2] = {true, 2, "", "0,5", "2,25"};
  std::string problem;
  ASSERT_TRUE(StoreFilterDialog(*db, controls, eu, problem)) << problem;
  Condition qty = db->definition().condition(0);
  EXPECT_EQ(static_cast<std::int32_t>(qty.lower), -3);
  EXPECT_EQ(qty.upper, 10u);
  Condition day = db->definition().condition(1);
  EXPECT_EQ(GetLE32(day.first.data()), DmyToDateNumber({1, 3, 2002}));
  EXPECT_EQ(GetLE32(day.second.data()), 0xFFFFFFFFu);  // an empty upper limit is open
  EXPECT_EQ(std::string(CStringAt(db->definition().condition(2).second.data(), 40)), "2.25");
  EXPECT_TRUE(db->visible.empty());  // the date excludes the record

  FilterDialogControls reopened = FilterControlsFromDatabase(*db, eu);
  EXPECT_EQ(reopened.conditions[1].lower, "01/03/2002");
  EXPECT_EQ(reopened.conditions[0].lower, "-3");

  controls.conditions[1].enabled = false;
  controls.conditions[1].lower = "garbage";  // not read while disabled
  ASSERT_TRUE(StoreFilterDialog(*db, controls, eu, problem));
  EXPECT_EQ(db->definition().condition(1).in_use, 0);
  EXPECT_EQ(GetLE32(db->definition().condition(1).first.data()), DmyToDateNumber({1, 3, 2002}));
  EXPECT_EQ(db->visible.size(), 1u);

  Bytes before = db->definition().bytes();
  controls.conditions[0].upper = "4294967296";
  EXPECT_FALSE(StoreFilterDialog(*db, controls, eu, problem));
  EXPECT_EQ(problem, "Filter 1: the limits for Qty are not valid Integer values");
  controls.conditions[0].upper = "10";
  controls.conditions[2].lower = "1,5x";
  EXPECT_FALSE(StoreFilterDialog(*db, controls, eu, problem));
  controls.conditions[2].lower = "1";
  controls.conditions[3].enabled = true;
  controls.conditions[3].field = 60;  // no such field
  EXPECT_FALSE(StoreFilterDialog(*db, controls, eu, problem));
  EXPECT_EQ(db->definition().bytes(), before);
}

TEST(FilterDialogTest, LimitDefaultsByFieldType) {
  auto db = DatabaseBuilder().Field("N", kInteger).Field("F", kFloat).Field("C", kCalculated)
                .Field("T", kText).Build();
  LimitDefaults n = FilterLimitDefaults(db->definition().field(0));
  EXPECT_EQ(n.lower, "0");
  EXPECT_EQ(n.upper, "65535");
  EXPECT_EQ(n.max_chars, 11);
  LimitDefaults c = FilterLimitDefaults(db->definition().field(2));
  EXPECT_EQ(c.lower, "0.0");
  EXPECT_EQ(c.upper, "99999.9999");
  EXPECT_EQ(c.max_chars, 16);
  EXPECT_EQ(FilterLimitDefaults(db->definition().field(1)).upper, "99999.9999");
  EXPECT_EQ(FilterLimitDefaults(db->definition().field(3)).upper, "");
}

}  // namespace
}  // namespace qv::test
