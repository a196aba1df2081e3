// qvdb in a shell: "-" for standard input and output, --help everywhere, typed JSON, looking at
// records without changing the file, and one rule for usage errors.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

const std::vector<std::string> kFormats = {"--date-format", "dd/MM/yyyy", "--time-format", "HH:mm"};

std::vector<std::string> With(std::vector<std::string> args) {
  args.insert(args.end(), kFormats.begin(), kFormats.end());
  return args;
}

const char* const kStockCsv =
    "Item,Qty:Integer,Price:Float,Done:Check-Box,Bought:Date,At:Time,"
    "Kind:Pop-Up:14:Red|Green|Blue,Memo:Note\n"
    "\"Bolt, M4\",46750,1.25,1,05/03/2024,13:05,Red,\"two\nlines\"\n"
    "Nut,7,0.5,0,,,Green,\n"
    "Screw,120,2.00,1,01/01/2020,08:00,Blue,x\n";

class ShellTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto made = RunQvdb(With({"new", file_, "--from-csv", "-"}), kStockCsv);
    ASSERT_EQ(made.exit_code, 0) << made.err;
  }
  TempFolder folder_;
  std::string file_ = folder_.Path("Stock.PDB");
};

// Runs a Python snippet on a file and gives what it prints.
std::string Python(const std::string& script, const std::string& path) {
  std::string command = "python3 -c '" + script + "' '" + path + "'";
  std::string out;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, n);
    pclose(pipe);
  }
  return out;
}

TEST_F(ShellTest, DashReadsStandardInputAndWritesStandardOutput) {
  auto csv = RunQvdb(With({"export", file_, "-", "--header"}));
  ASSERT_EQ(csv.exit_code, 0) << csv.err;
  EXPECT_EQ(csv.out.substr(0, csv.out.find('\n')), "Item,Qty,Price,Done,Bought,At,Kind,Memo");
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("-")));
  auto imported = RunQvdb(With({"import", file_, "-"}), "Washer,3,,,,,,\n");
  EXPECT_EQ(imported.exit_code, 0) << imported.err;
  EXPECT_EQ(imported.out, "imported 1 records\n");
  auto text = RunQvdb(With({"export", file_, "-", "--text", "--where", "Item contains wash"}));
  EXPECT_EQ(text.out.substr(0, 13), "Item: Washer\n");
  EXPECT_EQ(text.err, "");  // no "File Exported OK" in a pipe
  // A database from standard input can be read, not saved.
  auto piped =
      RunQvdb({"list", "-", "--format", "csv", "--fields", "Item", "--limit", "1"}, Slurp(file_));
  EXPECT_EQ(piped.out, "Item\n\"Bolt, M4\"\n") << piped.err;
  EXPECT_EQ(RunQvdb({"add", "-", "Item=x"}, Slurp(file_)).exit_code, 1);
  // A password file of "-" is a line of standard input, read once for every question.
  ASSERT_EQ(
      RunQvdb({"encrypt", file_, "--mode", "0", "--password-file", "-"}, "secret\n").exit_code, 0);
  EXPECT_EQ(RunQvdb({"list", file_, "--fields", "Item", "--limit", "1", "--password-file", "-"},
                    "secret\n")
                .out,
            "Item\nBolt, M4\n");
  EXPECT_EQ(RunQvdb({"list", file_, "--password-file", "-"}, "wrong\n").exit_code, 1);
}

TEST_F(ShellTest, EveryCommandExplainsItselfWithAnExample) {
  auto help = RunQvdb({"help"});
  ASSERT_EQ(help.exit_code, 0);
  std::istringstream lines(help.out);
  int commands = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("  qvdb ", 0) != 0) continue;
    std::string name = line.substr(7, line.find(' ', 7) - 7);
    auto answer = RunQvdb({name, "--help"});
    EXPECT_EQ(answer.exit_code, 0) << name << answer.err;
    EXPECT_EQ(answer.out.rfind("usage: qvdb " + name + " ", 0), 0u) << answer.out;
    EXPECT_NE(answer.out.find("Example:\n  qvdb " + name + " "), std::string::npos) << name;
    ++commands;
  }
  EXPECT_GE(commands, 17);
  EXPECT_EQ(RunQvdb({"help", "filter"}).out, RunQvdb({"filter", "--help"}).out);
  EXPECT_EQ(RunQvdb({"--version"}).out, "qvdb 3.0\n");
}

