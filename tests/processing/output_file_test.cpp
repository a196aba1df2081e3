// Exports are written beside their file and renamed over it, so a failed or unfinished export
// never leaves a truncated file or a half-overwritten old one.

#include "processing/output_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_files.h"

namespace qv {
namespace {

TEST(OutputFile, UnfinishedExportLeavesTheOldFile) {
  test::TempFolder folder;
  std::string out = folder.Path("out.csv");
  test::WriteText(out, "old export\n");
  {
    OutputFile file(out);
    ASSERT_TRUE(file.ok());
    file.Write(std::string(200000, 'n'));  // more than one buffer reaches the disk
  }                                        // given up before Close
  EXPECT_EQ(test::Slurp(out), "old export\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
  {
    OutputFile file(out);
    file.Write("new export\n");
    EXPECT_TRUE(file.Close());
  }
  EXPECT_EQ(test::Slurp(out), "new export\n");
  // A folder that does not exist: nothing to write into, nothing made.
  OutputFile nowhere(folder.Path("none/out.csv"));
  EXPECT_FALSE(nowhere.ok());
  EXPECT_FALSE(nowhere.Close());
}

}  // namespace
}  // namespace qv
