#include "engine/atomic_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <type_traits>

#include "engine/save_journal.h"

namespace qv {

namespace {

namespace fs = std::filesystem;

FileStamp StampFromStat(const struct stat& st) {
  FileStamp stamp;
  stamp.exists = true;
  stamp.device = static_cast<std::uint64_t>(st.st_dev);
  stamp.inode = static_cast<std::uint64_t>(st.st_ino);
  stamp.size = static_cast<std::uint64_t>(st.st_size);
  stamp.modified_ns = std::int64_t{st.st_mtim.tv_sec} * 1000000000 + st.st_mtim.tv_nsec;
  return stamp;
}

// The mode a newly created file gets: what open(2) would give it under the current umask.
mode_t NewFileMode() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("Umask:", 0) == 0)
      return 0666 & ~static_cast<mode_t>(std::stoul(line.substr(6), nullptr, 8));
  return 0644;
}

// The new version takes the old file's mode, and its owner and group where we may set them.
void CopyAttributes(int fd, const std::string& target) {
  struct stat st;
  if (::stat(target.c_str(), &st) != 0) {
    ::fchmod(fd, NewFileMode());
    return;
  }
  if (st.st_uid != ::geteuid() || st.st_gid != ::getegid()) {
    if (::fchown(fd, st.st_uid, st.st_gid) != 0)
      (void)::fchown(fd, static_cast<uid_t>(-1), st.st_gid);
  }
  ::fchmod(fd, st.st_mode & 07777);  // after fchown, which may clear set-id bits
}

void SyncFolder(const std::string& file) {
  std::string folder = fs::path(file).parent_path().string();
  int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

// Renames without replacing: the target must still be absent.
int RenameNoReplace(const std::string& from, const std::string& to) {
  int r = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  if (r == 0 || (errno != EINVAL && errno != ENOSYS)) return r;
  if (::access(to.c_str(), F_OK) == 0) {  // a file system without the flag: check, then rename
    errno = EEXIST;
    return -1;
  }
  return ::rename(from.c_str(), to.c_str());
}

bool IsTemporaryOf(const std::string& name, const std::string& base) {
  const std::string prefix = base + ".saving";
  if (name == prefix) return true;  // the fixed name older versions used
  return name.size() == prefix.size() + 7 && name.compare(0, prefix.size() + 1, prefix + ".") == 0;
}

}  // namespace

bool FileStamp::SameFile(const FileStamp& o) const {
  if (exists != o.exists) return false;
  return !exists ||
         (device == o.device && inode == o.inode && size == o.size && modified_ns == o.modified_ns);
}

std::string FileStamp::ToText() const {
  if (!exists) return {};
  std::ostringstream out;
  out << device << ' ' << inode << ' ' << size << ' ' << modified_ns;
  return out.str();
}

FileStamp FileStamp::FromText(const std::string& path, const std::string& text) {
  FileStamp stamp;
  stamp.path = path;
  std::istringstream in(text);
  stamp.exists =
      static_cast<bool>(in >> stamp.device >> stamp.inode >> stamp.size >> stamp.modified_ns);
  if (!stamp.exists) stamp = FileStamp{path};
  return stamp;
}

FileStamp StampOf(const std::string& path) {
  struct stat st;
  FileStamp stamp;
  if (::stat(path.c_str(), &st) == 0) stamp = StampFromStat(st);
  stamp.path = path;
  return stamp;
}

int OpenRegularFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return -1;
  struct stat st;
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    errno = EINVAL;
    return -1;
  }
  return fd;
}

