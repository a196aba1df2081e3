#include "engine/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <thread>

namespace qv {

std::string LockHolder::Describe() const {
  std::string name = program.empty() ? "another program" : program;
  return pid > 0 ? name + " (process " + std::to_string(pid) + ")" : name;
}

FileLock::Result FileLock::TryLock(const std::string& path) {
  Unlock();
  // A save may replace the file between our open and our lock; then the lock is on a file that
  // is no longer there, so it is taken again on the new one.
  for (int attempt = 0; attempt < 20; ++attempt) {
    int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return Result::Unavailable;
    struct stat locked, named;
    if (::fstat(fd, &locked) != 0 || !S_ISREG(locked.st_mode)) {
      ::close(fd);
      return Result::Unavailable;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      ::close(fd);
      return errno == EWOULDBLOCK ? Result::Busy : Result::Unavailable;
    }
    if (::stat(path.c_str(), &named) == 0 && named.st_dev == locked.st_dev &&
        named.st_ino == locked.st_ino) {
      held_ = std::make_shared<Held>(fd, path);
      return Result::Locked;
    }
    ::close(fd);
  }
  return Result::Busy;
}

void FileLock::Held::Release() {
  if (fd >= 0) ::close(fd);  // closing the last descriptor releases the lock
  fd = -1;
  path.clear();
}

void FileLock::Unlock() {
  if (held_) held_->Release();
  held_.reset();
}

namespace {

std::string ProgramName(long pid) {
  std::ifstream comm("/proc/" + std::to_string(pid) + "/comm");
  std::string name;
  std::getline(comm, name);
  return name;
}

}  // namespace

std::optional<LockHolder> FindLockHolder(const std::string& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return std::nullopt;
  // Linux lists every lock with its owner: "1: FLOCK  ADVISORY  WRITE 1234 08:02:131090 0 EOF".
  std::ifstream locks("/proc/locks");
  std::string line;
  while (std::getline(locks, line)) {
    std::istringstream in(line);
    std::string id, kind, mode, access, device;
    long pid = 0;
    if (!(in >> id >> kind) || kind == "->") continue;  // a waiter, not a holder
    if (!(in >> mode >> access >> pid >> device)) continue;
    unsigned major_no = 0, minor_no = 0;
    unsigned long long inode = 0;
    if (std::sscanf(device.c_str(), "%x:%x:%llu", &major_no, &minor_no, &inode) != 3) continue;
    if (inode != st.st_ino || major_no != major(st.st_dev) || minor_no != minor(st.st_dev))
      continue;
    LockHolder holder;
    holder.pid = pid;
    if (pid > 0) holder.program = ProgramName(pid);
    return holder;
  }
  return std::nullopt;
}

FileLock::Result LockForUpdate(FileLock& lock, const std::string& path,
                               std::chrono::milliseconds patience,
                               std::optional<LockHolder>* holder) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (;;) {
    FileLock::Result result = lock.TryLock(path);
    if (result != FileLock::Result::Busy) return result;
    std::optional<LockHolder> who = FindLockHolder(path);
    if (holder) *holder = who;
    bool short_lived = !who || who->program.empty() || who->program == "qvdb";
    if (!short_lived || std::chrono::steady_clock::now() >= deadline) return result;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace qv
