#include "processing/filter.h"

#include <gtest/gtest.h>

#include "engine/format.h"
#include "tests/support/builders.h"

namespace qv::test {
namespace {

Condition Contains(int slot, std::string_view text) {
  Condition c;
  c.in_use = 1;
  c.field = static_cast<std::uint16_t>(slot);
  PutCString(c.first.data(), c.first.size(), text);
  return c;
}

Condition Range(int slot, std::int32_t low, std::int32_t high) {
  Condition c;
  c.in_use = 1;
  c.field = static_cast<std::uint16_t>(slot);
  c.lower = static_cast<std::uint32_t>(low);
  c.upper = static_cast<std::uint32_t>(high);
  return c;
}

Condition Checked(int slot, bool on, std::uint8_t join = 0, std::uint8_t group = 0) {
  Condition c = Range(slot, on ? 1 : 0, 0);
  c.join = join;
  c.group = group;
  return c;
}

std::vector<std::uint32_t> Passing(Database& db) {
  RebuildFilteredList(db);
  return db.visible;
}

// Check boxes A, B, C; record n holds the combination whose bits ABC make n.
std::unique_ptr<Database> EveryCombinationOfThreeBoxes() {
  DatabaseBuilder b;
  b.Field("A", kCheckBox).Field("B", kCheckBox).Field("C", kCheckBox);
  for (int bits = 0; bits < 8; ++bits)
    b.Row({bits & 4 ? "1" : "0", bits & 2 ? "1" : "0", bits & 1 ? "1" : "0"});
  return b.Build();
}

TEST(FilterTest, NoConditionPassesEveryRecordWithData) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Row({"b"}).Build();
  db->records.push_back({});  // an entry without data
  EXPECT_FALSE(FilterActive(*db));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0, 1}));
  EXPECT_FALSE(RecordPassesFilter(*db, 2));
  EXPECT_FALSE(RecordPassesFilter(*db, 99));
}

TEST(FilterTest, MustContainIgnoresCaseAndEmptyTextWantsEmptyValue) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"xaby"}).Row({""}).Row({"ba"}).Build();
  db->definition().set_condition(0, Contains(0, "AB"));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0}));
  db->definition().set_condition(0, Contains(0, ""));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{1}));
}

TEST(FilterTest, IntegerLimitsAreSignedAndUniqueLimitsUnsigned) {
  auto db = DatabaseBuilder()
                .Field("Qty", kInteger)
                .Field("No", kUnique)
                .Row({"-1", "70000"})
                .Row({"65535", "65535"})
                .Row({"0", "0"})
                .Build();
  db->definition().set_condition(0, Range(0, 0, 65535));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{1, 2}));
  db->definition().set_condition(0, Range(1, 0, 65535));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{1, 2}));
}

TEST(FilterTest, ConditionsJoinLeftToRightWithoutPrecedence) {
  auto db = EveryCombinationOfThreeBoxes();
  db->definition().set_condition(0, Checked(0, true));
  db->definition().set_condition(1, Checked(1, true, 0x02));  // OR
  db->definition().set_condition(2, Checked(2, true));        // AND
  // (A OR B) AND C, not A OR (B AND C): record 0b100 fails.
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{3, 5, 7}));
}

TEST(FilterTest, EveryMixOfNotAndOrReadsLeftToRight) {
  // A, B and C tested in conditions 1, 3 and 6, so unused ones lie between them.
  auto db = EveryCombinationOfThreeBoxes();
  const int places[3] = {0, 2, 5};
  for (int joins = 0; joins < 64; ++joins) {  // a NOT and an OR bit for each condition
    for (int k = 0; k < 3; ++k) {
      auto join = static_cast<std::uint8_t>((joins >> (2 * k)) & 3);
      db->definition().set_condition(places[k], Checked(k, true, join));
    }
    std::vector<std::uint32_t> expected;
    for (std::uint32_t bits = 0; bits < 8; ++bits) {
      bool acc = false;
      for (int k = 0; k < 3; ++k) {
        bool test = ((bits >> (2 - k)) & 1) != ((joins >> (2 * k)) & 1);  // NOT inverts
        bool join_or = (joins >> (2 * k)) & 2;
        acc = k == 0 ? test : join_or ? (acc || test) : (acc && test);
      }
      if (acc) expected.push_back(bits);
    }
    EXPECT_EQ(Passing(*db), expected) << "joins " << joins;
  }
}

TEST(FilterTest, CloseBitEndsTheGroupBeforeItsCondition) {
  auto db = EveryCombinationOfThreeBoxes();
  db->definition().set_condition(0, Checked(0, true));
  db->definition().set_condition(1, Checked(1, true, 0, 0x01));     // AND (B
  db->definition().set_condition(2, Checked(2, true, 0x02, 0x02));  // ) OR C
  // The group holds B alone: (A AND B) OR C. Grouping B with C would reject 0b001.
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{1, 3, 5, 6, 7}));

  int last = -1;
  EXPECT_EQ(EvaluateConditions(*db, 1, last, db->records[6].data, false, true), 1);
  EXPECT_EQ(last, 1);  // the group stopped before condition 2
}

TEST(FilterTest, NotOnAGroupsFirstConditionInvertsOnlyThatCondition) {
  auto db = EveryCombinationOfThreeBoxes();
  db->definition().set_condition(0, Checked(0, true));
  db->definition().set_condition(1, Checked(1, true, 0x01, 0x01));  // AND (NOT B
  db->definition().set_condition(2, Checked(2, true, 0x00, 0x00));  //  AND C)
  // A AND ((NOT B) AND C)
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{5}));
}