namespace {

// One read of the whole file, into storage made for it.
template <class Buffer>
std::optional<Buffer> ReadOnce(int fd, std::uint64_t limit, FileStamp& stamp) {
  struct stat st;
  if (::fstat(fd, &st) != 0 || static_cast<std::uint64_t>(st.st_size) > limit) return std::nullopt;
  const std::string path = stamp.path;
  stamp = StampFromStat(st);
  stamp.path = path;
  Buffer bytes(static_cast<std::size_t>(st.st_size));
  std::size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = ::pread(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return std::nullopt;
    if (n == 0) break;  // shrunk while being read: what is there
    done += static_cast<std::size_t>(n);
  }
  if (done < bytes.size()) {
    if constexpr (std::is_same_v<Buffer, Bytes>)
      bytes.resize(done);
    else
      bytes.Shrink(done);
  }
  return bytes;
}

template <class Buffer>
std::optional<Buffer> ReadWhole(const std::string& path, std::uint64_t limit, FileStamp* stamp) {
  // A save writing a few bytes in place may run meanwhile: what it had written is undone in the
  // copy, or the file (perhaps replaced by then) is opened and read again once it has finished.
  std::optional<Buffer> bytes;
  FileStamp read;
  read.path = path;
  for (int attempt = 0; attempt < 50; ++attempt) {
    int fd = OpenRegularFile(path);
    if (fd < 0) return std::nullopt;
    bytes = ReadOnce<Buffer>(fd, limit, read);
    ::close(fd);
    if (!bytes || CheckJournal(path, read, *bytes) != JournalCheck::ReadAgain) break;
    bytes.reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  if (bytes && stamp) *stamp = read;
  return bytes;
}

}  // namespace

std::optional<Bytes> ReadWholeFile(const std::string& path, std::uint64_t limit, FileStamp* stamp) {
  return ReadWhole<Bytes>(path, limit, stamp);
}

std::optional<FileBytes> ReadFileImage(const std::string& path, std::uint64_t limit,
                                       FileStamp* stamp) {
  return ReadWhole<FileBytes>(path, limit, stamp);
}

std::optional<Bytes> ReadInputFile(const std::string& path, std::uint64_t limit) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return std::nullopt;
  if (S_ISREG(st.st_mode)) return ReadWholeFile(path, limit);
  if (!S_ISFIFO(st.st_mode) && !S_ISSOCK(st.st_mode)) return std::nullopt;
  int fd = ::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);  // waits for a writer, as asked
  if (fd < 0) return std::nullopt;
  Bytes bytes;
  std::uint8_t chunk[1 << 16];
  for (;;) {
    ssize_t n = ::read(fd, chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0 || bytes.size() + static_cast<std::size_t>(n) > limit) {
      ::close(fd);
      if (n == 0) return bytes;
      return std::nullopt;
    }
    bytes.insert(bytes.end(), chunk, chunk + n);
  }
}

std::string SaveTarget(const std::string& path) {
  fs::path p = path;
  for (int hops = 0; hops < 40; ++hops) {  // the system's own limit on chained links
    std::error_code ec;
    if (!fs::is_symlink(fs::symlink_status(p, ec))) break;
    fs::path link = fs::read_symlink(p, ec);
    if (ec) break;
    p = link.is_absolute() ? link : p.parent_path() / link;
  }
  return p.string();
}

AtomicFile::AtomicFile(const std::string& path) : target_(SaveTarget(path)) {
  struct stat st;
  if (::stat(target_.c_str(), &st) == 0) {
    // A file the user may not write is refused, not replaced behind its permissions.
    if (!S_ISREG(st.st_mode)) {
      error_ = EINVAL;
      return;
    }
    if (::faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) {
      error_ = errno;
      return;
    }
  }
  RemoveStaleTemporaries(target_);
  for (int attempt = 0; attempt < 3 && fd_ < 0; ++attempt) {
    temp_ = target_ + ".saving.XXXXXX";
    fd_ = ::mkostemp(temp_.data(), O_CLOEXEC);
    if (fd_ < 0) {
      error_ = errno;
      temp_.clear();
      return;
    }
    ::flock(fd_, LOCK_EX | LOCK_NB);
    // A cleaner that saw it before the lock may have removed it: start again.
    struct stat mine, named;
    ::fstat(fd_, &mine);
    if (::stat(temp_.c_str(), &named) != 0 || named.st_ino != mine.st_ino) {
      ::close(fd_);
      fd_ = -1;
      temp_.clear();
    }
  }
  if (fd_ < 0) error_ = EAGAIN;
}

AtomicFile::~AtomicFile() {
  Discard();
}

bool AtomicFile::Write(const void* data, std::size_t size) {
  const auto* p = static_cast<const std::uint8_t*>(data);
  while (fd_ >= 0 && size > 0) {
    ssize_t n = ::write(fd_, p, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error_ = n < 0 ? errno : ENOSPC;
      return false;
    }
    p += n;
    size -= static_cast<std::size_t>(n);
  }
  return fd_ >= 0;
}

