#pragma once
// The reader of databases made by the 2.x generation of the program. Their container is the
// same (header, record list, records, creator "Qvnt") but the schema and the records are laid out
// the older way: record 0 is a 2,448-byte settings record without the "Quorv" signature, records
// 1 to 40 hold the pop-up lists of the 40 older field slots, and data records follow from record
// 41. docs/FORMAT.md, "2.x databases", gives every byte.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/bytes.h"
#include "engine/container.h"

namespace qv {

inline constexpr std::size_t kOldDefinitionSize = 2448;
inline constexpr int kOldFieldSlots = 40;
inline constexpr std::size_t kOldFieldDefinitionSize = 60;
inline constexpr std::uint32_t kOldSchemaRecords = 1 + kOldFieldSlots;

// Field type codes of the older layout.
enum OldFieldType : std::uint8_t {
  kOldNotUsed = 0,
  kOldText = 1,
  kOldInteger = 2,
  kOldFloat = 3,
  kOldPopUp = 4,
  kOldCheckBox = 5,
  kOldDate = 6,
  kOldTime = 7,
  kOldNote = 8,
  kOldHeading = 9,
  kOldUnique = 10,
  kOldLink = 11,
  kOldLinked = 12,
  kOldRelationship = 13,
};
inline constexpr int kOldFieldTypeCount = 14;

namespace old_def {
inline constexpr std::size_t kSignature = 22;   // 5 bytes; never "Quorv" in this layout
inline constexpr std::size_t kFieldCount = 28;  // 16-bit: slots in use from slot 0
inline constexpr std::size_t kSort = 30;        // three entries: field byte (0xFF none), direction
inline constexpr std::size_t kFields = 36;      // 40 field definitions of 60 bytes
}  // namespace old_def

struct OldField {
  std::uint8_t type = kOldNotUsed;
  std::uint16_t length = 0;
  std::uint8_t width = 0;
  bool shown = true;
  std::uint8_t decimals = 0;
  std::string name;
  std::string other_database;  // Link, Linked and Relationship fields: the database named
};

struct OldSortKey {
  int field = -1;
  bool forward = true;
};

// One record as the older layout holds it: one value per field slot in use, each the bytes
// stored for it (empty for "No Value").
struct OldRecord {
  std::vector<Bytes> values;
  std::uint8_t attributes = 0;
  std::uint32_t uid = 0;
};

struct OldDatabase {
  Header header;
  std::vector<OldField> fields;  // the slots in use, from slot 0
  std::array<OldSortKey, 3> sort{};
  // Raw pop-up list records and data records: each is checked when it is converted, so a bad
  // one fails its own step and not the whole file.
  std::vector<Bytes> popup_records;  // one per slot in use
  std::vector<Bytes> data_records;
  std::vector<std::pair<std::uint8_t, std::uint32_t>> data_ids;  // attribute byte, identifier
};

// Whether a file image's header and record 0 are those of a 2.x database: creator "Qvnt", at
// least 41 records, a record 0 of exactly 2,448 bytes without the current signature, a field
// count of 40 or less and a known type in every slot in use. Reads nothing else.
bool LooksLikeOlderFormat(std::span<const std::uint8_t> image);
// The same test on a file.
bool IsOlderFormatFile(const std::string& path);

// Reads the whole container of a 2.x database; nothing when it is not one or when its record
// list does not fit the file. Every offset and length is checked against the image.
std::optional<OldDatabase> ReadOldDatabase(std::span<const std::uint8_t> image);

// Decodes one pop-up list record (a count byte, then that many NUL-terminated texts); nothing
// when the texts run past the record.
std::optional<std::vector<std::string>> DecodeOldPopupList(std::span<const std::uint8_t> record);
// Decodes one data record (per slot in use a length byte and that many value bytes); nothing when
// the values run past the record or bytes are left over.
std::optional<std::vector<Bytes>> DecodeOldRecord(std::span<const std::uint8_t> record,
                                                  std::size_t field_count);

}  // namespace qv
