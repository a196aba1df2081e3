#pragma once
// Saves that change a few bytes of a file whose size stays the same (a value edited, a filter
// condition set): rather than writing the whole file beside it, the bytes are written in place,
// guarded by a journal beside the file that holds the old and the new bytes of every range.
//
// The order makes it crash-safe: the journal is written and flushed (and its folder), only then
// is the file changed and flushed, and only then is the journal removed. A reader that finds a
// journal whose ranges do not all hold the new bytes puts the old ones back (in its copy, and on
// disk when it holds the database's lock), so a crash leaves the old version or the new one,
// never a mixture. A journal whose own checksum fails was cut short before the file was touched.

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/atomic_file.h"
#include "engine/bytes.h"

namespace qv {

// New bytes for the file at `offset`.
struct FilePatch {
  std::uint64_t offset = 0;
  std::span<const std::uint8_t> bytes;
};

// The journal beside a save target.
std::string JournalPath(const std::string& target);

// Writes the patches into the file at `path` in place, as described above, provided it is still
// the file `expected` describes. Nothing when the file was not touched and the caller should save
// the whole file the usual way instead (no journal could be written, the file changed, it is
// not writable).
// `progress`, when given, is called after each patch is written (tests end a save there).
std::optional<WriteOutcome> PatchFileInPlace(
    const std::string& path, std::span<const FilePatch> patches, const FileStamp& expected,
    const std::function<void(std::size_t)>& progress = nullptr);

// What a reader does about a journal beside the file it read.
enum class JournalCheck {
  None,     // no journal, or one that no longer applies: the bytes read stand
  Undone,   // an unfinished save's ranges were put back to their old bytes in the copy
  ReadAgain  // a save ran while the file was read: read it again
};

// For a reader that read `bytes` from the start of the file at `path` (all of it, or a part),
// described by `before` (taken before the read): puts back the old bytes of an unfinished save,
// and tells when a save overlapped the read.
JournalCheck CheckJournal(const std::string& path, const FileStamp& before,
                          std::span<std::uint8_t> bytes);

// Puts back on disk the old bytes of a save that was cut short, and removes its journal. Only
// for a caller holding the database's lock (no save can be running). False when a journal that
// applies could not be undone.
bool RecoverInterruptedSave(const std::string& path);

}  // namespace qv
