#pragma once
// Moving and copying records into another database whose fields have the same types: the
// current record, or every record the current view shows (selector 64999). The target is the
// source itself (copy only), a database open already, or a file opened for the operation and
// saved and closed afterwards.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/database.h"
#include "platform/clock.h"
#include "platform/prompter.h"
#include "security/access.h"

namespace qv {

// The selector that stands for every record the current view shows; deliberate, as the menu
// commands pass it.
inline constexpr std::uint32_t kAllViewRecords = 64999;

inline constexpr const char* kSameDatabase =
    "ERROR: Cannot perform this operation to the same database";
inline constexpr const char* kFieldTypesDiffer =
    "ERROR: Field Types of Database:%s do not match that of this database!";

// True when the two definitions have the same type in every one of the 100 field slots.
bool FieldTypesMatch(const DatabaseDefinition& target, const DatabaseDefinition& source);

// Appends a copy of source record `index` to the target, its values encoded under the target's
// definition (a fresh record header where the target keeps one). 0 when there is no such record,
// when its values are enciphered, or when the target is full; else non-zero.
int CopyRecordTo(std::uint32_t index, const Database& source, Database& target);

// What a transfer asks of the program around it.
struct TransferServices {
  Prompter& prompter;
  const Clock& clock;
  // The access check of a guarded action on a database; false when refused (and said so).
  std::function<bool(Database& db, int action)> allowed;
  // Opens a database that is not open yet, with its open checks and passwords; nothing when it
  // cannot be opened (the reason reported).
  std::function<std::unique_ptr<Database>(const std::string& path)> open;
  // Saves a target opened for the operation; false when nothing was saved (reported).
  std::function<bool(Database& db)> save;
  // The databases open already, searched by path before a file is opened.
  std::vector<Database*> open_databases;
};

// The services made from the security operations: the access check, the checked open and the
// save with encryption on close, every prompt through `ui`.
TransferServices SecurityTransferServices(SecurityUi& ui, const Clock& clock);

struct TransferOutcome {
  int result = 0;   // 1 when the target was the source itself (a copy), else 0
  bool ok = false;  // the transfer ran to its end and the target holds the copies
  std::uint32_t copied = 0;
  std::uint32_t deleted = 0;  // records moved out of the source
};

// Copies (or, with `move`, moves) the selected records into the database at `target_path`.
TransferOutcome TransferRecords(bool move, std::uint32_t selector, Database& source,
                                const std::string& target_path, TransferServices& services);

}  // namespace qv
