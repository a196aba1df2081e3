#pragma once
// Databases reached from one another through fields: a Link field (or a Relationship) of a parent
// record names the other database by its header name and carries the key its records are
// matched by; the other database's Linked field (or the field the Relationship names) holds the
// parent's key. docs/FORMAT.md gives the value and settings layouts.

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

inline constexpr const char* kLinkedNotPresent = "Linked Database is not present in this folder!";
inline constexpr const char* kLinkedCannotOpen =
    "Unable to open Linked Database in this user's folder!";
inline constexpr const char* kLinkedErrorCaption = "ERROR";
inline constexpr const char* kReassignQuestion =
    "Would you like to reassign the linked record to this record?";
inline constexpr const char* kDeleteLinkedQuestion =
    "Would you like to delete the linked records also? (Y/N)";
inline constexpr const char* kQuestionCaption = "QUESTION";
// The open table holds the databases of the four stack slots; nothing beyond is ever found.
inline constexpr std::size_t kOpenTableSize = 4;

namespace link_settings {
inline constexpr std::size_t kSourceField = 56;  // DB Popup: field of the other database shown
                                                 // Relationship: this database's key field
inline constexpr std::size_t kPairGroup = 64;    // DB Popup: fields with equal nonzero groups pair
inline constexpr std::size_t kOtherField = 65;   // Link, Relationship: the other database's field
inline constexpr std::uint8_t kNoField = 0xFF;
inline constexpr std::size_t kLinkedBlock = 24;  // Linked value: key block before the shown text
inline constexpr std::size_t kLinkedTextMax = 255;
}  // namespace link_settings

// What a caller gets to select the linked records with.
struct LinkRequest {
  std::uint32_t key = 0;        // the parent's link key
  std::uint8_t field_byte = 0;  // the Link field's byte 65
  std::uint32_t record = 0;     // the parent record's number
  Bytes area;                   // the record's prefix body; empty when its prefix byte is 0
};

// The access check applied to a linked database (it speaks for itself on refusal): false
// refuses. It may also unlock an enciphered database.
using LinkAccessCheck = std::function<bool(Database& db)>;

struct LinkedOpen {
  Database* db = nullptr;            // the linked database, or nothing
  std::unique_ptr<Database> opened;  // set when it was opened for the purpose (db points at it)
  LinkRequest request;
};

// Whether a field reaches another database (Link, Linked, DB Popup, Relationship).
bool IsLinkingType(unsigned type);

// The link request for field `slot` of record `number`.
LinkRequest MakeLinkRequest(const Database& db, int slot, std::uint32_t number);

// The loaded database whose full path equals `path` without regard to case, among the first
// four of `open`; nothing when none is.
Database* FindOpenDatabase(std::span<Database* const> open, const std::string& path);

// Opens the database linked through field `slot` of record `number` of `db`: found by name in
// db's folder, reused when already open, else loaded; then the access check. Failures are told
// through the prompter with the system's messages and give no database.
LinkedOpen OpenLinkedDatabase(const Database& db, int slot, std::uint32_t number,
                              std::span<Database* const> open, Prompter& prompter,
                              const LinkAccessCheck& access);

// The other database's field that holds the parent key of a Link or Relationship field: byte 65
// when it names a field that can hold it, else (Link) the first Linked field naming the parent
// database, else the first Linked field. -1 when there is none.
int ChildKeyField(const Database& parent, int slot, const Database& child);

// The parent's key of a Link or Relationship field (0: no linked records yet).
std::uint32_t LinkKey(const Database& db, int slot, std::uint32_t number);
// The key of a Link field, given one when it has none: one past the largest key of the field.
// The record is stored with it (the database marked changed). 0 for a Relationship whose key
// field is empty, or a record that does not exist.
std::uint32_t EnsureLinkKey(Database& db, int slot, std::uint32_t number);

// Shows only the records that belong to the parent's key (the linked-record restriction).
void RestrictToParent(Database& child, int child_field, std::uint32_t key);
// Lifts the restriction.
void ClearRestriction(Database& child);
// The child records whose `child_field` holds `key`, in table order.
std::vector<std::uint32_t> LinkedRecords(const Database& child, int child_field, std::uint32_t key);

// A Linked value: the 24-byte block starting with the key, then the shown text (at most 255
// bytes) and its NUL.
Bytes LinkedValue(std::uint32_t key, std::string_view shown);
// What a Linked value shows of its parent record: the parent's look-up field as displayed.
std::string ParentShownText(const Database& parent, std::uint32_t number,
                            const FormatOptions& options);
// Puts the parent's key (and, for a Linked field, its shown text) into the values of a record
// that is being added through a link.
void BelongToParent(const Database& child, int child_field, std::uint32_t key,
                    std::string_view shown, RecordValues& values);

// Makes child record `number` belong to another parent record. False when the record is gone.
bool ReassignLinkedRecord(Database& child, std::uint32_t number, int child_field, std::uint32_t key,
                          std::string_view shown);

// The keys the Link fields of `records` carry, per Link field slot, for deleting linked records
// (Relationship fields are left out: what they reach is not theirs).
struct LinkKeys {
  int slot = -1;
  std::vector<std::uint32_t> keys;
};
std::vector<LinkKeys> LinkKeysOf(const Database& db, std::span<const std::uint32_t> records);
// Deletes the child records whose `child_field` holds one of `keys`; returns how many went.
std::uint32_t DeleteLinkedRecords(Database& child, int child_field,
                                  std::span<const std::uint32_t> keys, Prompter& prompter);

// DB Popup: the value picked from record `picked` of `other` for field `slot`, and the values of
// the DB Popup fields paired with it (equal nonzero byte 64, same database).
void FillDbPopups(const Database& db, int slot, const Database& other, std::uint32_t picked,
                  const FormatOptions& options, RecordValues& values);

}  // namespace qv
