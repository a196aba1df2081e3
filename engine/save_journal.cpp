#include "engine/save_journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace qv {

namespace {

constexpr std::uint8_t kMagic[8] = {'Q', 'V', 'J', 'O', 'U', 'R', 'N', '1'};
constexpr std::size_t kLargestJournal = 64u << 20;
// A disk writes whole sectors: after a crash each sector of a range holds its old bytes or its
// new ones. A file where one holds neither is not the file the journal was written for.
constexpr std::uint64_t kSector = 512;

struct Range {
  std::uint64_t offset = 0;
  Bytes old_bytes;
  Bytes new_bytes;
};

struct Journal {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::vector<Range> ranges;

  bool AppliesTo(const FileStamp& file) const {
    return file.exists && file.device == device && file.inode == inode && file.size == size;
  }
};

std::uint64_t Fnv1a(const std::uint8_t* p, std::size_t n) {
  std::uint64_t h = 14695981039346656037ull;
  for (std::size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 1099511628211ull;
  return h;
}

void AppendBE64(Bytes& out, std::uint64_t v) {
  for (int i = 7; i >= 0; --i) out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

std::uint64_t GetBE64(const std::uint8_t* p) {
  return (std::uint64_t{GetBE32(p)} << 32) | GetBE32(p + 4);
}

Bytes EncodeJournal(const Journal& j) {
  Bytes out(kMagic, kMagic + sizeof kMagic);
  AppendBE64(out, j.device);
  AppendBE64(out, j.inode);
  AppendBE64(out, j.size);
  AppendBE64(out, j.ranges.size());
  for (const Range& r : j.ranges) {
    AppendBE64(out, r.offset);
    AppendBE64(out, r.old_bytes.size());
    out.insert(out.end(), r.old_bytes.begin(), r.old_bytes.end());
    out.insert(out.end(), r.new_bytes.begin(), r.new_bytes.end());
  }
  AppendBE64(out, Fnv1a(out.data(), out.size()));
  return out;
}

// Nothing for a journal cut short or damaged; every length is checked before it is used.
std::optional<Journal> DecodeJournal(const Bytes& in) {
  if (in.size() < sizeof kMagic + 5 * 8 || std::memcmp(in.data(), kMagic, sizeof kMagic) != 0)
    return std::nullopt;
  const std::size_t body = in.size() - 8;
  if (Fnv1a(in.data(), body) != GetBE64(in.data() + body)) return std::nullopt;
  Journal j;
  std::size_t at = sizeof kMagic;
  auto take = [&](std::uint64_t& v) {
    if (body - at < 8) return false;
    v = GetBE64(in.data() + at);
    at += 8;
    return true;
  };
  std::uint64_t count = 0;
  if (!take(j.device) || !take(j.inode) || !take(j.size) || !take(count)) return std::nullopt;
  for (std::uint64_t i = 0; i < count; ++i) {
    Range r;
    std::uint64_t length = 0;
    if (!take(r.offset) || !take(length) || length > (body - at) / 2) return std::nullopt;
    if (r.offset > j.size || length > j.size - r.offset) return std::nullopt;
    r.old_bytes.assign(in.begin() + at, in.begin() + at + length);
    r.new_bytes.assign(in.begin() + at + length, in.begin() + at + 2 * length);
    at += 2 * length;
    j.ranges.push_back(std::move(r));
  }
  if (at != body) return std::nullopt;
  return j;
}

enum class Found { Missing, Damaged, Valid };

Found ReadJournal(const std::string& journal_path, Journal& j) {
  int fd = ::open(journal_path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT ? Found::Missing : Found::Damaged;
  struct stat st;
  Bytes bytes;
  bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
            static_cast<std::uint64_t>(st.st_size) <= kLargestJournal;
  if (ok) {
    bytes.resize(static_cast<std::size_t>(st.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
      ssize_t n = ::pread(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
      if (n <= 0) break;
      done += static_cast<std::size_t>(n);
    }
    ok = done == bytes.size();
  }
  ::close(fd);
  auto decoded = ok ? DecodeJournal(bytes) : std::nullopt;
  if (!decoded) return Found::Damaged;
  j = std::move(*decoded);
  return Found::Valid;
}

bool PreadAll(int fd, std::uint8_t* out, std::size_t size, std::uint64_t offset) {
  while (size > 0) {
    ssize_t n = ::pread(fd, out, size, static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    out += n;
    size -= static_cast<std::size_t>(n);
    offset += static_cast<std::uint64_t>(n);
  }
  return true;
}

bool PwriteAll(int fd, const std::uint8_t* data, std::size_t size, std::uint64_t offset) {
  while (size > 0) {
    ssize_t n = ::pwrite(fd, data, size, static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = ENOSPC;
      return false;
    }
    data += n;
    size -= static_cast<std::size_t>(n);
    offset += static_cast<std::uint64_t>(n);
  }
  return true;
}

bool WriteAll(int fd, const Bytes& bytes) {
  return PwriteAll(fd, bytes.data(), bytes.size(), 0);
}

void SyncFolderOf(const std::string& file) {
  std::string folder = std::filesystem::path(file).parent_path().string();
  int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

// Whether `now` (the range's current bytes) is every sector old or new; `all_new` says whether
// it is the new bytes throughout.
bool SectorsOldOrNew(const Range& r, std::span<const std::uint8_t> now, bool& all_new) {
  all_new = std::equal(now.begin(), now.end(), r.new_bytes.begin());
  for (std::size_t at = 0; at < now.size();) {
    std::size_t next = static_cast<std::size_t>((r.offset + at) / kSector * kSector + kSector -
                                                 r.offset);
    std::size_t n = std::min(next, now.size()) - at;
    bool old_sector = std::memcmp(now.data() + at, r.old_bytes.data() + at, n) == 0;
    bool new_sector = std::memcmp(now.data() + at, r.new_bytes.data() + at, n) == 0;
    if (!old_sector && !new_sector) return false;
    at += n;
  }
  return true;
}

// The ranges as `bytes` (the file from its start, perhaps only a part) holds them, those beyond
// it as the file at `path` does now: whether each is old or new sector by sector, and whether
// all are new.
bool CopyFitsJournal(const Journal& j, std::span<const std::uint8_t> bytes, const std::string& path,
                     bool& all_new) {
  all_new = true;
  Bytes beyond;
  for (const Range& r : j.ranges) {
    std::span<const std::uint8_t> now;
    if (r.offset + r.new_bytes.size() <= bytes.size()) {
      now = {bytes.data() + r.offset, r.new_bytes.size()};
    } else {
      int fd = OpenRegularFile(path);
      beyond.resize(r.new_bytes.size());
      bool read = fd >= 0 && PreadAll(fd, beyond.data(), beyond.size(), r.offset);
      if (fd >= 0) ::close(fd);
      if (!read) return false;
      now = beyond;
    }
    bool range_new = false;
    if (!SectorsOldOrNew(r, now, range_new)) return false;
    all_new = all_new && range_new;
  }
  return true;
}

enum class Undo { Done, NotItsFile, Failed };

// Puts every range's old bytes back into the file at `fd` and flushes it, unless it holds the new
// bytes throughout already (the save's flush came before its journal was removed).
Undo UndoOnDisk(int fd, const Journal& j) {
  Bytes now;
  bool all_new = true;
  for (const Range& r : j.ranges) {
    now.resize(r.new_bytes.size());
    bool range_new = false;
    if (!PreadAll(fd, now.data(), now.size(), r.offset)) return Undo::Failed;
    if (!SectorsOldOrNew(r, now, range_new)) return Undo::NotItsFile;
    all_new = all_new && range_new;
  }
  if (all_new) return Undo::Done;
  for (const Range& r : j.ranges)
    if (!PwriteAll(fd, r.old_bytes.data(), r.old_bytes.size(), r.offset)) return Undo::Failed;
  return ::fsync(fd) == 0 ? Undo::Done : Undo::Failed;
}

FileStamp StampOfFd(int fd, const std::string& path) {
  struct stat st;
  FileStamp stamp;
  if (::fstat(fd, &st) == 0) {
    stamp.exists = true;
    stamp.device = static_cast<std::uint64_t>(st.st_dev);
    stamp.inode = static_cast<std::uint64_t>(st.st_ino);
    stamp.size = static_cast<std::uint64_t>(st.st_size);
    stamp.modified_ns = std::int64_t{st.st_mtim.tv_sec} * 1000000000 + st.st_mtim.tv_nsec;
  }
  stamp.path = path;
  return stamp;
}

// Readers compare modification times to notice a save that ran while they read; the clock the
// file system stamps with is coarse, so a save that would leave the time as it was moves it on.
void MoveModificationTime(int fd, const FileStamp& before) {
  if (StampOfFd(fd, {}).modified_ns != before.modified_ns) return;
  std::int64_t next = before.modified_ns + 1;
  struct timespec times[2];
  times[0].tv_sec = 0;
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = next / 1000000000;
  times[1].tv_nsec = next % 1000000000;
  ::futimens(fd, times);  // best effort: only the owner may set a time
}

}  // namespace

std::string JournalPath(const std::string& target) {
  return target + "-journal";
}

std::optional<WriteOutcome> PatchFileInPlace(const std::string& path,
                                             std::span<const FilePatch> patches,
                                             const FileStamp& expected,
                                             const std::function<void(std::size_t)>& progress) {
  const std::string target = SaveTarget(path);
  const std::string journal_path = JournalPath(target);
  // After a save cut short the file on disk is not the one the caller read (its old version was
  // put back in the reader's copy): only a whole save may replace it, and drop the journal.
  Journal earlier;
  if (ReadJournal(journal_path, earlier) != Found::Missing) return std::nullopt;
  int fd = ::open(target.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  const FileStamp before = StampOfFd(fd, path);
  Journal j{before.device, before.inode, before.size, {}};
  // Only the owner may move the modification time on, which readers rely on (see below).
  struct stat st;
  bool fits = before.SameFile(expected) && ::fstat(fd, &st) == 0 &&
              (st.st_uid == ::geteuid() || ::geteuid() == 0);
  for (std::size_t i = 0; fits && i < patches.size(); ++i) {
    const FilePatch& p = patches[i];
    fits = p.offset <= before.size && p.bytes.size() <= before.size - p.offset;
    Range r{p.offset, Bytes(p.bytes.size()), Bytes(p.bytes.begin(), p.bytes.end())};
    fits = fits && PreadAll(fd, r.old_bytes.data(), r.old_bytes.size(), r.offset);
    j.ranges.push_back(std::move(r));
  }
  int jfd = -1;
  if (fits) jfd = ::open(journal_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                         0600);  // it holds the database's old bytes
  if (jfd < 0) {
    ::close(fd);
    return std::nullopt;
  }
  // The journal reaches the disk, and its name in the folder, before the file is touched.
  bool journaled = WriteAll(jfd, EncodeJournal(j)) && ::fsync(jfd) == 0;
  ::close(jfd);
  if (!journaled) {
    ::unlink(journal_path.c_str());
    ::close(fd);
    return std::nullopt;
  }
  SyncFolderOf(target);
  WriteOutcome out;
  bool written = true;
  for (std::size_t i = 0; written && i < patches.size(); ++i) {
    written = PwriteAll(fd, patches[i].bytes.data(), patches[i].bytes.size(), patches[i].offset);
    if (progress) progress(i + 1);
  }
  // The size stays, so flushing the data is enough; a lost modification time harms nothing.
  written = written && ::fdatasync(fd) == 0;
  if (!written) {
    out.result = WriteResult::Failed;
    out.error = errno;
    // The old version back; if even that fails the journal stays for the next reader.
    if (UndoOnDisk(fd, j) == Undo::Done) ::unlink(journal_path.c_str());
    ::close(fd);
    return out;
  }
  MoveModificationTime(fd, before);
  out.stamp = StampOfFd(fd, path);
  ::close(fd);
  // Once the file is flushed a journal left by a crash finds every range new and undoes
  // nothing, so its removal need not be flushed.
  ::unlink(journal_path.c_str());
  out.result = WriteResult::Written;
  return out;
}

JournalCheck CheckJournal(const std::string& path, const FileStamp& before,
                          std::span<std::uint8_t> bytes) {
  const std::string target = SaveTarget(path);
  Journal j;
  bool undo = false;
  if (ReadJournal(JournalPath(target), j) == Found::Valid && j.AppliesTo(before)) {
    bool all_new = false;
    undo = CopyFitsJournal(j, bytes, path, all_new) && !all_new;
  }
  // Checked last: a save that wrote while the file was read and has finished since moved the
  // time on before removing its journal.
  if (!StampOf(path).SameFile(before)) return JournalCheck::ReadAgain;
  if (!undo) return JournalCheck::None;
  for (const Range& r : j.ranges) {
    if (r.offset >= bytes.size()) continue;
    std::size_t n = std::min<std::size_t>(r.old_bytes.size(), bytes.size() - r.offset);
    std::copy_n(r.old_bytes.begin(), n, bytes.begin() + static_cast<std::ptrdiff_t>(r.offset));
  }
  return JournalCheck::Undone;
}

bool RecoverInterruptedSave(const std::string& path) {
  const std::string target = SaveTarget(path);
  const std::string journal_path = JournalPath(target);
  Journal j;
  switch (ReadJournal(journal_path, j)) {
    case Found::Missing:
      return true;
    case Found::Damaged:  // cut short before the file was touched
      ::unlink(journal_path.c_str());
      return true;
    case Found::Valid:
      break;
  }
  int fd = ::open(target.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0 && errno != ENOENT) return false;
  // A journal for a file replaced since, or that this file does not fit, is dropped.
  Undo undone = fd < 0 || !j.AppliesTo(StampOfFd(fd, path)) ? Undo::NotItsFile : UndoOnDisk(fd, j);
  if (fd >= 0) ::close(fd);
  if (undone == Undo::Failed) return false;
  ::unlink(journal_path.c_str());
  return true;
}

}  // namespace qv
