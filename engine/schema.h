#pragma once
// The schema records: record 0 (the database definition, kept as its exact 35,852 bytes with
// typed accessors over the offsets), the 100 field records, and record 101.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "engine/bytes.h"
#include "engine/container.h"
#include "engine/field_types.h"

namespace qv {

inline constexpr std::size_t kDefinitionSize = 35852;
inline constexpr std::size_t kFieldDefinitionSize = 116;
inline constexpr std::size_t kConditionSize = 94;
inline constexpr std::size_t kViewSize = 1142;
inline constexpr int kFieldSlots = 100;
inline constexpr int kMaxViews = 20;
inline constexpr int kConditions = 6;
inline constexpr int kSortKeys = 3;

// Offsets inside record 0. docs/FORMAT.md names every one and the places chosen for the
// settings the original leaves open.
namespace def {
inline constexpr std::size_t kPrefix = 0;
inline constexpr std::size_t kSettingsFlags = 11;  // prefix byte 11; 0x10 = database enciphered
inline constexpr std::size_t kSignature = 22;
inline constexpr std::size_t kListSetting = 28;  // 32-bit, 1 in a new database
inline constexpr std::size_t kFilter = 32;       // six condition blocks
inline constexpr std::size_t kSort = 596;        // three 2-byte sort entries
inline constexpr std::size_t kFields = 630;      // 100 field definitions
inline constexpr std::size_t kFindField = 12230;
inline constexpr std::size_t kFindCase = 12231;
inline constexpr std::size_t kFindText = 12232;  // 35 bytes
inline constexpr std::size_t kFindOption = 12267;
inline constexpr std::size_t kRecordHeaderSwitch = 12268;  // 16-bit: data records carry a header
inline constexpr std::size_t kResortPending = 12274;
inline constexpr std::size_t kDisplayOrder = 12275;  // first per-position table
inline constexpr std::size_t kSecondTable = 12375;
inline constexpr std::size_t kThirdTable = 12475;
inline constexpr std::size_t kLookupField = 12575;     // slot of the look-up field
inline constexpr std::size_t kAccessPassword = 12578;  // 40 bytes, NUL-terminated
inline constexpr std::size_t kSecurityArea = 12618;    // 300 bytes: encryption settings
inline constexpr std::size_t kReturnRecord = 12918;    // 16-bit record-list index, 0 = none
inline constexpr std::size_t kAccessWord = 12942;      // 32-bit access permission word
inline constexpr std::size_t kViews = 12972;           // 20 view blocks
inline constexpr std::size_t kViewCount = 35838;       // 32-bit, 0..20
}  // namespace def

// A view onto one 116-byte field definition inside record 0. Byte is `std::uint8_t` for a
// writable view and `const std::uint8_t` for a read-only one.
template <typename Byte>
class BasicFieldDefinition {
 public:
  explicit BasicFieldDefinition(Byte* bytes) : p_(bytes) {}
  // A writable view converts to a read-only one.
  template <typename Other>
    requires(std::is_const_v<Byte> && !std::is_const_v<Other>)
  BasicFieldDefinition(BasicFieldDefinition<Other> other) : p_(other.bytes()) {}
  Byte* bytes() const { return p_; }

  unsigned type() const { return GetBE16(p_); }
  bool used() const { return type() != kNotUsed; }
  // Codes 1..18; per-type bytes of any other code read as 0.
  bool known_type() const { return type() >= 1 && type() < kFieldTypeCount; }
  unsigned length() const { return GetBE16(p_ + 2); }  // the field length
  unsigned width() const { return GetBE16(p_ + 6); }   // list width in stored units
  std::uint8_t flag_a() const { return known_type() ? p_[8] : 0; }
  std::uint8_t flag_b() const { return known_type() ? p_[9] : 0; }
  std::uint8_t refers_byte() const { return p_[10]; }
  // Calculated and Conditional fields whose value depends on the record's position.
  bool position_dependent() const {
    return (type() == kCalculated || type() == kConditional) && p_[10] != 0;
  }
  bool encrypted() const { return p_[11] != 0; }
  std::string name() const { return std::string(CStringAt(p_ + 66, 20)); }
  Byte* settings() const { return p_ + 24; }  // 40 bytes of per-type settings

  void set_type(unsigned code) requires(!std::is_const_v<Byte>) {
    PutBE16(p_, static_cast<std::uint16_t>(code));
  }
  void set_length(unsigned n) requires(!std::is_const_v<Byte>) {
    PutBE16(p_ + 2, static_cast<std::uint16_t>(n));
  }
  void set_width(unsigned n) requires(!std::is_const_v<Byte>) {
    PutBE16(p_ + 6, static_cast<std::uint16_t>(n));
  }
  void set_encrypted(bool on) requires(!std::is_const_v<Byte>) { p_[11] = on ? 1 : 0; }
  void set_name(std::string_view text) requires(!std::is_const_v<Byte>) {
    PutCString(p_ + 66, 20, text);
  }

 private:
  Byte* p_;
};
using FieldDefinition = BasicFieldDefinition<std::uint8_t>;
using ConstFieldDefinition = BasicFieldDefinition<const std::uint8_t>;

// One filter condition, decoded from its 94-byte block (numbers big-endian).
struct Condition {
  std::uint16_t in_use = 0;
  std::uint16_t field = 0;
  std::array<std::uint8_t, 40> first{};
  std::array<std::uint8_t, 40> second{};
  std::uint32_t lower = 0;
  std::uint32_t upper = 0;
  std::uint8_t join = 0;   // 0x01 NOT, 0x02 OR
  std::uint8_t group = 0;  // 0x01 "(" opens here, 0x02 ")" closes before this condition

