#pragma once
// A qvdb command: its name, one-line synopsis and the function that runs it.

#include <QCommandLineParser>
#include <QStringList>
#include <string>
#include <vector>

namespace qv::cli {

class CliContext;

// Exit codes: success, refused or failed, bad usage.
inline constexpr int kOk = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;

struct Command {
  std::string name;
  std::string synopsis;  // shown by `qvdb help`
  int (*run)(CliContext& context, const QStringList& arguments);
};

// The command groups; each lives in its own source file.
std::vector<Command> DatabaseCommands();  // info, list, new, check
std::vector<Command> RecordCommands();    // add, set, delete
std::vector<Command> SecurityCommands();  // encrypt, decrypt, security
std::vector<Command> ProcessingCommands();  // sort, filter, calc, recalc
std::vector<Command> ViewCommands();        // views, report, find
std::vector<Command> ExchangeCommands();    // export, import
std::vector<Command> BeamCommands();        // beam send, beam receive

}  // namespace qv::cli
