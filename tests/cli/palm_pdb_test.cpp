// Files qvdb writes are valid record databases to an independent reader (Perl's Palm::PDB).

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <sstream>

#include "engine/database.h"
#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

std::map<std::string, std::string> ReadWithPalmPdb(const std::string& path) {
  std::string command = std::string("perl ") + PALM_CHECK_SCRIPT + " '" + path + "' 2>&1";
  std::map<std::string, std::string> fields;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return fields;
  char line[65536];
  while (fgets(line, sizeof line, pipe)) {
    std::string s(line);
    if (!s.empty() && s.back() == '\n') s.pop_back();
    auto eq = s.find('=');
    if (eq != std::string::npos) fields[s.substr(0, eq)] = s.substr(eq + 1);
  }
  pclose(pipe);
  return fields;
}

TEST(PalmPdb, ReadsWhatQvdbWrites) {
  TempFolder folder;
  std::string file = folder.Path("Garden.PDB");
  ASSERT_EQ(RunQvdb({"new", file, "--name", "Garden Log", "--field", "Plant:Text", "--field",
                     "Height:Integer", "--field", "Note:Note"})
                .exit_code,
            0);
  ASSERT_EQ(RunQvdb({"add", file, "Plant=Tomato", "Height=120", "Note=staked"}).exit_code, 0);
  ASSERT_EQ(RunQvdb({"add", file, "Plant=Basil"}).exit_code, 0);
  auto seen = ReadWithPalmPdb(file);
  EXPECT_EQ(seen["name"], "Garden Log");
  EXPECT_EQ(seen["creator"], "Qvnt");
  EXPECT_EQ(seen["type"], "DATA");
  EXPECT_EQ(seen["records"], "104");
  // Record lengths as our own reader sees them.
  Database db;
  SilentPrompter quiet;
  ASSERT_TRUE(LoadDatabase(db, file, quiet));
  std::ostringstream expected;
  expected << 35852;
  for (const auto& f : db.schema.fields) expected << "," << f.EncodedSize();
  expected << "," << 28;
  for (const auto& r : db.records) expected << "," << r.data.size();
  EXPECT_EQ(seen["lengths"], expected.str());
}

}  // namespace
}  // namespace qv::test