TEST(FilterTest, UnusableFieldsAndShortValuesFail) {
  auto db = DatabaseBuilder().Field("Name", kText).Field("Link", kLinked).Row({"x"}).Build();
  Condition far = Contains(250, "x");
  db->definition().set_condition(0, far);
  EXPECT_EQ(TestCondition(*db, 0, db->records[0].data), 0);
  EXPECT_TRUE(Passing(*db).empty());

  // A Linked value shorter than 25 bytes fails even an empty "Must Contain".
  RecordValues values = DecodeRecord(db->records[0].data);
  values.Set(1, Bytes(10, 0));
  db->records[0].data = EncodeRecord(db->definition(), values);
  db->definition().set_condition(0, Contains(1, ""));
  EXPECT_EQ(TestCondition(*db, 0, db->records[0].data), 0);
  Bytes filled(24, 7);
  for (char c : std::string("Acme Ltd")) filled.push_back(static_cast<std::uint8_t>(c));
  filled.push_back(0);
  values.Set(1, filled);
  db->records[0].data = EncodeRecord(db->definition(), values);
  db->definition().set_condition(0, Contains(1, "ACME"));
  EXPECT_EQ(TestCondition(*db, 0, db->records[0].data), 1);
  // Slot 5 lies after the end marker: it cannot be located, so the condition fails.
  db->definition().set_condition(0, Contains(5, "zzz"));
  EXPECT_EQ(TestCondition(*db, 0, db->records[0].data), 0);
  // With a used slot after it, the unused slot 2 is a located empty entry: always satisfied.
  db->definition().field(3).set_type(kText);
  db->records[0].data = EncodeRecord(db->definition(), values);
  db->definition().set_condition(0, Contains(2, "zzz"));
  EXPECT_EQ(TestCondition(*db, 0, db->records[0].data), 1);
  EXPECT_EQ(TestCondition(*db, 7, db->records[0].data), 0);  // no such condition
}

TEST(FilterTest, DateTimePopUpAndFloatRanges) {
  FormatOptions eu = EuropeanOptions();
  auto db = DatabaseBuilder()
                .Options(eu)
                .Field("Day", kDate)
                .Field("At", kTime)
                .Field("Colour", kPopUp)
                .Items({"Red", "Green"})
                .Field("Price", kFloat)
                .Row({"01/03/2002", "09:30", "Red", "2.5"})
                .Row({"31/03/2002", "18:00", "Green", "10"})
                .Build();
  Condition dates;
  dates.in_use = 1;
  dates.field = 0;
  Bytes low = *ParseValue(db->definition().field(0), {}, "01/03/2002", eu);
  Bytes high = *ParseValue(db->definition().field(0), {}, "30/03/2002", eu);
  std::copy(low.begin(), low.end(), dates.first.begin());
  std::copy(high.begin(), high.end(), dates.second.begin());
  db->definition().set_condition(0, dates);
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0}));  // both limits included

  Condition times;
  times.in_use = 1;
  times.field = 1;
  Bytes from = TimeValue(9, 30, 0), to = TimeValue(17, 0, 0);
  std::copy(from.begin(), from.begin() + 3, times.first.begin());
  std::copy(to.begin(), to.begin() + 3, times.second.begin());
  db->definition().set_condition(0, times);
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0}));

  db->definition().set_condition(0, Contains(2, "Green"));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{1}));
  db->definition().set_condition(0, Contains(2, "green"));  // Pop-Ups match bytes exactly
  EXPECT_TRUE(Passing(*db).empty());

  Condition price;
  price.in_use = 1;
  price.field = 3;
  PutCString(price.first.data(), 40, "2.5");
  PutCString(price.second.data(), 40, "9.99");
  db->definition().set_condition(0, price);
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0}));
}

TEST(FilterTest, LinkedRestrictionComesBeforeTheConditions) {
  auto db = DatabaseBuilder()
                .Field("Key", kLink)
                .Field("Name", kText)
                .Row({"7", "apple"})
                .Row({"8", "apple"})
                .Row({"7", "pear"})
                .Build();
  db->restriction_field = 0;
  db->restriction_key = 7;
  EXPECT_TRUE(FilterActive(*db));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0, 2}));
  db->definition().set_condition(0, Contains(1, "apple"));
  EXPECT_EQ(Passing(*db), (std::vector<std::uint32_t>{0}));  // record 2 matches the key only
}

TEST(FilterTest, SteppingOverPassingRecords) {
  auto db = DatabaseBuilder()
                .Field("On", kCheckBox)
                .Row({"1"})
                .Row({"0"})
                .Row({"1"})
                .Row({"0"})
                .Row({"1"})
                .Build();
  db->definition().set_condition(0, Checked(0, true));
  EXPECT_EQ(StepPassingRecords(*db, -1, 1), 0);  // first
  EXPECT_EQ(StepPassingRecords(*db, 5, -1), 4);  // last
  EXPECT_EQ(StepPassingRecords(*db, 0, 2), 4);
  EXPECT_EQ(StepPassingRecords(*db, 4, -2), 0);
  EXPECT_EQ(StepPassingRecords(*db, 4, 1), -1);
  EXPECT_EQ(StepPassingRecords(*db, 0, -1), -1);
  db->definition().set_condition(0, Checked(0, false));
  EXPECT_EQ(StepPassingRecords(*db, 0, 1), 1);
}

}  // namespace
}  // namespace qv::test
