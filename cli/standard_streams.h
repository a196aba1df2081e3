#pragma once
// "-" names standard input where a command reads a file and standard output where it writes
// one, so qvdb sits in a pipe: `qvdb export Stock.PDB - --json | jq ...`.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bytes.h"
#include "engine/database.h"

namespace qv::cli {

class CliContext;

bool IsStandardStream(const std::string& path);
// The whole file, or all of standard input; nothing (reported) when it cannot be read.
std::optional<Bytes> ReadInput(CliContext& context, const std::string& path);
// Replaces the file with the text, or writes it to standard output; false (reported) on failure.
bool WriteOutput(CliContext& context, const std::string& path, std::string_view text);

// A database given as "-" is read from standard input, with the usual checks; it has no file to
// be saved to, so commands that change it refuse (see SaveRefused).
std::unique_ptr<Database> OpenStandardInput(CliContext& context);
// True (reported) when the database came from standard input.
bool SaveRefused(CliContext& context, const Database& db);

}  // namespace qv::cli