TEST_F(ShellTest, TypedJsonReadsBackAsTheData) {
  std::string path = folder_.Path("stock.json");
  ASSERT_EQ(RunQvdb(With({"export", file_, path, "--json"})).exit_code, 0);
  // Sorted keys and Python's own spelling of each value.
  const char* script =
      "import json,sys\n"
      "for r in json.load(open(sys.argv[1])): print(sorted(r.items()))";
  EXPECT_EQ(Python(script, path),
            "[('At', '13:05:00'), ('Bought', '2024-03-05'), ('Done', True), ('Item', 'Bolt, M4'), "
            "('Kind', 'Red'), ('Memo', 'two\\nlines'), ('Price', 1.25), ('Qty', 46750)]\n"
            "[('At', None), ('Bought', None), ('Done', False), ('Item', 'Nut'), ('Kind', "
            "'Green'), ('Memo', None), ('Price', 0.5), ('Qty', 7)]\n"
            "[('At', '08:00:00'), ('Bought', '2020-01-01'), ('Done', True), ('Item', 'Screw'), "
            "('Kind', 'Blue'), ('Memo', 'x'), ('Price', 2), ('Qty', 120)]\n");
  // Calculated results by their kind: a number, a date, a duration.
  ASSERT_EQ(RunQvdb({"calc", file_, "--field", "Total", "--formula", "Qty * Price"}).exit_code, 0);
  ASSERT_EQ(
      RunQvdb({"calc", file_, "--field", "Due", "--formula", "Bought + 30", "--result-kind", "3"})
          .exit_code,
      0);
  ASSERT_EQ(
      RunQvdb({"calc", file_, "--field", "Later", "--formula", "At + 60", "--result-kind", "2"})
          .exit_code,
      0);
  EXPECT_EQ(
      RunQvdb({"list", file_, "--format", "jsonl", "--fields", "Total,Due,Later", "--limit", "1"})
          .out,
      "{\"Total\": 58437.5, \"Due\": \"2024-04-04\", \"Later\": \"13:06:00\"}\n");
  auto lines = RunQvdb({"list", file_, "--format", "jsonl", "--fields", "Qty,Item", "--raw"});
  EXPECT_EQ(lines.out,
            "{\"Qty\": \"46750\", \"Item\": \"Bolt, M4\"}\n{\"Qty\": \"7\", \"Item\": \"Nut\"}\n"
            "{\"Qty\": \"120\", \"Item\": \"Screw\"}\n");
}

TEST_F(ShellTest, SortAndWhereShapeTheOutputAndLeaveTheFile) {
  const std::string before = Slurp(file_);
  auto sorted = RunQvdb({"list", file_, "--format", "csv", "--fields", "Item,Qty", "--sort",
                         "Qty:reverse", "--where", "Qty range 10 *", "--limit", "5"});
  ASSERT_EQ(sorted.exit_code, 0) << sorted.err;
  EXPECT_EQ(sorted.out, "Item,Qty\n\"Bolt, M4\",46750\nScrew,120\n");
  // Numbers stay the ones set and delete take.
  EXPECT_EQ(RunQvdb({"list", file_, "--format", "tsv", "--numbers", "--fields", "Item", "--sort",
                     "Item:reverse"})
                .out,
            "#\tItem\n3\tScrew\n2\tNut\n1\tBolt, M4\n");
  auto exported = RunQvdb({"export", file_, "-", "--sort", "Item:reverse", "--where",
                           "not Kind equals Blue", "--where", "Done checked 1"});
  EXPECT_EQ(exported.out.substr(0, 10), "\"Bolt, M4\"");
  EXPECT_EQ(exported.out.find("Nut"), std::string::npos);
  EXPECT_EQ(Slurp(file_), before);
  // The stored filter covers every reading command alike, --all lifts it.
  ASSERT_EQ(
      RunQvdb({"filter", file_, "set", "1", "--field", "Qty", "--range", "1", "100"}).exit_code, 0);
  for (const char* format : {"csv", "json"}) {
    auto out = RunQvdb({"export", file_, "-", "--format", format});
    EXPECT_NE(out.out.find("Nut"), std::string::npos) << format;
    EXPECT_EQ(out.out.find("Screw"), std::string::npos) << format;
    EXPECT_NE(RunQvdb({"export", file_, "-", "--format", format, "--all"}).out.find("Screw"),
              std::string::npos);
  }
  EXPECT_EQ(RunQvdb({"find", file_, "Screw"}).exit_code, 1);
  EXPECT_EQ(RunQvdb({"find", file_, "Screw", "--all"}).out, "3\tItem\tScrew\n");
  EXPECT_NE(RunQvdb({"report", file_, "Qty", "--all"}).out, RunQvdb({"report", file_, "Qty"}).out);
  EXPECT_EQ(RunQvdb({"list", file_, "--where", "Qty contains 1"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"list", file_, "--sort", "Colour"}).exit_code, 1);
}

