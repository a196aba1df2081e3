#pragma once
// "-" names standard input where a command reads a file and standard output where it writes
// one, so qvdb sits in a pipe: `qvdb export Stock.PDB - --json | jq ...`.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bytes.h"
#include "engine/database.h"

namespace qv {
class OutputFile;
}

namespace qv::cli {

class CliContext;

bool IsStandardStream(const std::string& path);
// The whole file, or all of standard input; nothing (reported) when it cannot be read.
std::optional<Bytes> ReadInput(CliContext& context, const std::string& path);
// Replaces the file with the text, or writes it to standard output; false (reported) on failure.
bool WriteOutput(CliContext& context, const std::string& path, std::string_view text);

// The same written in parts, so a long export never holds its whole text: the file is put in
// place by Finish (nothing replaces it without), standard output is written as it comes.
class OutputStream {
 public:
  OutputStream(CliContext& context, const std::string& path);
  ~OutputStream();
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;
  void Write(std::string_view text);
  bool Finish();  // false (reported) when anything could not be written

 private:
  CliContext& context_;
  std::string path_;
  std::unique_ptr<OutputFile> file_;  // none for standard output
  bool failed_ = false;
};

// A database given as "-" is read from standard input, with the usual checks; it has no file to
// be saved to, so commands that change it refuse (see SaveRefused).
std::unique_ptr<Database> OpenStandardInput(CliContext& context);
// True (reported) when the database came from standard input.
bool SaveRefused(CliContext& context, const Database& db);

}  // namespace qv::cli