  static Condition Read(const std::uint8_t* block);
  void Write(std::uint8_t* block) const;
};

struct SortKey {
  int field = -1;       // slot 0..99, -1 for none (stored 0xFF)
  bool forward = true;  // stored 1 forward, 0 reverse
};

// Record 0, kept byte for byte.
class DatabaseDefinition {
 public:
  DatabaseDefinition() : bytes_(kDefinitionSize, 0) {}
  // Takes record 0's bytes; false when they are not exactly 35,852 bytes long.
  bool Assign(std::span<const std::uint8_t> bytes);
  const Bytes& bytes() const { return bytes_; }
  std::uint8_t* data() { return bytes_.data(); }
  const std::uint8_t* data() const { return bytes_.data(); }

  FieldDefinition field(int slot) { return FieldDefinition(data() + def::kFields + 116 * slot); }
  ConstFieldDefinition field(int slot) const {
    return ConstFieldDefinition(data() + def::kFields + 116 * slot);
  }
  unsigned field_type(int slot) const {
    return slot >= 0 && slot < kFieldSlots ? field(slot).type() : unsigned{kNotUsed};
  }

  SortKey sort_key(int k) const;
  void set_sort_key(int k, SortKey key);

  std::uint8_t* condition_block(int i) { return data() + def::kFilter + kConditionSize * i; }
  const std::uint8_t* condition_block(int i) const {
    return data() + def::kFilter + kConditionSize * i;
  }
  Condition condition(int i) const { return Condition::Read(condition_block(i)); }
  void set_condition(int i, const Condition& c) { c.Write(condition_block(i)); }

  // The field display order (first per-position table).
  int display_slot(int position) const { return bytes_[def::kDisplayOrder + position]; }
  void set_display_slot(int position, int slot) {
    bytes_[def::kDisplayOrder + position] = static_cast<std::uint8_t>(slot);
  }
  // Bytes of 100 or more become 0; then anything but a permutation of 0..99 becomes 0..99.
  void RepairDisplayOrder();

  bool record_header_on() const { return GetBE16(data() + def::kRecordHeaderSwitch) != 0; }
  void set_record_header_on(bool on) { PutBE16(data() + def::kRecordHeaderSwitch, on ? 1 : 0); }
  bool resort_pending() const { return bytes_[def::kResortPending] != 0; }
  void set_resort_pending(bool on) { bytes_[def::kResortPending] = on ? 1 : 0; }
  std::uint16_t return_record() const { return GetBE16(data() + def::kReturnRecord); }
  void set_return_record(std::uint16_t index) { PutBE16(data() + def::kReturnRecord, index); }
  std::uint8_t settings_flags() const { return bytes_[def::kSettingsFlags]; }
  void set_settings_flags(std::uint8_t flags) { bytes_[def::kSettingsFlags] = flags; }
  int lookup_field() const { return bytes_[def::kLookupField] < kFieldSlots ? bytes_[def::kLookupField] : 0; }
  std::uint32_t view_count() const { return GetBE32(data() + def::kViewCount); }
  void set_view_count(std::uint32_t n) { PutBE32(data() + def::kViewCount, n); }
  std::uint8_t* view_block(int v) { return data() + def::kViews + kViewSize * v; }
  const std::uint8_t* view_block(int v) const { return data() + def::kViews + kViewSize * v; }

  // Slot of the used field whose name is `name` (case ignored), if any.
  std::optional<int> FindField(std::string_view name) const;

 private:
  Bytes bytes_;
};

// Records 1..100: one per field slot, holding that field's pop-up list.
struct FieldRecord {
  std::uint8_t lead = 22;
  std::array<std::uint8_t, 22> prefix{};
  std::vector<std::array<std::uint8_t, 20>> items;
  std::vector<std::array<std::uint8_t, 16>> table;
  std::vector<std::string> texts;  // one per item; empty items store no text
  std::array<std::uint8_t, 4> tail{};
  std::uint8_t attributes = 0;
  std::uint32_t uid = 0;

  // 31 + 20 per item + 16 per table entry + each non-empty text with its terminator.
  std::size_t EncodedSize() const;
  Bytes Encode() const;
  static std::optional<FieldRecord> Decode(std::span<const std::uint8_t> bytes);
  std::string_view ItemText(std::size_t i) const {
    return i < texts.size() ? std::string_view(texts[i]) : std::string_view();
  }
  // Replaces the list with these texts (blank item entries).
  void SetItems(const std::vector<std::string>& new_texts);
};

// Record 101: a table of 16-byte entries.
struct AuxRecord {
  std::uint8_t lead = 22;
  std::array<std::uint8_t, 22> prefix{};
  std::vector<std::array<std::uint8_t, 16>> entries;
  std::array<std::uint8_t, 3> tail{0, 0, 1};
  std::uint8_t attributes = 0;
  std::uint32_t uid = 0;

  Bytes Encode() const;
  static std::optional<AuxRecord> Decode(std::span<const std::uint8_t> bytes);
};

struct Schema {
  DatabaseDefinition definition;
  std::uint8_t attributes = 0;  // record 0's list entry
  std::uint32_t uid = 0;
  std::array<FieldRecord, kFieldSlots> fields;
  AuxRecord aux;
};

// A new database's schema with every default of a fresh database.
Schema NewSchema();
// Reads records 0..101 of a container; nothing when any of them is malformed.
std::optional<Schema> DecodeSchema(const std::vector<RawRecord>& records);
// Appends records 0..101 to `out`.
void EncodeSchema(const Schema& schema, bool dirty, std::vector<RawRecord>& out);

}  // namespace qv
