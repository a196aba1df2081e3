#pragma once
// Editing records from the command line the way the record editor does: typed values parsed,
// the record stored, and (as later layers add them) placed in sort order and recalculated.

#include <QStringList>
#include <optional>

#include "cli/cli_context.h"
#include "cli/command.h"

namespace qv::cli {

// Record numbers on the command line count from 1, as `qvdb list --numbers` shows them: the
// index from 0, or nothing after reporting what is not such a number (code kUsage) or a number
// past the last record (code kFailed).
std::optional<std::uint32_t> RecordNumber(CliContext& context, const Database& db,
                                          const QString& text, int& code);
// Applies FIELD=VALUE texts to the values of record `number` (kNewRecord for a new one); kOk,
// or the exit code after reporting the first malformed assignment (kUsage), unknown field or
// bad value (kFailed).
int ApplyAssignments(CliContext& context, const Database& db, const QStringList& assignments,
                     std::uint32_t number, RecordValues& values);
// Stores a new (kNewRecord) or edited record; its final number, or nothing when refused.
std::optional<std::uint32_t> StoreEditedRecord(CliContext& context, Database& db,
                                               const RecordValues& values, std::uint32_t number);
// Deletes these records.
bool DeleteEditedRecords(CliContext& context, Database& db, std::vector<std::uint32_t> numbers);

}  // namespace qv::cli
