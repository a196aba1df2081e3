#include "processing/conditional.h"

#include <gtest/gtest.h>

#include "processing/formula.h"
#include "tests/processing/fixtures.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

TEST(ConditionalTest, ThenTextOrElseFieldByTheTest) {
  auto db = DatabaseBuilder().Options(EuropeanOptions()).Field("Qty", kInteger).Field("Name", kText)
                .Field("When", kDate).Field("State", kConditional)
                .Row({"3", "bolt", "05/03/2002"}).Row({"12", "nut", "NO DATE"}).Build();
  ConditionalSettings s;
  s.test_field = 0;
  s.op = kCondLess;
  s.value = "5";
  s.then_text = "Reorder";
  s.else_field = 1;
  s.Write(db->definition().field(3));
  ConditionalSettings back = ConditionalSettings::Read(db->definition().field(3));
  EXPECT_EQ(back.test_field, 0);
  EXPECT_EQ(back.then_field, -1);
  EXPECT_EQ(back.else_field, 1);
  EXPECT_EQ(back.then_text, "Reorder");
  EXPECT_EQ(ConditionalDescription(db->definition(), 3), "if Qty < \"5\" then \"Reorder\" else Name");

  ScriptedPrompter p;
  for (auto& r : db->records) ComputeRecordFormulas(*db, db->definition(), r.data.edit(), {}, p);
  EXPECT_EQ(Texts(*db, 3), (std::vector<std::string>{"Reorder", "nut"}));
  EXPECT_TRUE(db->field_changed[3]);

  s.test_field = 2;  // dates compare as day numbers; an empty date is empty
  s.op = kCondIsEmpty;
  s.else_field = 2;
  s.Write(db->definition().field(3));
  for (auto& r : db->records) ComputeRecordFormulas(*db, db->definition(), r.data.edit(), {}, p);
  EXPECT_EQ(Texts(*db, 3), (std::vector<std::string>{"2002-03-05", "Reorder"}));

  s.test_field = 1;
  s.op = kCondContains;
  s.value = "OL";
  s.else_field = -1;
  s.else_text = "a very long else text that is cut";
  s.Write(db->definition().field(3));
  for (auto& r : db->records) ComputeRecordFormulas(*db, db->definition(), r.data.edit(), {}, p);
  EXPECT_EQ(Texts(*db, 3), (std::vector<std::string>{"Reorder", "a very long els"}));
}

TEST(ConditionalTest, ADamagedDefinitionTakesTheElseBranch) {
  auto db = DatabaseBuilder().Field("Qty", kInteger).Field("State", kConditional).Row({"1"}).Build();
  std::uint8_t* f = db->definition().field(1).bytes();
  f[24] = 250;  // test field
  f[25] = 77;   // operator
  f[27] = 0xFF;
  PutCString(f + 86, 16, "fallback");
  ScriptedPrompter p;
  ComputeRecordFormulas(*db, db->definition(), db->records[0].data.edit(), {}, p);
  EXPECT_EQ(Texts(*db, 1), (std::vector<std::string>{"fallback"}));
  f[24] = 0;  // a real field, an unknown operator: still false
  ComputeRecordFormulas(*db, db->definition(), db->records[0].data.edit(), {}, p);
  EXPECT_EQ(Texts(*db, 1), (std::vector<std::string>{"fallback"}));
  EXPECT_EQ(ConditionalOperatorByText("IS NOT EMPTY"), kCondIsNotEmpty);
  EXPECT_FALSE(ConditionalOperatorByText("~"));
}

}  // namespace
}  // namespace qv::test
