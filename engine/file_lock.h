#pragma once
// The advisory lock that keeps two writers of one database from losing each other's changes. A
// qvdb command holds it for its whole read-modify-write; the desktop program holds it while it
// has unsaved changes. Saves replace the file, so a lock taken on a file that was replaced
// meanwhile is dropped and taken again on the new one.

#include <chrono>
#include <optional>
#include <string>

namespace qv {

// The process holding a lock, where the system tells.
struct LockHolder {
  long pid = 0;
  std::string program;           // its command name
  std::string Describe() const;  // "quorvant (process 1234)"
};

class FileLock {
 public:
  // Unavailable: there is no regular file to lock (not created yet, or unreadable).
  enum class Result { Locked, Busy, Unavailable };

  FileLock() = default;
  ~FileLock() { Unlock(); }
  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Takes the exclusive lock on the file at `path` without waiting.
  Result TryLock(const std::string& path);
  void Unlock();
  bool locked() const { return fd_ >= 0; }
  // Whether the lock is held for `path`.
  bool Holds(const std::string& path) const { return fd_ >= 0 && path_ == path; }

 private:
  int fd_ = -1;
  std::string path_;
};

// Who holds the lock on the file at `path`; nothing when nobody does or it cannot be known.
std::optional<LockHolder> FindLockHolder(const std::string& path);

// Locks for a read-modify-write. Another qvdb command (or a holder that cannot be named) is
// waited for up to `patience`, since it ends soon; any other holder keeps its lock and Busy
// comes back at once. `holder` receives who was in the way.
FileLock::Result LockForUpdate(FileLock& lock, const std::string& path,
                               std::chrono::milliseconds patience,
                               std::optional<LockHolder>* holder = nullptr);

}  // namespace qv
