// Saving never loses a file: permissions and links are kept, a file changed or held by another
// program is not overwritten, killed saves leave no litter, and only regular files are read.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "engine/atomic_file.h"
#include "engine/database.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

namespace fs = std::filesystem;

class FileSafety : public ::testing::Test {
 protected:
  test::TempFolder folder_;
  test::FixedClock clock_;
  std::string path_ = folder_.Path("Stock.PDB");

  // A database saved at path_ and read back, as a program that opened it holds it.
  std::unique_ptr<Database> Saved(const std::string& row = "bolt") {
    auto db = test::DatabaseBuilder("Stock").Field("Name", kText).Row({row}).Build();
    db->path = path_;
    EXPECT_TRUE(SaveDatabase(*db, clock_));
    return Opened();
  }
  std::unique_ptr<Database> Opened() {
    auto db = std::make_unique<Database>();
    test::ScriptedPrompter prompter;
    EXPECT_TRUE(LoadDatabase(*db, path_, prompter));
    return db;
  }
  std::vector<std::string> Leftovers() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder_.path()))
      if (e.path().filename().string().find(".saving") != std::string::npos)
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  void Edit(Database& db, const std::string& text) {
    StoreRecord(db, test::ValuesFromTexts(db, {{0, text}}), 0);
  }
};

