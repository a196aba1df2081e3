#pragma once
// The record-database container: a 78-byte big-endian header, a list of 8-byte record entries,
// two zero bytes, a 40-byte application-info block, then the records end to end.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/atomic_file.h"
#include "engine/bytes.h"
#include "engine/record_data.h"
#include "platform/prompter.h"

namespace qv {

inline constexpr std::size_t kHeaderSize = 78;
inline constexpr std::size_t kEntrySize = 8;
inline constexpr std::size_t kAppInfoSize = 40;
inline constexpr std::uint32_t kSchemaRecords = 102;
inline constexpr std::uint32_t kMaxDataRecords = 65000;
// Seconds from 1904-01-01 (the file dates' origin) to 1970-01-01.
inline constexpr std::int64_t kEpoch1904To1970 = 2082844800;

struct Header {
  std::array<std::uint8_t, 32> name{};
  std::uint16_t attributes = 0;
  std::uint16_t version = 0;
  std::uint32_t creation_date = 0;
  std::uint32_t modification_date = 0;
  std::uint32_t backup_date = 0;
  std::uint32_t modification_number = 0;
  std::uint32_t app_info_offset = 0;
  std::uint32_t sort_info_offset = 0;
  std::array<std::uint8_t, 4> type{};
  std::array<std::uint8_t, 4> creator{};
  std::uint32_t unique_id_seed = 0;
  std::uint32_t next_record_list = 0;
  std::uint16_t record_count = 0;

  std::string Name() const;
  void SetName(std::string_view name);
  bool IsQuorvant() const;  // creator code "Qvnt"
};

// The date rule, on read and on write: a modification date before the creation date pulls the
// creation date down to it. Deliberate, kept from the original.
void ClampDates(Header& header);

// Decodes 78 bytes (the date rule applied).
Header DecodeHeader(const std::uint8_t* bytes);
// Encodes the header (the date rule applied first).
std::array<std::uint8_t, kHeaderSize> EncodeHeader(Header header);

// One record as the container holds it: its bytes, attribute byte and 24-bit identifier.
struct RawRecord {
  RecordData data;
  std::uint8_t attributes = 0;
  std::uint32_t uid = 0;
};

struct ContainerFile {
  Header header;
  std::vector<RawRecord> records;  // the schema records
  RecordTable data;    // the data records that follow them
};

// Why a container could not be read; each maps to the system's message.
enum class ReadError { None, BadHeader, CannotInitialize, BadRecord, CannotRead };

struct ParseResult {
  std::optional<ContainerFile> file;
  ReadError error = ReadError::None;
  std::uint32_t bad_record = 0;  // the data record number (from 0) of a BadRecord error
};

// Parses a whole file image. Every offset and length is checked against the image before use.
// The records are views into the image, which they keep alive.
ParseResult ParseContainer(const FileImage& image);
// The same for the start of a file of `file_size` bytes that holds at least the header, the list
// and the schema records: every entry is checked, but the data records are not taken (the
// header's count tells how many there are).
ParseResult ParseContainerStart(const FileImage& start, std::size_t file_size);

// A file laid out for writing: `head` holds the header, the record list, the two zero bytes and
// the application-info block; `pieces` are `head` and then the records' bytes, neighbouring
// records that lie end to end in memory (unchanged records of one image) joined into one piece.
// The pieces point into `head` and into the records: both must outlive them.
struct ContainerLayout {
  Bytes head;
  std::vector<std::span<const std::uint8_t>> pieces;
  std::size_t size() const;
};

// Lays out the schema records and then the data records end to end after the list, offsets
// recomputed.
ContainerLayout LayOutContainer(const Header& header, std::span<const RawRecord> schema,
                                std::span<const RecordSlot> data);
// The pieces of a layout as one file image.
Bytes JoinPieces(const ContainerLayout& layout);
// The file image of a container: its records, then its data records, end to end.
Bytes SerializeContainer(const ContainerFile& file);

// The 8-byte record entry: offset big-endian, attribute byte, identifier most significant first.
void PutRecordEntry(std::uint8_t* out, std::uint32_t offset, std::uint8_t attributes,
                    std::uint32_t uid);

// Opens a file for reading and closes it: whether it can be read (regular files only).
bool TestForFile(const std::string& path);
// 0 when the file cannot be read, 1 for a header with creator "Qvnt", -1 for any other header.
int ReadHeader(const std::string& path, Header& header);

// The first `limit` bytes of a regular file (fewer when it is shorter) and the file's size.
std::optional<FileBytes> ReadFileStart(const std::string& path, std::size_t limit,
                                       std::size_t& file_size);

// Finds the database whose header name is `name` in the folder of `reference_path`: the exact
// file name, then blanks turned into underscores, then every .PDB file of the folder.
std::optional<std::string> FindDatabaseByName(const std::string& name,
                                              const std::string& reference_path);

}  // namespace qv
