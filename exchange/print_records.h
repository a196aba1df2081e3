#pragma once
// Printing: the records are written as plain text to a temporary file, which is handed to the
// print command (the CUPS client `lp` unless the settings name another) as its last argument.
// The command's exit code decides the message: 0 printed, 63 cancelled (silent), else a problem.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/process_runner.h"
#include "platform/prompter.h"
#include "platform/settings.h"
#include "processing/record_text.h"

namespace qv {

inline constexpr const char* kPrintTempFileName = "qvprnttemp.txt";
inline constexpr const char* kPrintCommandKey = "PrintCommand";
inline constexpr const char* kDefaultPrintCommand = "lp";
// The exit code by which the print command says the user cancelled.
inline constexpr int kPrintCancelled = 63;

// The print command of the settings, or `lp`.
std::string PrintCommand(const Settings& settings);

// Splits a command line into arguments as a shell would split plain words: blanks separate,
// single and double quotes group, a backslash escapes the next character. Nothing when a quote
// is left open. No expansion of any kind takes place.
std::optional<std::vector<std::string>> SplitCommandLine(std::string_view line);

// Appends record `number` as printed: one line per used, shown field in display order, then 40
// hyphens; three blanks of indent per nesting level. Text is UTF-8. A Link field prints the
// records `linked` writes for it (see LinkedTextWriter), nothing without one.
void PrintRecordText(std::uint32_t number, const Database& db, std::string& out, int level,
                     const FormatOptions& options, const LinkedRecordsWriter& linked = {});

// The text PrintRecords writes: every record the current view shows, in record order (`all`),
// or only the current record.
std::string PrintText(const Database& db, bool all, const FormatOptions& options,
                      const LinkedRecordsWriter& linked = {});

enum class PrintResult { kNothing, kPrinted, kCancelled, kProblem, kCannotStart, kCannotWrite };

struct PrintJob {
  std::string temp_path;  // the temporary file, deleted afterwards
  std::string command;    // the print command line; the file is added as its last argument
};

// Writes the text to the temporary file, runs the command and reports its outcome with the
// system's messages. Does nothing when no database is loaded.
PrintResult PrintRecords(const Database& db, bool all, const PrintJob& job,
                         const FormatOptions& options, Prompter& prompter, ProcessRunner& runner,
                         const LinkedRecordsWriter& linked = {});

}  // namespace qv
