// CSV files as people have them: headers with mistakes, other encodings, the usual line ends,
// and databases made from files with empty cells and long names.

#include <gtest/gtest.h>

#include "processing/csv_export.h"
#include "processing/csv_import.h"
#include "processing/csv_new_database.h"
#include "processing/csv_reader.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

class CsvInputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = DatabaseBuilder().Field("Name", kText).Field("Qty", kInteger).Build();
  }
  ImportResult Import(const std::string& text, CsvImportOptions o = {}) {
    return ImportCsvText(*db_, text, o, EuropeanOptions(), prompter_);
  }
  std::unique_ptr<Database> Make(const std::string& text, CsvImportOptions o = {}) {
    auto db = NewDatabaseFromCsv("New", text, o, EuropeanOptions(), clock_, prompter_, made_);
    EXPECT_TRUE(db) << made_.error;
    return db;
  }
  std::unique_ptr<Database> db_;
  ScriptedPrompter prompter_;
  FixedClock clock_;
  ImportResult made_;
};

TEST_F(CsvInputTest, AMisspelledHeaderIsRefusedWithTheFieldsThereAre) {
  ImportResult typo = Import("Nme,Qty\nbolt,3\n");
  EXPECT_FALSE(typo.ok);
  EXPECT_EQ(typo.error,
            "the header names fields the database does not have: 'Nme'; its fields are Name, Qty");
  ImportResult extra = Import("Name,Qty,Colour,Size\nbolt,3,red,M\n");
  EXPECT_FALSE(extra.ok);
  EXPECT_NE(extra.error.find("'Colour', 'Size'"), std::string::npos);
  ImportResult shaped = Import("Item:Text\nbolt\n");  // the NAME:TYPE shape marks a header
  EXPECT_FALSE(shaped.ok);
  EXPECT_EQ(db_->count(), 0u);
}

TEST_F(CsvInputTest, AHeaderMapsByNameAndDataAloneByPosition) {
  ImportResult named = Import("\n\nQty,Name\n3,bolt\n");  // blank lines before the header
  ASSERT_TRUE(named.ok) << named.error;
  ImportResult plain = Import("nut,4\n");
  ASSERT_TRUE(plain.ok) << plain.error;
  EXPECT_EQ(Column(*db_, 0), (std::vector<std::string>{"bolt", "nut"}));
  EXPECT_EQ(Column(*db_, 1), (std::vector<std::string>{"3", "4"}));
}

TEST_F(CsvInputTest, TextNotStoredExactlyIsReportedWithLineAndField) {
  ImportResult latin1 = Import(
      "Name,Qty\n\xE9t\xE9 caf\xE9,1\nok,2\n\xC5\x81\xC3\xB3"
      "d\xC5\xBA,3\n");
  EXPECT_EQ(latin1.imported, 3u);
  ASSERT_EQ(latin1.text.losses().size(), 2u);
  EXPECT_EQ(latin1.text.losses()[0].place, "line 2, Name");
  EXPECT_EQ(latin1.text.losses()[0].given, "\\xE9t\\xE9 caf\\xE9");
  EXPECT_TRUE(latin1.text.losses()[0].invalid_utf8);
  EXPECT_EQ(latin1.text.Messages()[1],
            "line 4, Name: \"\xC5\x81\xC3\xB3"
            "d\xC5\xBA\" cannot be stored exactly and becomes \"?\xC3\xB3"
            "d?\"");
  EXPECT_EQ(Column(*db_, 0)[0], "?t? caf?");  // the letters after a bad byte are kept
  ImportResult nul =
      Import(std::string("Name,Qty\na\0b,1\n", 15), {.encoding = TextEncoding::Cp1252});
  ASSERT_EQ(nul.text.losses().size(), 1u);
  EXPECT_EQ(Column(*db_, 0)[3], "a?b");
}

