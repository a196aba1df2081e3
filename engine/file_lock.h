#pragma once
// The advisory lock that keeps two writers of one database from losing each other's changes. A
// qvdb command holds it for its whole read-modify-write; the desktop program holds it while it
// has unsaved changes. Saves replace the file, so a lock taken on a file that was replaced
// meanwhile is dropped and taken again on the new one.

#include <chrono>
#include <memory>
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

  // Copies share the one lock: a working copy of a database (the image a save writes, a
  // background task's copy) acts under the lock of the database it was copied from.
  FileLock() = default;

  // Takes the exclusive lock on the file at `path` without waiting.
  Result TryLock(const std::string& path);
  // Releases the lock, for every copy that shares it.
  void Unlock();
  bool locked() const { return held_ && held_->fd >= 0; }
  // Whether the lock is held for `path`.
  bool Holds(const std::string& path) const { return locked() && held_->path == path; }

 private:
  struct Held {
    int fd = -1;
    std::string path;
    Held(int f, std::string p) : fd(f), path(std::move(p)) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { Release(); }
    void Release();
  };
  std::shared_ptr<Held> held_;
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
