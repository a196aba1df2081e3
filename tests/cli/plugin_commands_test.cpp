// qvdb plugin: configure and call an External field's plug-in from the command line.

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

const std::map<std::string, std::string> kTestHome = {{"QUORVANT_HOME", TEST_PLUGIN_HOME}};

// Name, Qty and the External field Check served by `plugin`, with one record.
std::string PluginDatabase(const TempFolder& folder, const std::string& plugin) {
  std::string db = folder.Path("Plugged.PDB");
  EXPECT_EQ(RunQvdb({"new", db, "--field", "Name:Text", "--field", "Qty:Integer"}).exit_code, 0);
  EXPECT_EQ(RunQvdb({"field", db, "add", "Check:External:16", "--plugin", plugin}).exit_code, 0);
  EXPECT_EQ(RunQvdb({"add", db, "Name=bolt", "Qty=4"}).exit_code, 0);
  return db;
}

std::string Csv(const std::string& db) {
  return RunQvdb({"list", db, "--format", "csv"}).out;
}

TEST(PluginCommand, CallStoresWhatThePluginChangedAndConfigureKeepsItsSettings) {
  TempFolder folder;
  std::string db = PluginDatabase(folder, "qvt-writer");
  auto called = RunQvdb({"plugin", db, "Check", "call", "save", "1"}, "", kTestHome);
  ASSERT_EQ(called.exit_code, 0) << called.err;
  EXPECT_NE(Csv(db).find("bolt,99,written"), std::string::npos) << Csv(db);

  // qvdb set stores a record as the record editor does: the plug-in sees it first.
  ASSERT_EQ(RunQvdb({"set", db, "1", "Name=nut", "Check=typed"}, "", kTestHome).exit_code, 0);
  EXPECT_NE(Csv(db).find("nut,99,written"), std::string::npos) << Csv(db);

  std::string before = Slurp(db);
  auto configured = RunQvdb({"plugin", db, "3", "configure"}, "", kTestHome);
  ASSERT_EQ(configured.exit_code, 0) << configured.err;
  EXPECT_NE(Slurp(db), before);
  // Configured again, the plug-in sets the same settings: nothing to store.
  before = Slurp(db);
  EXPECT_EQ(RunQvdb({"plugin", db, "Check", "configure"}, "", kTestHome).exit_code, 0);
  EXPECT_EQ(Slurp(db), before);
}

TEST(PluginCommand, RefusalsLeaveTheFileAlone) {
  TempFolder folder;
  std::string db = PluginDatabase(folder, "qvt-refuse");
  std::string before = Slurp(db);
  auto refused = RunQvdb({"plugin", db, "Check", "call", "init", "1"}, "", kTestHome);
  EXPECT_EQ(refused.exit_code, 0);
  EXPECT_NE(refused.out.find("changed nothing"), std::string::npos);
  EXPECT_EQ(RunQvdb({"plugin", db, "Check", "call", "boom", "1"}).exit_code, 2);
  EXPECT_EQ(RunQvdb({"plugin", db, "Name", "configure"}).exit_code, 1);
  auto missing = RunQvdb({"plugin", db, "Check", "configure"});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_NE(missing.err.find(
                "Could not locate or open Plug-in: qvt-refuse to configure External field type"),
            std::string::npos)
      << missing.err;
  EXPECT_EQ(Slurp(db), before);

  // Each verb checks the action of the application's command that does the same.
  for (auto [action, verb] : {std::pair{"Edit Records", "call"}, {"DB Properties", "configure"}}) {
    std::string guarded = folder.Path(std::string(verb) + ".PDB");
    std::filesystem::remove(folder.Path("Plugged.PDB"));
    std::filesystem::rename(PluginDatabase(folder, "qvt-writer"), guarded);
    ASSERT_EQ(RunQvdb({"security", guarded, "--set", std::string(action) + "=No Access"}).exit_code,
              0);
    std::string kept = Slurp(guarded);
    std::vector<std::string> args = {"plugin", guarded, "Check", verb};
    if (std::string(verb) == "call") args.insert(args.end(), {"save", "1"});
    auto denied = RunQvdb(args, "", kTestHome);
    EXPECT_EQ(denied.exit_code, 1) << verb;
    EXPECT_NE(denied.err.find("ACCESS DENIED"), std::string::npos) << denied.err;
    EXPECT_EQ(Slurp(guarded), kept);
  }
}

TEST(PluginCommand, TheAgeExampleCountsDaysFromItsDateField) {
#ifndef HAVE_AGE_PLUGIN
  GTEST_SKIP() << "the age plug-in is built with the application";
#endif
  TempFolder folder;
  std::string db = folder.Path("Ages.PDB");
  ASSERT_EQ(RunQvdb({"new", db, "--field", "Item:Text", "--field", "Bought:Date", "--field",
                     "Age:External:8"})
                .exit_code,
            0);
  ASSERT_EQ(RunQvdb({"field", db, "set", "Age", "--plugin", "quorvant-age"}).exit_code, 0);
  std::time_t then = std::time(nullptr) - 10 * 86400 + 3600;
  std::tm local{};
  localtime_r(&then, &local);
  char date[16];
  std::strftime(date, sizeof date, "%Y-%m-%d", &local);
  ASSERT_EQ(
      RunQvdb({"add", db, "Item=saw", std::string("Bought=") + date, "--date-format", "yyyy-MM-dd"})
          .exit_code,
      0);
  const std::map<std::string, std::string> examples = {{"QUORVANT_HOME", EXAMPLE_PLUGIN_HOME}};
  ASSERT_EQ(RunQvdb({"plugin", db, "Age", "configure"}, "", examples).exit_code, 0);
  auto called = RunQvdb({"plugin", db, "Age", "call", "init", "1"}, "", examples);
  ASSERT_EQ(called.exit_code, 0) << called.err;
  EXPECT_EQ(RunQvdb({"list", db, "--format", "csv", "--fields", "Age"}).out, "Age\n10\n");
}

}  // namespace
}  // namespace qv::test
