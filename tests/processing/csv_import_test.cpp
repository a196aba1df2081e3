#include "processing/csv_import.h"

#include <gtest/gtest.h>

#include "processing/csv_new_database.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

class CsvImportTest : public ::testing::Test {
 protected:
  ImportResult Import(Database& db, const std::string& text, CsvImportOptions o = {}) {
    return ImportCsvText(db, text, o, EuropeanOptions(), prompter_);
  }
  ScriptedPrompter prompter_;
  FixedClock clock_;
};

TEST_F(CsvImportTest, ABadRowInTheMiddleOf65000IsNamedAndNothingElseIsLost) {
  auto db =
      DatabaseBuilder().Field("Name", kText).Field("Qty", kInteger).Field("No", kUnique).Build();
  std::string text = "Name,Qty\n";
  for (int i = 0; i < 65000; ++i)
    text += i == 32500 ? "bad,abc\n" : "item" + std::to_string(i) + "," + std::to_string(i) + "\n";
  ImportResult result = Import(*db, text);
  ASSERT_TRUE(result.ok) << result.error;
  EXPECT_EQ(result.imported, 64999u);
  ASSERT_EQ(result.problems.size(), 1u);
  EXPECT_EQ(result.problems[0].line, 32502u);
  EXPECT_EQ(result.problems[0].reason, "'abc' is not a valid Integer value for Qty");
  ASSERT_EQ(db->count(), 64999u);
  EXPECT_EQ(RecordValueText(*db, 32499, 0, {}), "item32499");
  EXPECT_EQ(RecordValueText(*db, 32500, 0, {}), "item32501");
  EXPECT_EQ(RecordValueText(*db, 64998, 1, {}), "64999");
  EXPECT_EQ(RecordValueText(*db, 64998, 2, {}), "64998");  // Unique numbers given in turn
  EXPECT_EQ(db->visible.size(), 64999u);
  EXPECT_TRUE(db->changed);
}

TEST_F(CsvImportTest, AppendedRecordsTakeTheirPlaceInSortOrder) {
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Sort(1)
                .Row({"five", "5"})
                .Row({"ten", "10"})
                .Build();
  ImportResult result = Import(*db, "Qty,Name\n7,seven\n1,one\n12,twelve\n7,seven again\n");
  EXPECT_EQ(result.imported, 4u);
  EXPECT_EQ(Column(*db, 0),
            (std::vector<std::string>{"one", "five", "seven", "seven again", "ten", "twelve"}));
}

TEST_F(CsvImportTest, ColumnsWithoutAHeaderFollowTheDisplayOrder) {
  auto db =
      DatabaseBuilder().Field("Name", kText).Field("Qty", kInteger).Field("When", kDate).Build();
  db->definition().set_display_slot(0, 1);
  db->definition().set_display_slot(1, 0);
  ImportResult result = Import(*db, "3,bolt,05/03/2002\n,nut\n4,washer,,\n5,screw,,extra\n");
  EXPECT_EQ(result.imported, 3u);
  ASSERT_EQ(result.problems.size(), 1u);
  EXPECT_EQ(result.problems[0].line, 4u);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"bolt", "nut", "washer"}));
  EXPECT_EQ(Column(*db, 1), (std::vector<std::string>{"3", "0", "4"}));  // empty keeps the default
  EXPECT_EQ(Column(*db, 2, EuropeanOptions()),
            (std::vector<std::string>{"05/03/2002", "NO DATE", "NO DATE"}));
}

TEST_F(CsvImportTest, RefusesAHeaderNamingAnUnknownFieldAndReportsBadCells) {
  auto db =
      DatabaseBuilder().Field("Name", kText, 5).Field("Size", kPopUp).Items({"S", "M"}).Build();
  ImportResult refused = Import(*db, "Name,Colour\na,red\n", {.header = CsvHeader::Present});
  EXPECT_FALSE(refused.ok);
  EXPECT_EQ(refused.error,
            "the header names fields the database does not have: 'Colour'; its fields are Name, "
            "Size");
  EXPECT_EQ(db->count(), 0u);
  ImportResult result = Import(*db, "Name,Size\nabcdef,S\nab,XL\n\"open,M\n");
  EXPECT_EQ(result.imported, 0u);
  ASSERT_EQ(result.problems.size(), 3u);
  EXPECT_EQ(result.problems[0].reason, "the Name value is longer than 5 characters");
  EXPECT_EQ(result.problems[1].reason, "'XL' is not an item of the Size list");
  EXPECT_EQ(result.problems[2].line, 4u);
}

