// Readers of values never take enciphered bytes as values: the filter leaves an enciphered
// record out, recalculation leaves it as it is and does not read it as the previous record.

#include <gtest/gtest.h>

#include "processing/filter.h"
#include "processing/formula_builder.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "security/enciphered.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

class EncipheredReadersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = DatabaseBuilder()
              .Field("A", kInteger)
              .Field("Twice", kCalculated)
              .Field("Prev", kCalculated)
              .Row({"1"})
              .Row({"2"})
              .Row({"3"})
              .Build();
    ASSERT_TRUE(BuildFormula(db_->definition(), 1, "F1 * 2", p_));
    ASSERT_TRUE(BuildFormula(db_->definition(), 2, "P1 + 100", p_));
    ASSERT_EQ(RecalculateFrom(*db_, 0, p_), 0);
    db_->definition().field(0).set_encrypted(true);
    EnableRecordHeaders(*db_);
    enciphered_ = db_->records[1].data;
    ASSERT_EQ(EncipherMarkedFields(db_->definition(), enciphered_, MakeKey("k")), 1);
  }

  std::string Value(std::uint32_t record, int slot) {
    return RecordValueText(*db_, record, slot, FormatOptions{});
  }

  std::unique_ptr<Database> db_;
  ScriptedPrompter p_;
  Bytes enciphered_;
};

TEST_F(EncipheredReadersTest, RecalculationLeavesAnEncipheredRecordAndDoesNotReadIt) {
  // Values a later edit would change: the pass must bring them back except in record 1.
  db_->records[1].data = enciphered_;
  for (std::uint32_t r : {0u, 2u})
    db_->records[r].data = ReplaceValue(db_->records[r].data, db_->definition(), 1, TextValue("0"));
  ASSERT_EQ(RecalculateFrom(*db_, 0, p_), 0);
  EXPECT_EQ(db_->records[1].data, enciphered_);
  EXPECT_EQ(Value(0, 1), "2.0000");
  EXPECT_EQ(Value(2, 1), "6.0000");
  // The record after the enciphered one has no previous values to read.
  EXPECT_EQ(Value(2, 2), "100.0000");
}

TEST_F(EncipheredReadersTest, AnActiveFilterLeavesAnEncipheredRecordOut) {
  db_->records[1].data = enciphered_;
  RebuildFilteredList(*db_);
  EXPECT_EQ(db_->visible, (std::vector<std::uint32_t>{0, 1, 2}));  // no filter: listed, marked
  EXPECT_EQ(ShownValueText(*db_, 1, 0, FormatOptions{}), kEncipheredValueText);
  EXPECT_EQ(ShownValueText(*db_, 1, 1, FormatOptions{}), Value(1, 1));  // not marked
  // "NOT A = 5" holds for every plain record, and for any ciphertext read as a number.
  Condition c;
  c.in_use = 1;
  c.field = 0;
  c.lower = c.upper = 5;
  c.join = 0x01;
  db_->definition().set_condition(0, c);
  RebuildFilteredList(*db_);
  EXPECT_EQ(db_->visible, (std::vector<std::uint32_t>{0, 2}));
  EXPECT_EQ(CountEnciphered(*db_), 1u);
}

TEST_F(EncipheredReadersTest, SortingPutsEncipheredRecordsLastWhicheverTheDirection) {
  db_->records[1].data = enciphered_;
  for (bool forward : {true, false}) {
    db_->definition().set_sort_key(0, SortKey{0, forward});
    SortDatabase(*db_, true, p_);
    EXPECT_EQ(db_->records[2].data, enciphered_) << forward;
    EXPECT_EQ(Value(0, 0), forward ? "1" : "3");
  }
}

}  // namespace
}  // namespace qv::test
