#pragma once
// Reading and replacing whole files safely: regular files only, a bounded size, and saves that
// go to a unique temporary beside the file, reach the disk, and are renamed over it, so a crash,
// a full disk or a killed process leaves either the old file or the new one.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "engine/bytes.h"
#include "engine/file_bytes.h"

namespace qv {

// Record offsets are 32-bit, so no database can be larger; also the bound for any file read
// whole.
inline constexpr std::uint64_t kMaxFileSize = 0xFFFFFFFFull;

// What a file was when it was read or written: a file replaced or rewritten since differs.
struct FileStamp {
  std::string path;  // the path it was taken for, as the caller named it
  bool exists = false;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified_ns = 0;

  bool SameFile(const FileStamp& other) const;
  std::string ToText() const;  // "device inode size modified"; empty for a missing file
  static FileStamp FromText(const std::string& path, const std::string& text);
};

// The stamp of the file at `path` now (links followed).
FileStamp StampOf(const std::string& path);

// Opens an existing regular file for reading without blocking on a FIFO or a device; -1 for
// anything else.
int OpenRegularFile(const std::string& path);

// The whole file, or nothing when it is not a regular file, is larger than `limit`, or cannot be
// read. `stamp`, when given, receives what was read.
std::optional<Bytes> ReadWholeFile(const std::string& path, std::uint64_t limit = kMaxFileSize,
                                   FileStamp* stamp = nullptr);
// The same, into storage made for a large file kept in memory (a database's image).
std::optional<FileBytes> ReadFileImage(const std::string& path, std::uint64_t limit = kMaxFileSize,
                                       FileStamp* stamp = nullptr);

// For files a user hands in to be read (CSV): a regular file, or a pipe such as /dev/stdin or a
// shell's <(...), read to its end; nothing for devices and folders or beyond `limit` bytes.
std::optional<Bytes> ReadInputFile(const std::string& path, std::uint64_t limit = kMaxFileSize);

// The file a save of `path` must replace: symbolic links followed to their target, which may not
// exist yet.
std::string SaveTarget(const std::string& path);

// CannotOpen: nothing written (the file or its folder is not writable); Failed: writing failed,
// the old file is untouched; ChangedOnDisk: the file is not the one the caller read, left as is.
enum class WriteResult { CannotOpen, Failed, ChangedOnDisk, Written };

struct WriteOutcome {
  WriteResult result = WriteResult::Failed;
  int error = 0;    // errno of the step that failed
  FileStamp stamp;  // the file written, when Written
};

// A new version of a file, written to a temporary beside it and put in place by Commit. The
// temporary is locked while it exists, so one whose writer died can be told apart and removed.
class AtomicFile {
 public:
  explicit AtomicFile(const std::string& path);
  ~AtomicFile();  // discards the temporary unless committed
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  bool ok() const { return fd_ >= 0; }
  int error() const { return error_; }
  bool Write(const void* data, std::size_t size);
  bool Write(std::span<const std::span<const std::uint8_t>> pieces);  // one after another
  // Flushes the temporary to disk, keeps the old file's mode, owner and group, and renames it
  // over the target; then flushes the folder. With `expected`, the target must still be that
  // file (or still be absent), checked just before the rename.
  WriteOutcome Commit(const FileStamp* expected = nullptr);
  void Discard();

 private:
  std::string target_;
  std::string temp_;
  int fd_ = -1;
  int error_ = 0;
};

// Writes `bytes` as the file at `path` through an AtomicFile.
WriteOutcome SaveFileAtomically(const std::string& path, std::span<const std::uint8_t> bytes,
                                const FileStamp* expected = nullptr);
// The same for a file given as pieces written one after another.
WriteOutcome SaveFileAtomically(const std::string& path,
                                std::span<const std::span<const std::uint8_t>> pieces,
                                const FileStamp* expected = nullptr);
WriteResult WriteFileAtomically(const std::string& path, std::span<const std::uint8_t> bytes);

// Removes the temporaries that saves of `path` left behind when they were killed; those of a
// save still running are kept.
void RemoveStaleTemporaries(const std::string& path);

}  // namespace qv
