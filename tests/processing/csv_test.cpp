#include <gtest/gtest.h>

#include <cstdio>

#include "processing/csv_export.h"
#include "processing/csv_import.h"
#include "processing/csv_reader.h"
#include "tests/support/temp_files.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

TEST(CsvQuoteTest, QuotesOnlyWhatNeedsIt) {
  EXPECT_EQ(CsvQuote("Smith, \"Jr\"", false), "\"Smith, \"\"Jr\"\"\"");
  EXPECT_EQ(CsvQuote("plain", false), "plain");
  EXPECT_EQ(CsvQuote("plain", true), "\"plain\"");
  EXPECT_EQ(CsvQuote("", false), "");
  EXPECT_EQ(CsvQuote("", true), "\"\"");
  EXPECT_EQ(CsvQuote("two\nlines", false), "\"two\nlines\"");
  EXPECT_EQ(CsvQuote("cr\rhere", false), "\"cr\rhere\"");
  EXPECT_EQ(CsvQuote("a;b", false, ';'), "\"a;b\"");
  EXPECT_EQ(CsvQuote("a,b", false, ';'), "a,b");  // only the chosen separator counts
}

TEST(CsvReaderTest, ReadsQuotedCellsAndCountsLines) {
  auto rows =
      ReadCsv("\xEF\xBB\xBFName,Note\r\n\"Smith, \"\"Jr\"\"\",\"two\r\nlines\"\r\nx,\n\ny", ',');
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[0].cells, (std::vector<std::string>{"Name", "Note"}));
  EXPECT_EQ(rows[1].cells, (std::vector<std::string>{"Smith, \"Jr\"", "two\r\nlines"}));
  EXPECT_EQ(rows[1].line, 2u);
  EXPECT_EQ(rows[2].cells, (std::vector<std::string>{"x", ""}));
  EXPECT_EQ(rows[2].line, 4u);
  EXPECT_EQ(rows[3].cells, std::vector<std::string>{""});  // a blank line
  EXPECT_EQ(rows[4].cells, std::vector<std::string>{"y"});
  EXPECT_EQ(rows[4].line, 6u);
  for (const auto& row : rows) EXPECT_EQ(row.problem, "");
}

TEST(CsvReaderTest, ReportsAnOpenQuoteAndTextAfterAClosingQuote) {
  auto rows = ReadCsv("a,\"b\"c,d\n\"never closed,e\n", ',');
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].cells, (std::vector<std::string>{"a", "bc", "d"}));
  EXPECT_NE(rows[0].problem, "");
  EXPECT_NE(rows[1].problem, "");
  EXPECT_EQ(ReadCsv("a;\"b;c\";", ';')[0].cells, (std::vector<std::string>{"a", "b;c", ""}));
}

class CsvExportTest : public ::testing::Test {
 protected:
  std::string Export(const Database& db, CsvExportOptions o, int expected_result = 1) {
    std::string path = folder_.Path("out.csv");
    EXPECT_EQ(ExportCsv(db, o, path, EuropeanOptions(), prompter_), expected_result);
    return Slurp(path);
  }
  TempFolder folder_;
  ScriptedPrompter prompter_;
};

TEST_F(CsvExportTest, QuotesValuesAndKeepsLineBreaks) {
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Note", kNote)
                .Row({"Smith, \"Jr\"", "two\nlines"})
                .Row({"", "x"})
                .Build();
  EXPECT_EQ(Export(*db, {.header = true}), "Name,Note\n\"Smith, \"\"Jr\"\"\",\"two\nlines\"\n,x\n");
  EXPECT_EQ(Export(*db, {.quote_all_values = true}),
            "\"Smith, \"\"Jr\"\"\",\"two\nlines\"\n\"\",\"x\"\n");
  EXPECT_EQ(Export(*db, {.header = true, .quote_all_names = true}).substr(0, 14),
            "\"Name\",\"Note\"\n");
}

TEST_F(CsvExportTest, ANotUsedFieldFirstStartsEachRecordLineWithASeparator) {
  auto db = DatabaseBuilder().Field("A", kText).Field("B", kText).Row({"a", "b"}).Build();
  db->definition().set_display_slot(0, 5);  // an unused slot shown first
  db->definition().set_display_slot(5, 0);
  EXPECT_EQ(Export(*db, {.header = true}), "B,A\n,b,a\n");
  // Slot order for the records; the header still follows the display order.
  EXPECT_EQ(Export(*db, {.header = true, .slot_order = true}), "B,A\na,b\n");
}

TEST_F(CsvExportTest, ImageColumnsStayEmpty) {
  auto db =
      DatabaseBuilder().Field("Name", kText).Field("Pic", kImage).Field("Qty", kInteger).Build();
  RecordValues values = ValuesFromTexts(*db, {{0, "a"}, {2, "5"}});
  values.Set(1, Bytes(2001, 0xFF));
  StoreRecord(*db, values, kNewRecord);
  EXPECT_EQ(Export(*db, {.header = true}), "Name,Pic,Qty\na,,5\n");
}

