#pragma once
// Following Link fields in the application: the linked database opens on top of the current one
// in the next slot of the open-database stack, showing only the records of the parent record;
// Back closes it through the close-with-save rule. Also adding, reassigning and deleting
// linked records with the application's access checks.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/delete_records.h"
#include "app/open_hooks.h"
#include "engine/workspace.h"
#include "processing/linked_database.h"

namespace qv::app {

class FileFlows;

inline constexpr const char* kStackFull =
    "Only four databases can be open at once. Go back before following another link.";
inline constexpr const char* kNoRelationshipKey =
    "This record has no value in the field its relationship is matched by.";
inline constexpr const char* kAlreadyOpenBelow =
    "The linked database (%s) is already open. Go back to it to work with it.";

// The databases of the stack, slot 0 to the current one: the open table links search.
std::vector<Database*> OpenTable(Workspace& workspace);
// The access check the application's gate makes on a linked database.
LinkAccessCheck GateAccess(Workspace& workspace, AccessGate& access);

// Follows field `slot` (Link or Relationship) of record `number` of the current database. False,
// told through the prompter, when the stack is full or the database cannot be had.
bool FollowLink(Workspace& workspace, AccessGate& access, int slot, std::uint32_t number);
// Back to the database below: the close-with-save rule on the top one, then it is closed. False
// at slot 0 or when the user cancelled.
bool ReturnFromLink(Workspace& workspace, FileFlows& flows);

// Back down to slot 0, each linked database through the close-with-save rule; false when the
// user cancelled one (the databases below it stay open).
bool ReturnToFirstDatabase(Workspace& workspace, FileFlows& flows);

// Where the user is: per open slot its name, and below the top the parent record followed
// ("Projects: Garden").
std::vector<std::string> Breadcrumb(Workspace& workspace);

// A record added under the linked-record restriction belongs to the parent record below.
void LinkNewRecord(Workspace& workspace, const Database& db, RecordValues& values);

// The database field `slot` reaches, read from the file without asking anything; nothing when
// it cannot be found or read without a password. For showing values inside a record.
std::unique_ptr<Database> ReadLinkedQuietly(const Database& db, int slot);

// The display texts (look-up field) of the records that carry `key` of Link field `slot`, read
// from the file without asking anything; nothing when the database cannot be found or read
// without a password.
std::optional<std::vector<std::string>> LinkedRecordTexts(const Database& db, int slot,
                                                          std::uint32_t key,
                                                          const FormatOptions& options);

// Chooses a record of a parent database (nothing: cancelled).
using ParentChooser = std::function<std::optional<std::uint32_t>(const Database& parent)>;
// The new value of Linked field `slot` of the current record of `child`: the parent record the
// user chooses and confirms ("Would you like to reassign ..."). Nothing when cancelled or said no.
std::optional<Bytes> ReassignValue(Workspace& workspace, AccessGate& access, Database& child,
                                   int slot, const ParentChooser& choose);

// The records a Delete Records scope covers.
std::vector<std::uint32_t> RecordsInScope(const Database& db, DeleteScope scope);
// Deletes the linked databases' records that hang on these keys (see LinkKeysOf), saving a
// database opened for the purpose. Returns how many went.
std::uint32_t DeleteLinkedRecordsOf(Workspace& workspace, AccessGate& access, const Database& db,
                                    const std::vector<LinkKeys>& keys);

}  // namespace qv::app
