// A directory, a device or a FIFO named as a database is refused with the open failure message
// and exit 1, at once: no crash, no endless read, no hang.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

TEST(NonRegularPaths, AreRefusedAsFilesThatCannotBeOpened) {
  TempFolder folder;
  std::string dir = folder.Path("Dir.PDB"), fifo = folder.Path("Pipe.PDB");
  std::filesystem::create_directory(dir);
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
  for (const std::string& path : {dir, fifo, std::string("/dev/zero")}) {
    auto info = RunQvdb({"info", path});
    EXPECT_EQ(info.exit_code, 1) << path;
    EXPECT_NE(info.err.find("ERROR: Cannot Open File: " + path + " for reading"), std::string::npos)
        << info.err;
  }
}

}  // namespace
}  // namespace qv::test
