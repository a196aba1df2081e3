#include "processing/report.h"

#include <gtest/gtest.h>

#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

Condition NothingPasses(int slot) {
  Condition c;
  c.in_use = 1;
  c.field = static_cast<std::uint16_t>(slot);
  c.lower = 1000;
  c.upper = 2000;
  return c;
}

std::unique_ptr<Database> Numbers(std::vector<std::string> values) {
  DatabaseBuilder b;
  b.Field("Qty", kInteger);
  for (auto& v : values) b.Row({v});
  return b.Build();
}

std::string Report(const Database& db, int slot, const FormatOptions& options = EuropeanOptions()) {
  ScriptedPrompter prompter;
  auto text = RunReport(db, slot, options, prompter);
  EXPECT_TRUE(prompter.Messages().empty());
  return text.value_or("<refused>");
}

TEST(ReportTest, IntegerReportWithNoPassingRecordKeepsTheRunningTotalStarts) {
  auto db = Numbers({"5", "7"});
  db->definition().set_condition(0, NothingPasses(0));
  EXPECT_EQ(
      Report(*db, 0),
      "Report for Qty\r\nNumber of Entries:\t0\r\nMinimum Value:\t0\r\nMaximum Value:\t0\r\n"
      "Sum:\t\t0\r\nMinimum Total:\t2000000\r\nMaximum Total:\t-2000000\r\nAverage:\t\t0\r\n");
}

TEST(ReportTest, IntegerAverageRoundsHalfUpAndRunningTotalsFollowTheSum) {
  EXPECT_EQ(Report(*Numbers({"1", "2"}), 0),
            "Report for Qty\r\nNumber of Entries:\t2\r\nMinimum Value:\t1\r\nMaximum Value:\t2\r\n"
            "Sum:\t\t3\r\nMinimum Total:\t1\r\nMaximum Total:\t3\r\nAverage:\t\t2\r\n");
  EXPECT_EQ(
      Report(*Numbers({"5", "-10", "3"}), 0),
      "Report for Qty\r\nNumber of Entries:\t3\r\nMinimum Value:\t-10\r\nMaximum Value:\t5\r\n"
      "Sum:\t\t-2\r\nMinimum Total:\t-5\r\nMaximum Total:\t5\r\nAverage:\t\t0\r\n");
}

TEST(ReportTest, MinimumStartsAtTheProgramsOwnLimit) {
  // Values all above 2,000,000 report 2,000,000 as their minimum; kept on purpose.
  std::string text = Report(*Numbers({"3000000", "4000000"}), 0);
  EXPECT_NE(text.find("Minimum Value:\t2000000\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("Maximum Value:\t4000000\r\n"), std::string::npos) << text;
}

TEST(ReportTest, TimesOfMoreThanADayShowWholeDaysAndTheRest) {
  auto db = DatabaseBuilder()
                .Options(EuropeanOptions())
                .Field("At", kTime)
                .Row({"10:00"})
                .Row({"15:00"})
                .Row({""})
                .Build();
  EXPECT_EQ(Report(*db, 0),
            "Report for At\r\nNumber of Entries:\t2\r\nMinimum Value:\t10:00:00\r\n"
            "Maximum Value:\t15:00:00\r\nAverage Time:\t12:30:00\r\n"
            "Total Time\t1 Day(s), 01:00:00\r\n");
  auto short_db =
      DatabaseBuilder().Options(EuropeanOptions()).Field("At", kTime).Row({"1:30"}).Build();
  EXPECT_NE(Report(*short_db, 0).find("Total Time:\t01:30:00\r\n"), std::string::npos);
}

TEST(ReportTest, EmptyDatesAreCountedButTakeNoPartInTheLimits) {
  auto db = DatabaseBuilder()
                .Options(EuropeanOptions())
                .Field("When", kDate)
                .Row({"10/03/2002"})
                .Row({""})
                .Row({"05/03/2002"})
                .Build();
  EXPECT_EQ(Report(*db, 0),
            "Report for When\r\nNumber of Entries:\t3\r\nMinimum Value:\t05/03/2002\r\n"
            "Maximum Value:\t10/03/2002\r\nDays Spanned:\t5\r\n");
  auto undated = DatabaseBuilder().Field("When", kDate).Row({""}).Build();
  EXPECT_EQ(Report(*undated, 0),
            "Report for When\r\nNumber of Entries:\t1\r\nMinimum Value:\tNO DATE\r\n"
            "Maximum Value:\tNO DATE\r\nDays Spanned:\t0\r\n");
}

TEST(ReportTest, FloatAndCheckReportsFollowTheDecimalComma) {
  FormatOptions comma = EuropeanOptions();
  comma.decimal_comma = true;
  auto db = DatabaseBuilder()
                .Field("Price", kFloat)
                .Field("Done", kCheckBox)
                .Row({"1.5", "1"})
                .Row({"2.25", "0"})
                .Row({"-1", "1"})
                .Build();
  db->definition().field(0).settings()[0] = 2;
  EXPECT_EQ(Report(*db, 0, comma),
            "Report for Price\r\nNumber of Entries:\t3\r\nMinimum Value:\t-1,00\r\n"
            "Maximum Value:\t2,25\r\nSum:\t\t2,75\r\nMinimum Total:\t1,50\r\n"
            "Maximum Total:\t3,75\r\nAverage:\t\t0,92\r\n");
  EXPECT_EQ(Report(*db, 1, comma),
            "Report for Done\r\nNumber of Entries:\t\t3\r\nItems Checked:\t\t2\r\n"
            "Items Not-Checked:\t\t1\r\nPercentage Checked:\t\t66,67\r\n"
            "Percentage Not-Checked:\t33,33\r\n");
}

TEST(ReportTest, CalculatedResultKindsChooseTheReport) {
  auto db = DatabaseBuilder().Field("Calc", kCalculated).Build();
  FieldDefinition f = db->definition().field(0);
  const std::pair<int, ReportKind> expected[] = {{0, ReportKind::Float}, {1, ReportKind::Integer},
                                                 {2, ReportKind::Time},  {3, ReportKind::Date},
                                                 {4, ReportKind::Float}, {6, ReportKind::Float},
                                                 {7, ReportKind::None},  {-1, ReportKind::None}};
  for (auto [kind, report] : expected) {
    f.bytes()[43] = static_cast<std::uint8_t>(kind);
    EXPECT_EQ(ReportKindOf(f), report) << kind;
  }
  f.bytes()[43] = 5;
  EXPECT_EQ(ReportDecimals(f), 2);
  RecordValues values;
  values.Set(0, TextValue("1.5"));
  StoreRecord(*db, values, kNewRecord);
  EXPECT_NE(Report(*db, 0).find("Sum:\t\t1.50\r\n"), std::string::npos);
}

TEST(ReportTest, RefusesFieldsWithoutAReportAndAMissingChoice) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Build();
  ScriptedPrompter prompter;
  EXPECT_FALSE(RunReport(*db, 0, {}, prompter));
  EXPECT_FALSE(RunReport(*db, -1, {}, prompter));
  EXPECT_EQ(prompter.Messages(),
            (std::vector<std::string>{"Can only run reports on the following field types:\n"
                                      "Integer, Float, Checkbox, Time, Date, and Calculated.",
                                      "You must first select a field to run the report on!"}));
}

}  // namespace
}  // namespace qv::test
