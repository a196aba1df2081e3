// Saves written in place: only when the file keeps its size and little changes, the same bytes a
// whole save writes, and a save cut short at any step leaves the old version or the new one for
// every reader and for the next writer.

#include "engine/save_journal.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "engine/database.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

namespace fs = std::filesystem;

std::uint64_t InodeOf(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 ? st.st_ino : 0;
}

Bytes Read(const std::string& path) {
  auto bytes = ReadWholeFile(path);
  return bytes ? *bytes : Bytes{};
}

class SaveInPlace : public ::testing::Test {
 protected:
  test::TempFolder folder_;
  test::FixedClock clock_;
  std::string path_ = folder_.Path("Stock.PDB");

  std::unique_ptr<Database> Opened() {
    auto db = std::make_unique<Database>();
    test::ScriptedPrompter prompter;
    EXPECT_TRUE(LoadDatabase(*db, path_, prompter));
    return db;
  }
  std::unique_ptr<Database> Saved() {
    auto db = test::DatabaseBuilder("Stock")
                  .Field("Name", kText)
                  .Field("Qty", kInteger)
                  .Row({"bolt", "10"})
                  .Row({"nut", "20"})
                  .Row({"washer", "30"})
                  .Build();
    db->path = path_;
    EXPECT_TRUE(SaveDatabase(*db, clock_));
    return Opened();
  }
  void Set(Database& db, std::uint32_t number, const std::string& name, const std::string& qty) {
    StoreRecord(db, test::ValuesFromTexts(db, {{0, name}, {1, qty}}), number);
  }
  // The bytes a whole save of `db` would write now.
  Bytes WholeSave(const Database& db) {
    Database copy = db;
    copy.header.modification_date = FileTimeNow(clock_);
    return SerializeDatabase(copy);
  }
};

TEST_F(SaveInPlace, SameSizeChangeIsWrittenInPlaceAsTheWholeSaveWouldWriteIt) {
  auto db = Saved();
  const auto inode = InodeOf(path_);
  Set(*db, 1, "NUT", "99");
  const Bytes expected = WholeSave(*db);
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  EXPECT_EQ(InodeOf(path_), inode);  // written in place
  EXPECT_EQ(Read(path_), expected);
  EXPECT_FALSE(fs::exists(JournalPath(path_)));
  EXPECT_EQ(RecordValueText(*Opened(), 1, 0, {}), "NUT");

  // The second save of the same open database compares with what is now on disk, not with
  // the image it read: it goes through the whole save, and is right.
  Set(*db, 2, "WASHER", "31");
  const Bytes second = WholeSave(*db);
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  EXPECT_EQ(Read(path_), second);

  // A record that grows moves every later one: the whole file is written beside and renamed.
  db = Opened();
  const auto before_growth = InodeOf(path_);
  Set(*db, 0, "bolt, stainless", "10");
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  EXPECT_NE(InodeOf(path_), before_growth);
  EXPECT_EQ(RecordValueText(*Opened(), 0, 0, {}), "bolt, stainless");
}

TEST_F(SaveInPlace, ChangesFarIntoALongRecordListAreAllWritten) {
  test::DatabaseBuilder builder("Stock");
  builder.Field("Name", kText).Field("Qty", kInteger);
  for (int i = 0; i < 400; ++i) builder.Row({"item " + std::to_string(1000 + i), "1"});
  auto made = builder.Build();
  made->path = path_;
  ASSERT_TRUE(SaveDatabase(*made, clock_));
  auto db = Opened();
  const auto inode = InodeOf(path_);
  // The list is several kilobytes: one entry's attribute byte late in it, one value in a record.
  db->records[390].attributes ^= 0x10;
  Set(*db, 150, "ITEM 1150", "2");
  db->changed = true;
  const Bytes expected = WholeSave(*db);
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  EXPECT_EQ(InodeOf(path_), inode);  // written in place
  EXPECT_EQ(Read(path_), expected);
}

// As the desktop program saves: a copy is saved and its stamp taken back. The open database's
// image is then no longer the file, and a change undone must still reach the disk.
TEST_F(SaveInPlace, ACopySavedInItsPlaceRetiresTheImage) {
  auto d = Saved();
  Set(*d, 1, "NUT", "99");
  Database image = *d;
  ASSERT_TRUE(SaveDatabase(image, clock_));
  d->disk = image.disk;
  Set(*d, 1, "nut", "20");  // what the file first held
  ASSERT_TRUE(SaveDatabase(*d, clock_));
  EXPECT_EQ(RecordValueText(*Opened(), 1, 0, {}), "nut");
}

TEST_F(SaveInPlace, ChangedOnDiskIsRefusedInPlaceToo) {
  auto mine = Saved();
  auto theirs = Opened();
  Set(*theirs, 0, "BOLT", "11");
  ASSERT_TRUE(SaveDatabase(*theirs, clock_));
  Set(*mine, 0, "bolt", "12");
  SaveOutcome outcome;
  EXPECT_FALSE(SaveDatabase(*mine, clock_, &outcome));
  EXPECT_EQ(outcome.result, WriteResult::ChangedOnDisk);
  EXPECT_EQ(RecordValueText(*Opened(), 0, 0, {}), "BOLT");
}

// A file of 10 KB and two patches, the second across a sector boundary; `crash_after` patches
// written, a child process ends without finishing the save.
class InterruptedSave : public ::testing::Test {
 protected:
  test::TempFolder folder_;
  std::string path_ = folder_.Path("Raw.PDB");
  Bytes old_ = Bytes(10000, 0);
  Bytes first_ = Bytes(10, 0xA1);
  Bytes second_ = Bytes(600, 0xB2);
  Bytes new_;