TEST_F(CsvImportTest, StopsAtTheRecordLimitAndSaysSo) {
  auto db = DatabaseBuilder().Field("Name", kText).Build();
  db->records.resize(64999, RecordSlot{Bytes{0, 0xFF, 0xFF}, 1, 0});
  ImportResult result = Import(*db, "a\nb\nc\n");
  EXPECT_EQ(result.imported, 1u);
  ASSERT_EQ(result.problems.size(), 1u);
  EXPECT_EQ(result.problems[0].line, 2u);
  EXPECT_EQ(db->count(), 65000u);
}

TEST_F(CsvImportTest, TextIsReadAsUtf8UnlessAskedOtherwise) {
  auto db = DatabaseBuilder().Field("Name", kText).Build();
  Import(*db, "Caf\xC3\xA9\n");
  Import(*db, "Caf\xE9\n", {.encoding = TextEncoding::Cp1252});
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"Caf\xE9", "Caf\xE9"}));
}

TEST(CsvTypeGuessTest, GuessesFromEveryCell) {
  FormatOptions o = EuropeanOptions();
  auto guess = [&](std::vector<std::string_view> cells) { return GuessFieldType(cells, o); };
  EXPECT_EQ(guess({"1", "-20", "300"}), kInteger);
  EXPECT_EQ(guess({"1", "2.5"}), kFloat);
  EXPECT_EQ(guess({"007", "12"}), kText);  // leading zeros are kept as text
  EXPECT_EQ(guess({"05/03/2002", "31/12/1999"}), kDate);
  EXPECT_EQ(guess({"05/03/2002", "31/02/1999"}), kText);
  EXPECT_EQ(guess({"13:05", "7:30"}), kTime);
  EXPECT_EQ(guess({"yes", "No", "TRUE"}), kCheckBox);
  const std::string long_text(300, 'a');
  EXPECT_EQ(guess({"x", long_text}), kNote);
  EXPECT_EQ(guess({}), kText);
}

TEST(CsvNewDatabaseTest, MakesFieldsFromTheHeaderAndImportsTheRows) {
  ScriptedPrompter prompter;
  FixedClock clock;
  ImportResult result;
  auto db = NewDatabaseFromCsv("Stock",
                               "Item:Text:30,Qty,Price,Bought,Counted:Check-Box,Code\n"
                               "drill,1,89.90,14/03/2024,1,007\nbolt,350,0.04,,0,12\n",
                               {}, EuropeanOptions(), clock, prompter, result);
  ASSERT_TRUE(db) << result.error;
  EXPECT_EQ(result.imported, 2u);
  const DatabaseDefinition& d = db->definition();
  EXPECT_EQ(d.field(0).type(), kText);
  EXPECT_EQ(d.field(0).length(), 30u);
  EXPECT_EQ(d.field(1).type(), kInteger);
  EXPECT_EQ(d.field(2).type(), kFloat);
  EXPECT_EQ(d.field(3).type(), kDate);
  EXPECT_EQ(d.field(4).type(), kCheckBox);
  EXPECT_EQ(d.field(5).type(), kText);
  EXPECT_EQ(d.field(6).type(), kNotUsed);
  EXPECT_EQ(Column(*db, 2), (std::vector<std::string>{"89.90", "0.04"}));  // decimals kept
  EXPECT_EQ(Column(*db, 5), (std::vector<std::string>{"007", "12"}));
}

TEST(CsvNewDatabaseTest, RefusesHeadersThatCannotMakeFields) {
  ScriptedPrompter prompter;
  FixedClock clock;
  ImportResult result;
  auto make = [&](std::string text) {
    return NewDatabaseFromCsv("X", text, {}, {}, clock, prompter, result) != nullptr;
  };
  EXPECT_FALSE(make(""));
  EXPECT_FALSE(make("A:Text:0\n"));
  EXPECT_FALSE(make("A:Not-Used\n"));
  std::string wide;
  for (int i = 0; i < 101; ++i) wide += (i ? ",F" : "F") + std::to_string(i);
  EXPECT_FALSE(make(wide + "\n"));
  EXPECT_TRUE(make("A,,C\n1,2,3\n"));  // an empty name becomes "Field N"
}

}  // namespace
}  // namespace qv::test
