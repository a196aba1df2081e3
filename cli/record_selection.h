#pragma once
// Which records a reading command covers, and in what order, by one rule for all of them: the
// records that pass the stored filter (every record with --all), narrowed by --where
// conditions, in the stored order or that of --sort, at most --limit of them. Sort keys and
// conditions change the open copy's settings only; the file is never touched, and the records
// keep their numbers.

#include <QCommandLineParser>
#include <cstdint>
#include <optional>
#include <vector>

#include "cli/cli_context.h"

namespace qv::cli {

// Adds --all, --filtered (the default, said outright), --sort FIELD[:reverse] (up to three),
// --where CONDITION (up to six, all must hold) and --limit N.
void AddSelectionOptions(QCommandLineParser& parser);

// The records (table positions) the options select; nothing, with `code` kUsage or kFailed
// and the problem reported, when an option is malformed or names no field.
std::optional<std::vector<std::uint32_t>> SelectRecords(CliContext& context, Database& db,
                                                        const QCommandLineParser& parser,
                                                        int& code);

// For commands that test the filter record by record (report, find): with --all the open
// copy's filter is cleared, so they cover every record.
void ApplyAllOption(Database& db, const QCommandLineParser& parser);

// The fields of --fields A,B,... in that order, else every used field in display order; nothing
// (reported, `code` kFailed) when a name is not a field's.
std::optional<std::vector<int>> SelectFields(CliContext& context, const Database& db,
                                             const QCommandLineParser& parser, int& code);

}  // namespace qv::cli