bool AtomicFile::Write(std::span<const std::span<const std::uint8_t>> pieces) {
  // Many pieces (a reordered table) go out a batch at a time rather than joined into a copy.
  std::vector<struct iovec> batch;
  for (std::size_t i = 0; fd_ >= 0 && i < pieces.size();) {
    batch.clear();
    for (; i < pieces.size() && batch.size() < IOV_MAX; ++i) {
      if (pieces[i].empty()) continue;
      batch.push_back({const_cast<std::uint8_t*>(pieces[i].data()), pieces[i].size()});
    }
    ssize_t n = batch.empty() ? 0 : ::writev(fd_, batch.data(), static_cast<int>(batch.size()));
    if (n < 0 && errno == EINTR) n = 0;
    if (n < 0) {
      error_ = errno;
      return false;
    }
    // A short write: the rest of the batch one piece at a time.
    auto done = static_cast<std::size_t>(n);
    for (const struct iovec& v : batch) {
      std::size_t skip = std::min(done, v.iov_len);
      done -= skip;
      if (skip < v.iov_len &&
          !Write(static_cast<const std::uint8_t*>(v.iov_base) + skip, v.iov_len - skip))
        return false;
    }
  }
  return fd_ >= 0;
}

WriteOutcome AtomicFile::Commit(const FileStamp* expected) {
  WriteOutcome out;
  if (fd_ < 0) {
    out.result = temp_.empty() ? WriteResult::CannotOpen : WriteResult::Failed;
    out.error = error_;
    return out;
  }
  CopyAttributes(fd_, target_);
  if (::fsync(fd_) != 0) {
    out.error = errno;
    Discard();
    return out;
  }
  int renamed = 0;
  if (expected && !StampOf(target_).SameFile(*expected)) {
    renamed = -1;
    errno = EEXIST;
  } else {
    renamed = expected && !expected->exists ? RenameNoReplace(temp_, target_)
                                            : ::rename(temp_.c_str(), target_.c_str());
  }
  if (renamed != 0) {
    out.error = errno;
    out.result = out.error == EEXIST ? WriteResult::ChangedOnDisk : WriteResult::Failed;
    Discard();
    return out;
  }
  struct stat st;
  if (::fstat(fd_, &st) == 0) out.stamp = StampFromStat(st);
  ::close(fd_);
  fd_ = -1;
  temp_.clear();
  SyncFolder(target_);
  out.result = WriteResult::Written;
  return out;
}

void AtomicFile::Discard() {
  if (!temp_.empty()) ::unlink(temp_.c_str());
  temp_.clear();
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

WriteOutcome SaveFileAtomically(const std::string& path, std::span<const std::uint8_t> bytes,
                                const FileStamp* expected) {
  return SaveFileAtomically(path, std::span<const std::span<const std::uint8_t>>(&bytes, 1),
                            expected);
}

WriteOutcome SaveFileAtomically(const std::string& path,
                                std::span<const std::span<const std::uint8_t>> pieces,
                                const FileStamp* expected) {
  AtomicFile file(path);
  bool written = file.ok() && file.Write(pieces);
  if (!written) {
    WriteOutcome out;
    out.result = file.ok() ? WriteResult::Failed : WriteResult::CannotOpen;
    out.error = file.error();
    if (file.ok()) file.Discard();
    return out;
  }
  WriteOutcome out = file.Commit(expected);
  out.stamp.path = path;
  return out;
}

WriteResult WriteFileAtomically(const std::string& path, std::span<const std::uint8_t> bytes) {
  return SaveFileAtomically(path, bytes).result;
}

void RemoveStaleTemporaries(const std::string& path) {
  const fs::path target = SaveTarget(path);
  const std::string base = target.filename().string();
  const fs::path folder = target.parent_path().empty() ? fs::path(".") : target.parent_path();
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(folder, ec)) {
    const std::string name = entry.path().filename().string();
    if (!IsTemporaryOf(name, base)) continue;
    int fd = ::open(entry.path().c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) continue;
    struct stat st;
    // A save in progress holds the lock on its temporary; a killed one no longer does.
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && ::flock(fd, LOCK_EX | LOCK_NB) == 0)
      ::unlink(entry.path().c_str());
    ::close(fd);
  }
}

}  // namespace qv
