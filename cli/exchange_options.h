#pragma once
// The options qvdb's CSV commands share: the separator and the text encoding of the file.

#include <QCommandLineParser>
#include <optional>
#include <vector>

#include "cli/cli_context.h"
#include "processing/csv_import.h"
#include "processing/text_encoding.h"

namespace qv::cli {

// Adds --separator C and --encoding utf-8|cp1252.
void AddExchangeOptions(QCommandLineParser& parser);
// The separator: one character, or "tab"; ',' when not given. Reports a bad one.
std::optional<char> SeparatorOption(CliContext& context, const QCommandLineParser& parser);
std::optional<TextEncoding> EncodingOption(CliContext& context, const QCommandLineParser& parser);
// Prints each refused row as "line N: reason" on standard error.
void ReportImportProblems(const std::vector<ImportProblem>& problems);
// Lists the refused rows and saves what an import stored, saying how many rows were stored and
// refused (a new file is written even without rows). Under --strict a refused row (or a text not
// stored exactly) leaves the file as it was.
int SaveImport(CliContext& context, Database& db, const ImportResult& result, bool new_file);

}  // namespace qv::cli