  void SetUp() override {
    for (std::size_t i = 0; i < old_.size(); ++i) old_[i] = static_cast<std::uint8_t>(i * 7);
    ASSERT_EQ(WriteFileAtomically(path_, old_), WriteResult::Written);
    new_ = old_;
    std::copy(first_.begin(), first_.end(), new_.begin() + 100);
    std::copy(second_.begin(), second_.end(), new_.begin() + 4800);
  }
  void CrashAfter(std::size_t written) {
    const FilePatch patches[] = {{100, first_}, {4800, second_}};
    const FileStamp stamp = StampOf(path_);
    pid_t child = ::fork();
    if (child == 0) {
      PatchFileInPlace(path_, patches, stamp, [&](std::size_t n) {
        if (n == written) ::_exit(0);
      });
      ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    ASSERT_TRUE(fs::exists(JournalPath(path_)));
  }
};

TEST_F(InterruptedSave, PartlyWrittenReadsAsTheOldVersionAndIsPutBack) {
  CrashAfter(1);
  EXPECT_NE(test::Slurp(path_), std::string(old_.begin(), old_.end()));  // torn on disk
  EXPECT_EQ(Read(path_), old_);  // every reader gets the old version
  std::size_t size = 0;
  auto start = ReadFileStart(path_, 200, size);
  ASSERT_TRUE(start);
  EXPECT_EQ(*start, Bytes(old_.begin(), old_.begin() + 200));

  ASSERT_TRUE(RecoverInterruptedSave(path_));
  EXPECT_EQ(test::Slurp(path_), std::string(old_.begin(), old_.end()));
  EXPECT_FALSE(fs::exists(JournalPath(path_)));
}

TEST_F(InterruptedSave, FullyWrittenButJournalLeftKeepsTheNewVersion) {
  CrashAfter(2);
  EXPECT_EQ(Read(path_), new_);
  ASSERT_TRUE(RecoverInterruptedSave(path_));
  EXPECT_EQ(Read(path_), new_);
  EXPECT_FALSE(fs::exists(JournalPath(path_)));
}

TEST_F(InterruptedSave, NextSaveInPlaceStartsFromTheOldVersion) {
  CrashAfter(1);
  const Bytes third(4, 0xC3);
  const FilePatch patch[] = {{5000, third}};
  // Not over the torn file: that is for a whole save, or for a writer that put it back first.
  EXPECT_FALSE(PatchFileInPlace(path_, patch, StampOf(path_)));
  ASSERT_TRUE(fs::exists(JournalPath(path_)));
  ASSERT_TRUE(RecoverInterruptedSave(path_));
  auto outcome = PatchFileInPlace(path_, patch, StampOf(path_));
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->result, WriteResult::Written);
  Bytes expected = old_;
  std::copy(third.begin(), third.end(), expected.begin() + 5000);
  EXPECT_EQ(Read(path_), expected);
  EXPECT_FALSE(fs::exists(JournalPath(path_)));
}

TEST_F(InterruptedSave, JournalsThatDoNotApplyAreIgnoredAndDropped) {
  // Cut short while the journal itself was written: the file was not touched.
  test::WriteText(JournalPath(path_), "QVJOURN1 and then nothing");
  EXPECT_EQ(Read(path_), old_);
  ASSERT_TRUE(RecoverInterruptedSave(path_));
  EXPECT_FALSE(fs::exists(JournalPath(path_)));

  // The file replaced by a whole save since: the journal was for another file.
  CrashAfter(1);
  Bytes other(10000, 0x55);
  ASSERT_EQ(WriteFileAtomically(path_, other), WriteResult::Written);
  EXPECT_EQ(Read(path_), other);
  ASSERT_TRUE(RecoverInterruptedSave(path_));
  EXPECT_EQ(Read(path_), other);
  EXPECT_FALSE(fs::exists(JournalPath(path_)));

  // Rewritten in place by another program (same file, other bytes): not undone either.
  CrashAfter(1);
  test::WriteText(path_, std::string(10000, 'z'));
  ASSERT_TRUE(RecoverInterruptedSave(path_));
  EXPECT_EQ(test::Slurp(path_), std::string(10000, 'z'));
}

TEST_F(InterruptedSave, DatabaseOpensAsBeforeTheSave) {
  auto db = test::DatabaseBuilder("Stock").Field("Qty", kInteger).Row({"1"}).Row({"2"}).Build();
  db->path = path_;
  test::FixedClock clock;
  ASSERT_TRUE(SaveDatabase(*db, clock));
  const Bytes before = Read(path_);
  test::ScriptedPrompter prompter;
  Database opened;
  ASSERT_TRUE(LoadDatabase(opened, path_, prompter));
  StoreRecord(opened, test::ValuesFromTexts(opened, {{0, "7"}}), 1);
  std::vector<RawRecord> schema;
  ContainerLayout layout = LayOutDatabase(opened, schema);
  Bytes after = JoinPieces(layout);
  ASSERT_EQ(after.size(), before.size());
  std::vector<FilePatch> patches;  // one per changed byte, so the crash falls between them
  for (std::size_t i = 0; i < after.size(); ++i)
    if (after[i] != before[i]) patches.push_back({i, std::span(after).subspan(i, 1)});
  ASSERT_GE(patches.size(), 2u);
  pid_t child = ::fork();
  if (child == 0) {
    PatchFileInPlace(path_, patches, opened.disk, [](std::size_t n) {
      if (n == 1) ::_exit(0);
    });
    ::_exit(1);
  }
  ::waitpid(child, nullptr, 0);
  Database reopened;
  ASSERT_TRUE(LoadDatabase(reopened, path_, prompter));
  EXPECT_EQ(RecordValueText(reopened, 1, 0, {}), "2");
  EXPECT_EQ(Read(path_), before);
}

}  // namespace
}  // namespace qv