TEST_F(FileSafety, ModeOwnerAndLinksAreKept) {
  auto db = Saved();
  ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
  db = Opened();
  Edit(*db, "nut");
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  EXPECT_EQ(fs::status(path_).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  if (::geteuid() == 0) {  // only root may give a file away; the save must give it back
    ASSERT_EQ(::chown(path_.c_str(), 65534, 65534), 0);
    Edit(*db, "washer");
    ASSERT_TRUE(SaveDatabase(*db, clock_));
    struct stat st;
    ASSERT_EQ(::stat(path_.c_str(), &st), 0);
    EXPECT_EQ(st.st_uid, 65534u);
    EXPECT_EQ(st.st_gid, 65534u);
  }

  // Through a link: the target gets the new contents, the link stays a link.
  std::string link = folder_.Path("Link.PDB");
  fs::create_symlink("Stock.PDB", link);
  Database via;
  test::ScriptedPrompter prompter;
  ASSERT_TRUE(LoadDatabase(via, link, prompter));
  Edit(via, "screw");
  ASSERT_TRUE(SaveDatabase(via, clock_));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(RecordValueText(*Opened(), 0, 0, {}), "screw");
  EXPECT_TRUE(Leftovers().empty());
}

TEST_F(FileSafety, ReadOnlyFileIsRefusedAndKept) {
  Saved();
  ASSERT_EQ(::chmod(path_.c_str(), 0444), 0);
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0777), 0);
  const std::string before = test::Slurp(path_);
  // As an ordinary user: root could write any file, so the save runs in a child that is not.
  pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) ::_exit(2);
    Database db;
    test::ScriptedPrompter prompter;
    if (!LoadDatabase(db, path_, prompter)) ::_exit(3);
    db.changed = true;
    SaveOutcome outcome;
    bool saved = SaveDatabase(db, test::FixedClock(), &outcome);
    bool refused = !saved && outcome.result == WriteResult::CannotOpen && db.changed &&
                   SaveFailureText(outcome, path_).find("for writing") != std::string::npos;
    ::_exit(refused ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(test::Slurp(path_), before);
  EXPECT_EQ(fs::status(path_).permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  EXPECT_TRUE(Leftovers().empty());
}

TEST_F(FileSafety, FileChangedOnDiskIsNotOverwritten) {
  auto mine = Saved();
  auto theirs = Opened();
  Edit(*theirs, "theirs");
  ASSERT_TRUE(SaveDatabase(*theirs, clock_));
  Edit(*mine, "mine");
  SaveOutcome outcome;
  EXPECT_FALSE(SaveDatabase(*mine, clock_, &outcome));
  EXPECT_EQ(outcome.result, WriteResult::ChangedOnDisk);
  EXPECT_TRUE(mine->changed);  // nothing is lost: the changes stay to be saved elsewhere
  EXPECT_EQ(RecordValueText(*Opened(), 0, 0, {}), "theirs");
  EXPECT_TRUE(Leftovers().empty());

  // Saved under another name it goes through; a file that appeared meanwhile is not replaced.
  mine->path = folder_.Path("Mine.PDB");
  EXPECT_TRUE(SaveDatabase(*mine, clock_));
  auto fresh = test::DatabaseBuilder("New").Field("Name", kText).Build();
  fresh->path = folder_.Path("New.PDB");
  fresh->disk = StampOf(fresh->path);
  test::WriteText(fresh->path, "someone else's");
  EXPECT_FALSE(SaveDatabase(*fresh, clock_, &outcome));
  EXPECT_EQ(outcome.result, WriteResult::ChangedOnDisk);
  EXPECT_EQ(test::Slurp(fresh->path), "someone else's");
}

TEST_F(FileSafety, LockedFileIsNotSavedAndTheHolderIsNamed) {
  auto db = Saved();
  FileLock other;  // another program's lock, on a descriptor of its own
  ASSERT_EQ(other.TryLock(path_), FileLock::Result::Locked);
  auto holder = FindLockHolder(path_);
  ASSERT_TRUE(holder);
  EXPECT_EQ(holder->pid, ::getpid());

  Edit(*db, "nut");
  SaveOutcome outcome;
  EXPECT_FALSE(SaveDatabase(*db, clock_, &outcome));
  EXPECT_TRUE(outcome.in_use);
  EXPECT_TRUE(db->changed);
  EXPECT_NE(SaveFailureText(outcome, path_).find("process " + std::to_string(::getpid())),
            std::string::npos);
  other.Unlock();
  EXPECT_TRUE(SaveDatabase(*db, clock_));
}

TEST_F(FileSafety, KilledSavesLeaveNothingBehind) {
  Saved();
  // What killed saves leave: the old fixed name and unique names, none locked any more.
  test::WriteText(path_ + ".saving", std::string(1000, 'x'));
  test::WriteText(path_ + ".saving.Ab12Cd", std::string(1000, 'x'));
  // A save still running holds its temporary locked; it is kept.
  std::string running = path_ + ".saving.Zz99Yy";
  test::WriteText(running, "in progress");
  int fd = ::open(running.c_str(), O_RDONLY);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  test::WriteText(folder_.Path("Other.PDB.saving"), "another file's");

  Opened();  // opening cleans up too
  EXPECT_EQ(Leftovers(), std::vector<std::string>({"Other.PDB.saving", "Stock.PDB.saving.Zz99Yy"}));
  ::close(fd);
  auto db = Opened();
  db->changed = true;
  ASSERT_TRUE(SaveDatabase(*db, clock_));
  EXPECT_EQ(Leftovers(), std::vector<std::string>({"Other.PDB.saving"}));
}

TEST_F(FileSafety, OnlyRegularFilesAreRead) {
  std::string dir = folder_.Path("Dir.PDB"), fifo = folder_.Path("Pipe.PDB");
  fs::create_directory(dir);
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
  for (const std::string& path : {dir, fifo, std::string("/dev/zero")}) {
    EXPECT_FALSE(ReadWholeFile(path)) << path;
    EXPECT_FALSE(TestForFile(path)) << path;
    Header header;
    EXPECT_EQ(ReadHeader(path, header), 0) << path;
    Database db;
    test::ScriptedPrompter prompter;
    EXPECT_FALSE(LoadDatabase(db, path, prompter));
    EXPECT_EQ(prompter.Messages(),
              std::vector<std::string>({"ERROR: Cannot Open File: " + path + " for reading"}));
  }
  // Input to import may come from a pipe (/dev/stdin, a shell's <(...)); devices and folders not.
  std::thread writer([&] { test::WriteText(fifo, "Name\nbolt\n"); });
  auto piped = ReadInputFile(fifo);
  writer.join();
  ASSERT_TRUE(piped);
  EXPECT_EQ(std::string(piped->begin(), piped->end()), "Name\nbolt\n");
  EXPECT_FALSE(ReadInputFile("/dev/zero"));
  EXPECT_FALSE(ReadInputFile(dir));
  test::WriteText(path_, std::string(100, 'x'));
  EXPECT_EQ(ReadInputFile(path_, 100)->size(), 100u);
  EXPECT_FALSE(ReadWholeFile(path_, 99));
  EXPECT_EQ(ReadWholeFile(path_, 100)->size(), 100u);
}

// What a saving command does (lock, read, change, save), in a child killed at a random moment:
// 200 kills, 20 at a time on files of their own. Every file left behind opens with the records
// of before or after, and the next successful save leaves no temporary.
TEST_F(FileSafety, KilledSavesLeaveTheOldFileOrTheNew) {
  constexpr int kLanes = 20, kRounds = 10;
  auto seed = test::DatabaseBuilder("Log").Field("Name", kText, 200).Build();
  for (int i = 0; i < 500; ++i)
    seed->records.push_back(seed->records.empty() ? RecordSlot{} : seed->records[0]);
  auto add_one = [this](const std::string& path) {
    Database db;
    LockForUpdate(db.lock, path, std::chrono::seconds(5));
    test::ScriptedPrompter prompter;
    if (!LoadDatabase(db, path, prompter)) ::_exit(1);
    StoreRecord(db, test::ValuesFromTexts(db, {{0, std::string(150, 'x')}}), kNewRecord);
    ::_exit(SaveDatabase(db, clock_) ? 0 : 1);
  };
  std::vector<std::string> files;
  std::vector<std::uint32_t> counts;
  for (int lane = 0; lane < kLanes; ++lane) {
    seed->path = folder_.Path("Lane" + std::to_string(lane) + ".PDB");
    ASSERT_TRUE(SaveDatabase(*seed, clock_));
    files.push_back(seed->path);
    counts.push_back(seed->count());
  }
  auto started = std::chrono::steady_clock::now();  // one command's life, to spread the kills over
  pid_t timing = ::fork();
  if (timing == 0) add_one(folder_.Path("Timing.PDB"));
  ::waitpid(timing, nullptr, 0);
  auto span = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - started);
  std::mt19937 random(2026);
  std::uniform_int_distribution<long> moment(0, span.count() * 3 / 2);
  for (int round = 0; round < kRounds; ++round) {
    std::vector<std::pair<std::chrono::steady_clock::time_point, pid_t>> running;
    for (const auto& file : files) {
      auto start = std::chrono::steady_clock::now();
      pid_t pid = ::fork();
      if (pid == 0) add_one(file);
      running.push_back({start + std::chrono::microseconds(moment(random)), pid});
    }
    std::sort(running.begin(), running.end());
    for (auto [at, pid] : running) {
      std::this_thread::sleep_until(at);
      ::kill(pid, SIGKILL);
    }
    for (auto [at, pid] : running) ::waitpid(pid, nullptr, 0);
    for (std::size_t lane = 0; lane < files.size(); ++lane) {
      Database db;
      test::ScriptedPrompter prompter;
      ASSERT_TRUE(LoadDatabase(db, files[lane], prompter)) << "lane " << lane << " round " << round;
      ASSERT_TRUE(db.count() == counts[lane] || db.count() == counts[lane] + 1) << db.count();
      counts[lane] = db.count();
    }
  }
  for (const auto& file : files) {
    Database db;
    test::ScriptedPrompter prompter;
    ASSERT_TRUE(LoadDatabase(db, file, prompter));
    db.changed = true;
    ASSERT_TRUE(SaveDatabase(db, clock_));
  }
  EXPECT_TRUE(Leftovers().empty());
}

}  // namespace
}  // namespace qv