TEST_F(CsvExportTest, FilteredExportWithNothingPassingWritesTheHeaderOnly) {
  auto db = DatabaseBuilder().Field("Qty", kInteger).Row({"1"}).Row({"2"}).Build();
  Condition c;
  c.in_use = 1;
  c.lower = 10;
  c.upper = 20;
  db->definition().set_condition(0, c);
  EXPECT_EQ(Export(*db, {.header = true, .filtered_only = true}), "Qty\n");
  EXPECT_EQ(Export(*db, {.header = true}), "Qty\n1\n2\n");
}

TEST_F(CsvExportTest, ProgressCountsFromMinus102AndDamagedRecordsAreNoted) {
  auto db = DatabaseBuilder()
                .Field("A", kText)
                .Field("B", kText)
                .Row({"a", "b"})
                .Row({"c", "d"})
                .Row({"e", "f"})
                .Build();
  db->records[1].data.clear();                                 // an entry without a record
  db->records[2].data.edit().resize(db->records[2].data.size() - 3);  // B's value runs past the end
  EXPECT_EQ(Export(*db, {}, 0), "a,b\ne,\n");
  auto progress = prompter_.Progress();
  ASSERT_GE(progress.size(), 4u);
  EXPECT_EQ(progress[0], "Exporting to .CSV File...");
  EXPECT_EQ(progress[1], "Reading and Writing Record 0...");
  EXPECT_EQ(progress[2], "Reading Record: -102:");
  EXPECT_NE(std::find(progress.begin(), progress.end(), "ERROR:Reading Record: 1"), progress.end());
  EXPECT_NE(std::find(progress.begin(), progress.end(), "ERROR:1!\n"), progress.end());
  EXPECT_EQ(ExportCsv(*db, {}, folder_.Path("no/such/dir.csv"), {}, prompter_), 0);
}

std::unique_ptr<Database> MixedDatabase(bool with_rows) {
  DatabaseBuilder b;
  b.Options(EuropeanOptions())
      .Field("Name", kText)
      .Field("Qty", kInteger)
      .Field("Price", kFloat)
      .Field("When", kDate)
      .Field("At", kTime)
      .Field("Done", kCheckBox)
      .Field("Note", kNote);
  if (with_rows) {
    b.Row({"Smith, \"Jr\"", "-7", "1.5", "05/03/2002", "13:05", "1", "two\nlines"})
        .Row({"Caf\xE9", "0", "", "", "", "0", ""})
        .Row({" spaced ", "2147483647", "0.04", "29/02/1904", "00:00", "1", "a,b;c\"d"});
  }
  return b.Build();
}

TEST_F(CsvExportTest, ExportImportExportReproducesTheFile) {
  auto db = MixedDatabase(true);
  std::string first = Export(*db, {.header = true});
  auto copy = MixedDatabase(false);
  auto result = ImportCsvText(*copy, first, {}, EuropeanOptions(), prompter_);
  EXPECT_TRUE(result.ok) << result.error;
  EXPECT_TRUE(result.problems.empty()) << result.problems[0].reason;
  EXPECT_EQ(result.imported, 3u);
  EXPECT_EQ(Export(*copy, {.header = true}), first);
}

TEST_F(CsvExportTest, PythonsCsvModuleReadsTheSameCells) {
  if (std::system("python3 -c 'import csv' 2>/dev/null") != 0) GTEST_SKIP() << "no python3";
  auto db = MixedDatabase(true);
  std::string path = folder_.Path("out.csv");
  ASSERT_EQ(ExportCsv(*db, {.header = true}, path, EuropeanOptions(), prompter_), 1);
  std::string script =
      "python3 -c \"import csv,sys\nfor row in csv.reader(open(sys.argv[1], "
      "encoding='utf-8', newline='')): print(repr(row))\" " +
      path;
  FILE* pipe = popen(script.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  char buffer[256];
  while (std::fgets(buffer, sizeof buffer, pipe)) out += buffer;
  ASSERT_EQ(pclose(pipe), 0);
  EXPECT_EQ(out,
            "['Name', 'Qty', 'Price', 'When', 'At', 'Done', 'Note']\n"
            "['Smith, \"Jr\"', '-7', '1.5', '05/03/2002', '13:05:00', '1', 'two\\nlines']\n"
            "['Caf\xC3\xA9', '0', '', 'NO DATE', 'No Time', '0', '']\n"
            "[' spaced ', '2147483647', '0.04', '29/02/1904', '00:00:00', '1', 'a,b;c\"d']\n");
}

}  // namespace
}  // namespace qv::test
