#include "exchange/print_records.h"

#include <cerrno>
#include <cstdio>
#include <fstream>

#include "engine/text.h"
#include "processing/filter.h"
#include "processing/record_text.h"

namespace qv {

std::string PrintCommand(const Settings& settings) {
  auto command = settings.read(kPrintCommandKey);
  return command && !command->empty() ? *command : kDefaultPrintCommand;
}

std::optional<std::vector<std::string>> SplitCommandLine(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  char quote = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote) {
      if (c == quote)
        quote = 0;
      else if (c == '\\' && quote == '"' && i + 1 < line.size())
        word += line[++i];
      else
        word += c;
    } else if (c == '\'' || c == '"') {
      quote = c;
      in_word = true;
    } else if (c == '\\' && i + 1 < line.size()) {
      word += line[++i];
      in_word = true;
    } else if (c == ' ' || c == '\t' || c == '\n') {
      if (in_word) words.push_back(std::move(word));
      word.clear();
      in_word = false;
    } else {
      word += c;
      in_word = true;
    }
  }
  if (quote) return std::nullopt;
  if (in_word) words.push_back(std::move(word));
  return words;
}

void PrintRecordText(std::uint32_t number, const Database& db, std::string& out, int level,
                     const FormatOptions& options, const LinkedRecordsWriter& linked) {
  std::string text;
  WriteRecordText(db, number, level, options, text, linked);
  out += Cp1252ToUtf8(text);
}

std::string PrintText(const Database& db, bool all, const FormatOptions& options,
                      const LinkedRecordsWriter& linked) {
  std::string text;
  if (all) {
    for (std::uint32_t p = 0; p < db.count(); ++p)
      if (RecordPassesFilter(db, p)) PrintRecordText(p, db, text, 0, options, linked);
  } else if (db.current < db.count()) {
    PrintRecordText(db.current, db, text, 0, options, linked);
  }
  return text;
}

namespace {

bool WriteTempFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  return static_cast<bool>(out);
}

// The second message when the command cannot be started, by the reason.
std::string StartErrorText(int code) {
  switch (code) {
    case 1:
      return "Invalid Function.";
    case 2:
      return "File not found";
    case 63:
      return "Print Cancelled";
    case 995:
      return "Op Aborted.";
    default:
      return StringPrintf("Error #: %d", code);
  }
}

PrintResult CannotStart(int code, Prompter& prompter) {
  prompter.message(
      "Unable to call PrintPocketCE.  Please check to see if it is properly installed.", "ERROR",
      Icon::Error);
  prompter.message(StartErrorText(code), "ERROR", Icon::Error);
  return PrintResult::kCannotStart;
}

PrintResult RunPrintCommand(const PrintJob& job, Prompter& prompter, ProcessRunner& runner) {
  auto arguments = SplitCommandLine(job.command);
  // An empty or unbalanced command line names no program to call.
  if (!arguments || arguments->empty()) return CannotStart(1, prompter);
  arguments->push_back(job.temp_path);
  ProcessResult run = runner.Run(*arguments);
  if (!run.started) return CannotStart(run.error == ENOENT ? 2 : run.error, prompter);
  if (run.exit_code == 0) {
    prompter.message("Data Printed OK", "Update", Icon::Information);
    return PrintResult::kPrinted;
  }
  if (run.exit_code == kPrintCancelled) return PrintResult::kCancelled;
  prompter.message("There was a problem printing to PrintPocketCE", "Update", Icon::Warning);
  return PrintResult::kProblem;
}

}  // namespace

PrintResult PrintRecords(const Database& db, bool all, const PrintJob& job,
                         const FormatOptions& options, Prompter& prompter, ProcessRunner& runner,
                         const LinkedRecordsWriter& linked) {
  if (!db.loaded) return PrintResult::kNothing;
  prompter.busy(true);
  if (!WriteTempFile(job.temp_path, PrintText(db, all, options, linked))) {
    prompter.busy(false);
    std::remove(job.temp_path.c_str());
    prompter.message("ERROR: Unable to open temp file for writing.", "Error", Icon::Error);
    return PrintResult::kCannotWrite;
  }
  prompter.busy(false);
  PrintResult result = TestForFile(job.temp_path) ? RunPrintCommand(job, prompter, runner)
                                                  : PrintResult::kCannotWrite;
  std::remove(job.temp_path.c_str());
  return result;
}

}  // namespace qv
