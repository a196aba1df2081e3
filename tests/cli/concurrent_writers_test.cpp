// Many qvdb commands on one database at once, and a program holding it with unsaved changes: no
// acknowledged write is lost and no temporary is left behind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <set>

#include "engine/database.h"
#include "engine/file_lock.h"
#include "tests/cli/qvdb_runner.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

namespace fs = std::filesystem;

// Starts qvdb without waiting for it; its output goes nowhere. Spawned rather than forked, so
// hundreds start quickly from a large test process.
pid_t StartQvdb(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  std::string program = QVDB_PATH;
  argv.push_back(program.data());
  for (auto& a : arguments) argv.push_back(a.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t pid = -1;
  if (posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ) != 0) pid = -1;
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

int Wait(pid_t pid) {
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The Name values of every record, or nothing when the file does not open.
std::optional<std::multiset<std::string>> Names(const std::string& path) {
  Database db;
  ScriptedPrompter prompter;
  if (!LoadDatabase(db, path, prompter)) return std::nullopt;
  std::multiset<std::string> names;
  for (std::uint32_t i = 0; i < db.count(); ++i) names.insert(RecordValueText(db, i, 0, {}));
  return names;
}

bool HasTemporaries(const std::string& folder) {
  for (const auto& e : fs::directory_iterator(folder))
    if (e.path().filename().string().find(".saving") != std::string::npos) return true;
  return false;
}

TEST(ConcurrentWriters, EveryAcknowledgedAddIsKept) {
  TempFolder folder;
  std::string file = folder.Path("Log.PDB");
  ASSERT_EQ(RunQvdb({"new", file, "--field", "Name:Text"}).exit_code, 0);
  std::vector<pid_t> writers;
  for (int i = 0; i < 20; ++i)
    writers.push_back(StartQvdb({"add", file, "Name=w" + std::to_string(i)}));
  std::set<std::string> acknowledged, refused;
  for (int i = 0; i < 20; ++i)
    (Wait(writers[static_cast<std::size_t>(i)]) == 0 ? acknowledged : refused)
        .insert("w" + std::to_string(i));
  auto names = Names(file);
  ASSERT_TRUE(names);
  for (const auto& name : acknowledged) EXPECT_EQ(names->count(name), 1u) << name;
  for (const auto& name : refused) EXPECT_EQ(names->count(name), 0u) << name;
  EXPECT_EQ(names->size(), acknowledged.size());
  EXPECT_GE(acknowledged.size(), 1u);
  EXPECT_FALSE(HasTemporaries(folder.path()));
}

TEST(ConcurrentWriters, FileHeldWithUnsavedChangesIsRefusedByName) {
  TempFolder folder;
  std::string file = folder.Path("Log.PDB");
  ASSERT_EQ(RunQvdb({"new", file, "--field", "Name:Text"}).exit_code, 0);
  std::string before = Slurp(file);
  FileLock held;  // as the desktop program holds a database it has changed
  ASSERT_EQ(held.TryLock(file), FileLock::Result::Locked);
  auto started = std::chrono::steady_clock::now();
  auto add = RunQvdb({"add", file, "Name=late"});
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(4));  // not waited out
  EXPECT_EQ(add.exit_code, 1);
  EXPECT_NE(add.err.find("in use by"), std::string::npos) << add.err;
  EXPECT_NE(add.err.find("process " + std::to_string(::getpid())), std::string::npos) << add.err;
  EXPECT_EQ(Slurp(file), before);
  // Reading is not held up.
  EXPECT_EQ(RunQvdb({"info", file}).exit_code, 0);
  held.Unlock();
  EXPECT_EQ(RunQvdb({"add", file, "Name=late"}).exit_code, 0);
}

}  // namespace
}  // namespace qv::test
