// A qvdb command that changes a value of the same length writes it in place, and one that finds
// a save cut short puts the old bytes back before it reads.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "engine/database.h"
#include "engine/save_journal.h"
#include "tests/cli/qvdb_runner.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

namespace fs = std::filesystem;

std::uint64_t InodeOf(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 ? st.st_ino : 0;
}

std::unique_ptr<Database> Load(const std::string& path) {
  auto db = std::make_unique<Database>();
  ScriptedPrompter prompter;
  EXPECT_TRUE(LoadDatabase(*db, path, prompter));
  return db;
}

// Starts saving record 1's Qty as `qty` in place and ends the process after its first byte.
void CutShortSave(const std::string& path, const std::string& qty) {
  auto db = Load(path);
  const Bytes before = *ReadWholeFile(path);
  StoreRecord(*db, ValuesFromTexts(*db, {{0, "bolt"}, {1, qty}}), 0);
  std::vector<RawRecord> schema;
  const Bytes after = JoinPieces(LayOutDatabase(*db, schema));
  ASSERT_EQ(after.size(), before.size());
  std::vector<FilePatch> patches;
  for (std::size_t i = 0; i < after.size(); ++i)
    if (after[i] != before[i]) patches.push_back({i, std::span(after).subspan(i, 1)});
  ASSERT_GE(patches.size(), 2u);
  pid_t child = ::fork();
  if (child == 0) {
    PatchFileInPlace(path, patches, db->disk, [](std::size_t n) {
      if (n == 1) ::_exit(0);
    });
    ::_exit(1);
  }
  ::waitpid(child, nullptr, 0);
}

TEST(QvdbSaveInPlace, SameLengthValueIsWrittenInPlaceAndACutShortSaveIsPutBack) {
  TempFolder folder;
  const std::string path = folder.Path("Stock.PDB");
  auto db = DatabaseBuilder("Stock")
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Row({"bolt", "10"})
                .Row({"nut", "20"})
                .Build();
  db->path = path;
  ASSERT_TRUE(SaveDatabase(*db, FixedClock()));

  const auto inode = InodeOf(path);
  QvdbResult set = RunQvdb({"set", path, "2", "Qty=99"});
  ASSERT_EQ(set.exit_code, 0) << set.err;
  EXPECT_EQ(InodeOf(path), inode);
  EXPECT_FALSE(fs::exists(JournalPath(path)));
  EXPECT_EQ(RecordValueText(*Load(path), 1, 1, {}), "99");

  CutShortSave(path, "1000");  // two bytes differ: the crash falls between them
  ASSERT_TRUE(fs::exists(JournalPath(path)));
  set = RunQvdb({"set", path, "1", "Name=BOLT"});
  ASSERT_EQ(set.exit_code, 0) << set.err;
  EXPECT_FALSE(fs::exists(JournalPath(path)));
  auto after = Load(path);
  EXPECT_EQ(RecordValueText(*after, 0, 0, {}), "BOLT");
  EXPECT_EQ(RecordValueText(*after, 0, 1, {}), "10");  // the cut-short change is not half there
  EXPECT_EQ(RecordValueText(*after, 1, 1, {}), "99");
}

}  // namespace
}  // namespace qv::test