TEST_F(CsvInputTest, LineEndsOfEveryKindAndQuotedBreaks) {
  for (const char* text : {"a,1\nb,2\nc,3", "a,1\r\nb,2\r\nc,3\r\n", "a,1\rb,2\rc,3\r",
                           "\xEF\xBB\xBF"
                           "a,1\n\nb,2\r\n\r\nc,3\n"}) {
    auto rows = ReadCsv(text, ',');
    std::vector<std::string> names;
    for (const CsvRow& row : rows)
      if (row.cells.size() == 2) names.push_back(row.cells[0]);
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "c"})) << text;
  }
  auto rows = ReadCsv("\"x\ry\",1\r\"p\r\nq\",2\rz,3", ',');
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].cells[0], "x\ry");
  EXPECT_EQ(rows[1].cells[0], "p\r\nq");
  EXPECT_EQ(rows[1].line, 3u);
  EXPECT_EQ(rows[2].line, 5u);
  EXPECT_EQ(ReadCsv("a,\"b\"\r\nc,d", ',')[0].problem, "");
}

TEST_F(CsvInputTest, AQuotedLineBreakSurvivesImportAndExport) {
  ASSERT_TRUE(Import("Name,Qty\n\"two\nlines, \"\"quoted\"\"\",1\n\"cr\r\nlf\",2\n").ok);
  TempFolder folder;
  CsvExportOptions o;
  o.header = true;
  ASSERT_EQ(ExportCsv(*db_, o, folder.Path("out.csv"), EuropeanOptions(), prompter_), 1);
  EXPECT_EQ(Slurp(folder.Path("out.csv")),
            "Name,Qty\n\"two\nlines, \"\"quoted\"\"\",1\n\"cr\r\nlf\",2\n");
}

TEST_F(CsvInputTest, EmptyCellsAreNeverTurnedIntoNumbers) {
  auto db = Make("Qty,Price,Done,When,Count\n1,2.5,yes,05/03/2002,7\n,,,,8\n3,,no,,9\n");
  ASSERT_TRUE(db);
  const DatabaseDefinition& d = db->definition();
  EXPECT_EQ(d.field(0).type(), kFloat);  // Integer cannot hold an empty cell
  EXPECT_EQ(d.field(1).type(), kFloat);
  EXPECT_EQ(d.field(2).type(), kText);     // nor can a Check-Box
  EXPECT_EQ(d.field(3).type(), kDate);     // the empty date
  EXPECT_EQ(d.field(4).type(), kInteger);  // no empty cells
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"1", "", "3"}));
  EXPECT_EQ(Column(*db, 2), (std::vector<std::string>{"yes", "", "no"}));
  EXPECT_EQ(made_.notes[0], "Qty: Float (guessed; Integer cannot hold its empty cells)");
  EXPECT_EQ(made_.notes[2], "Done: Text (guessed; Check-Box cannot hold its empty cells)");
  EXPECT_EQ(made_.notes[4], "Count: Integer (guessed)");
}

TEST_F(CsvInputTest, LongAndRepeatedHeaderNamesAreShortenedAndMadeUnique) {
  auto db = Make("A name longer than twenty,A name longer than twenty-one,a,A\r1,2,3,4\r");
  ASSERT_TRUE(db);
  const DatabaseDefinition& d = db->definition();
  EXPECT_EQ(d.field(0).name(), "A name longer than");
  EXPECT_EQ(d.field(1).name(), "A name longer tha~2");
  EXPECT_EQ(d.field(2).name(), "a");
  EXPECT_EQ(d.field(3).name(), "A~2");
  EXPECT_EQ(
      made_.notes[2],
      "the column 'A name longer than twenty-one' is the field 'A name longer tha~2' (a field "
      "name is at most 19 characters)");
  EXPECT_EQ(Column(*db, 3), std::vector<std::string>{"4"});
}

TEST_F(CsvInputTest, AWindows1252FileMakesADatabase) {
  auto db = Make("Caf\xE9,Qty\n\xE9t\xE9,1\n", {.encoding = TextEncoding::Cp1252});
  ASSERT_TRUE(db);
  EXPECT_EQ(db->definition().field(0).name(), "Caf\xE9");
  EXPECT_EQ(Column(*db, 0), std::vector<std::string>{"\xE9t\xE9"});
  EXPECT_TRUE(made_.text.exact());
}

}  // namespace
}  // namespace qv::test
