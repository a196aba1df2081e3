#pragma once
// The open database: header, schema, every data record in memory, and the visible list of the
// records that pass the current filter. Saving rewrites the whole file.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/container.h"
#include "engine/file_lock.h"
#include "engine/record.h"
#include "engine/schema.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"

namespace qv {

// Record number of a record that is being created.
inline constexpr std::uint32_t kNewRecord = 65000;
// The path of a database that has never been saved; "*" cannot occur in a real path.
inline constexpr const char* kUntitledPath = "Untitled*";

struct Database {
  std::string path = kUntitledPath;
  std::string name = "Untitled";  // what titles and prompts show
  Header header;
  Schema schema;
  RecordTable records;     // the record table, in display order
  std::vector<std::uint32_t> visible;  // record numbers that pass the filter, in order
  bool loaded = false;
  bool changed = false;  // while set, record 0 is written with its dirty bit
  std::uint32_t current = 0;
  // Recalculation bookkeeping: which fields changed since the flags were cleared.
  std::array<std::uint8_t, kFieldSlots> field_changed{};
  bool recalculating = false;  // set while a recalculation pass runs
  bool redraw = false;         // the record list must be redrawn (a pass or a sort ended)
  // Set when opened from a linked field of a parent database: only records whose value of
  // `restriction_field` equals `restriction_key` belong to the parent record.
  int restriction_field = -1;
  std::uint32_t restriction_key = 0;
  // The identifier the next new record takes; 0 until first needed.
  std::uint32_t next_uid = 0;
  // The file as last read or written: a save refuses to replace a file changed since.
  FileStamp disk;
  // The whole file as read, and the file it was read from: while that is still the file on disk
  // (`disk` the same), a save that changes only a few of its bytes writes just those, in place
  // and journaled (engine/save_journal.h). A copy saved in its place moves `disk` on.
  FileImage image;
  FileStamp image_of;
  // Held by whoever is changing the file (see FileLock); saves take it when it is not held.
  FileLock lock;
  // Never written to the file. The encryption password given while the database is open, so a
  // command or session asks once; and, by uid, the records held plain in memory (deciphered
  // for reading, or stored since the open) that are enciphered again before a save.
  std::optional<std::string> session_password;
  std::vector<std::uint32_t> encipher_on_save;

  DatabaseDefinition& definition() { return schema.definition; }
  const DatabaseDefinition& definition() const { return schema.definition; }
  std::uint32_t count() const { return static_cast<std::uint32_t>(records.size()); }
  bool unsaved() const { return path.find('*') != std::string::npos; }
};

// A fresh database with every default, named `name`, stamped with the current time.
std::unique_ptr<Database> NewDatabase(std::string_view name, const Clock& clock);

// Builds a database from a file image. On failure the result names the failure and the
// database is left empty. The records view the shared image; the span form copies it once.
ReadError ParseDatabase(const FileImage& image, Database& db, std::uint32_t& bad_record);
ReadError ParseDatabase(std::span<const std::uint8_t> image, Database& db,
                        std::uint32_t& bad_record);
// What an open reads: everything, or only the header and the schema (every record entry still
// checked), for describing a database without the cost of its records.
enum class LoadParts { All, Schema };
// Opens the file at `path`, reporting failures with the system's messages. Nothing is loaded on
// failure.
bool LoadDatabase(Database& db, const std::string& path, Prompter& prompter,
                  LoadParts parts = LoadParts::All);
// The exact bytes a save writes (record 0's dirty bit set while the database is changed).
Bytes SerializeDatabase(const Database& db);
// The same file as pieces to write: the schema records encoded into `schema`, which, like the
// database, must outlive the layout.
ContainerLayout LayOutDatabase(const Database& db, std::vector<RawRecord>& schema);
// Why a save did not write, beyond the file-level results: InUse, another program holds the
// database's lock.
struct SaveOutcome {
  WriteResult result = WriteResult::Written;
  bool in_use = false;
  int error = 0;
  std::optional<LockHolder> holder;
};
// Stamps the modification date and rewrites the file at db.path through a sibling file, under
// the database's lock, unless the file changed on disk since it was read. The changed flag is
// cleared whenever the file could be opened for writing.
bool SaveDatabase(Database& db, const Clock& clock, SaveOutcome* outcome = nullptr);
// Why a save failed, in a sentence for the user; empty after a successful save.
std::string SaveFailureText(const SaveOutcome& outcome, const std::string& path);
// Seconds since 1904 for the header, from the clock's local time.
std::uint32_t FileTimeNow(const Clock& clock);

// The values a new record starts with: empty texts, zero numbers, no date, no time, and the
// next free number in every Unique field.
RecordValues DefaultValues(const Database& db);
// The empty value of a type: empty text, zero, unchecked, no date, no time, no picture.
Bytes EmptyValue(unsigned type);

// Takes the identifier for a new record: one past the largest in use.
std::uint32_t TakeRecordUid(Database& db);

// Stores edited values as record `number`, or appends them for kNewRecord. Returns the record's
// number, or nothing when the table is full (65,000 records).
std::optional<std::uint32_t> StoreRecord(Database& db, const RecordValues& values,
                                         std::uint32_t number);
// Moves the record at `from` to `to`: from >= to puts it at `to`; from < to at `to - 1`; a `to`
// at or beyond the count puts it last.
void MoveRecord(Database& db, std::uint32_t from, std::uint32_t to);
void DeleteRecord(Database& db, std::uint32_t number);
// Frees every record and empties the visible list.
void CloseDatabase(Database& db);

// Rebuilds the visible list with a filter test supplied by the caller.
void RebuildVisibleList(Database& db,
                        const std::function<bool(const Database&, std::uint32_t)>& passes);
// Every record visible; used until a filter is known.
void ShowAllRecords(Database& db);

// The display text of a record's field; a placeholder when no record has that number.
std::string RecordValueText(const Database& db, std::uint32_t number, int slot,
                            const FormatOptions& options);

// The used field slots in display order.
std::vector<int> UsedFieldsInDisplayOrder(const DatabaseDefinition& definition);

}  // namespace qv