TEST_F(ShellTest, TypedHeaderRoundTripKeepsEveryType) {
  std::string copy = folder_.Path("Copy.PDB");
  auto csv = RunQvdb(With({"export", file_, "-", "--typed-header"}));
  EXPECT_EQ(csv.out.substr(0, csv.out.find('\n')),
            "Item:Text:40,Qty:Integer:40,Price:Float:40,Done:Check-Box:40,Bought:Date:40,"
            "At:Time:40,Kind:Pop-Up:14:Red|Green|Blue,Memo:Note:40");
  ASSERT_EQ(RunQvdb(With({"new", copy, "--from-csv", "-"}), csv.out).exit_code, 0);
  auto schema = [](const std::string& path) {
    std::string json = RunQvdb({"info", path, "--format", "json"}).out;
    return json.substr(json.find("\"fields\""));
  };
  EXPECT_EQ(schema(copy), schema(file_));
  EXPECT_EQ(RunQvdb({"list", copy, "--format", "json"}).out,
            RunQvdb({"list", file_, "--format", "json"}).out);
}

TEST_F(ShellTest, UsageErrorsAreExitTwoWithTheUsageLine) {
  for (const auto& args :
       std::vector<std::vector<std::string>>{{"set", file_, "0"},
                                             {"set", file_, "0", "Qty=1"},
                                             {"set", file_, "1", "Qty"},
                                             {"list", file_, "extra"},
                                             {"delete", file_, "x"},
                                             {"views", file_, "list", "extra"},
                                             {"filter", file_, "show", "extra"},
                                             {"info"},
                                             {"export", file_, "-", "--csv", "--format", "json"}}) {
    auto r = RunQvdb(args);
    EXPECT_EQ(r.exit_code, 2) << args[0] << " " << args.back();
    EXPECT_NE(r.err.find("usage: qvdb " + args[0] + " "), std::string::npos) << r.err;
  }
  EXPECT_EQ(RunQvdb({"set", file_, "9", "Qty=1"}).exit_code, 1);  // no such record: refused
  // Malformed arguments are told before any password is asked for.
  auto early = RunQvdb({"set", folder_.Path("none.PDB"), "x", "Qty=1"});
  EXPECT_EQ(early.exit_code, 2);
  EXPECT_EQ(early.err.find("Cannot Open"), std::string::npos) << early.err;
  auto long_value = RunQvdb({"add", file_, "Item=" + std::string(100000, 'x')});
  EXPECT_EQ(long_value.exit_code, 1);
  EXPECT_EQ(long_value.err,
            "Error: the value for Item is 100000 characters long, longer than the field's limit "
            "of 40\n");
  auto missing = RunQvdb({"import", folder_.Path("none.PDB"), "-"}, "a\n");
  EXPECT_EQ(missing.err.find("Error: ERROR"), std::string::npos) << missing.err;
  EXPECT_EQ(missing.err.rfind("ERROR: Cannot Open File: ", 0), 0u) << missing.err;
}

TEST_F(ShellTest, FindAllListsEveryMatch) {
  auto all = RunQvdb({"find", file_, "t", "--all", "--field", "Item"});
  EXPECT_EQ(all.exit_code, 0);
  EXPECT_EQ(all.out, "1\tItem\tBolt, M4\n2\tItem\tNut\n");
  EXPECT_EQ(RunQvdb({"find", file_, "t", "--field", "Item"}).out, "1\tItem\tBolt, M4\n");
  EXPECT_EQ(RunQvdb({"find", file_, "zzz", "--all"}).exit_code, 1);
}

}  // namespace
}  // namespace qv::test
