#include "exchange/print_records.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "exchange/spawn_process.h"
#include "processing/filter.h"
#include "processing/record_text.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

const std::string kRule = "----------------------------------------\n";

class PrintRecordsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = DatabaseBuilder("Stock")
              .Field("Item", kText)
              .Field("Qty", kInteger)
              .Field("Secret", kText)
              .Field("Parts", kLink)
              .Row({"bolt", "3", "x"})
              .Row({"caf\xE9", "12", "y"})
              .Build();
    db_->path = folder_.Path("Stock.PDB");
    // A hidden field prints no line.
    db_->definition().field(2).bytes()[5] = 0;
  }

  // A stand-in print command: saves its arguments and the file it was given, then exits.
  std::string StandIn(int exit_code) {
    std::string script = folder_.Path("print.sh");
    WriteText(script, "#!/bin/sh\nfor last; do :; done\nprintf '%s\\n' \"$@\" > '" +
                          folder_.Path("args") + "'\ncp \"$last\" '" + folder_.Path("printed") +
                          "'\nexit " + std::to_string(exit_code) + "\n");
    ::chmod(script.c_str(), 0755);
    return script;
  }

  PrintResult Print(bool all, const std::string& command) {
    return PrintRecords(*db_, all, {temp_, command}, {}, prompter_, runner_);
  }

  TempFolder folder_;
  std::string temp_ = folder_.Path("qvprnttemp.txt");
  std::unique_ptr<Database> db_;
  ScriptedPrompter prompter_;
  SpawnProcessRunner runner_;
};

TEST_F(PrintRecordsTest, TheViewIsPrintedFieldByFieldAndTheFileHandedOverThenDeleted) {
  EXPECT_EQ(Print(true, StandIn(0) + " -d 'office printer'"), PrintResult::kPrinted);
  // Hidden fields and, until linked records are printed, Link fields give no line.
  EXPECT_EQ(Slurp(folder_.Path("printed")),
            "Item: bolt\nQty: 3\n" + kRule + "Item: caf\xC3\xA9\nQty: 12\n" + kRule);
  EXPECT_EQ(Slurp(folder_.Path("args")), "-d\noffice printer\n" + temp_ + "\n");
  EXPECT_EQ(prompter_.Messages(), std::vector<std::string>{"Data Printed OK"});
  EXPECT_EQ(prompter_.calls().back().caption, "Update");
  EXPECT_FALSE(std::filesystem::exists(temp_));
  EXPECT_FALSE(prompter_.busy());
}

TEST_F(PrintRecordsTest, OnlyTheCurrentRecordWithoutTheAllFlag) {
  db_->current = 1;
  Print(false, StandIn(0));
  EXPECT_EQ(Slurp(folder_.Path("printed")), "Item: caf\xC3\xA9\nQty: 12\n" + kRule);
}

TEST_F(PrintRecordsTest, ExitCodesChooseTheMessage) {
  EXPECT_EQ(Print(true, StandIn(63)), PrintResult::kCancelled);
  EXPECT_TRUE(prompter_.Messages().empty());
  EXPECT_EQ(Print(true, StandIn(5)), PrintResult::kProblem);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{"There was a problem printing to PrintPocketCE"});
  EXPECT_FALSE(std::filesystem::exists(temp_));
}

TEST_F(PrintRecordsTest, AnEmptyViewStillStartsTheCommand) {
  db_->restriction_field = 1;
  db_->restriction_key = 999;
  RebuildFilteredList(*db_);
  EXPECT_EQ(Print(true, StandIn(0)), PrintResult::kPrinted);
  EXPECT_EQ(Slurp(folder_.Path("printed")), "");
  EXPECT_EQ(Slurp(folder_.Path("args")), temp_ + "\n");
}

TEST_F(PrintRecordsTest, ACommandThatCannotBeStartedSaysWhy) {
  EXPECT_EQ(Print(true, folder_.Path("no-such-printer")), PrintResult::kCannotStart);
  EXPECT_EQ(prompter_.Messages(),
            (std::vector<std::string>{
                "Unable to call PrintPocketCE.  Please check to see if it is properly installed.",
                "File not found"}));
  EXPECT_EQ(prompter_.calls()[0].caption, "ERROR");
  EXPECT_FALSE(std::filesystem::exists(temp_));
  prompter_.Clear();
  EXPECT_EQ(Print(true, "lp 'unclosed"), PrintResult::kCannotStart);
  EXPECT_EQ(prompter_.Messages().back(), "Invalid Function.");
}

TEST_F(PrintRecordsTest, AnUnwritableTempFileStopsBeforeTheCommand) {
  temp_ = folder_.Path("missing/qvprnttemp.txt");
  EXPECT_EQ(Print(true, StandIn(0)), PrintResult::kCannotWrite);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{"ERROR: Unable to open temp file for writing."});
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("args")));
}

TEST_F(PrintRecordsTest, NothingHappensWithoutAnOpenDatabase) {
  Database closed;
  EXPECT_EQ(PrintRecords(closed, true, {temp_, StandIn(0)}, {}, prompter_, runner_),
            PrintResult::kNothing);
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("args")));
}

TEST(PrintRecordTextTest, NestedLevelsIndentThreeBlanksEach) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Build();
  std::string out;
  PrintRecordText(0, *db, out, 2, {});
  EXPECT_EQ(out, "      Name: a\n" + kRule);
}

TEST(SplitCommandLineTest, QuotesGroupAndNothingIsExpanded) {
  EXPECT_EQ(SplitCommandLine("  lp -d \"my printer\" -o 'a b'\\ c $HOME *"),
            (std::vector<std::string>{"lp", "-d", "my printer", "-o", "a b c", "$HOME", "*"}));
  EXPECT_EQ(SplitCommandLine("lpr \"\""), (std::vector<std::string>{"lpr", ""}));
  EXPECT_EQ(SplitCommandLine("lp \"open"), std::nullopt);
  EXPECT_EQ(SplitCommandLine("   "), std::vector<std::string>{});
}

}  // namespace
}  // namespace qv::test
