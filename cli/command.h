#pragma once
// A qvdb command: its name, usage line, what it does, an example, and the function that runs it.
// `qvdb COMMAND --help` prints these with the command's options; the usage line also says how
// many positional arguments the command takes (see usage.h), so every command refuses extras.

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
  std::string synopsis;  // the usage line after "qvdb "; shown by `qvdb help`
  int (*run)(CliContext& context, const QStringList& arguments);
  std::string description;  // one or two sentences for `qvdb COMMAND --help`
  std::string example;      // a command line after "qvdb "
};

// The command groups; each lives in its own source file.
std::vector<Command> DatabaseCommands();    // info, list, new, check
std::vector<Command> RecordCommands();      // add, set, delete
std::vector<Command> SecurityCommands();    // encrypt, decrypt, security
std::vector<Command> ProcessingCommands();  // sort, filter, calc, recalc
std::vector<Command> ViewCommands();        // views, report, find
std::vector<Command> ExchangeCommands();    // export, import
std::vector<Command> FieldCommands();       // field
std::vector<Command> TransferCommands();    // print, copy, move, convert
std::vector<Command> BeamCommands();        // beam send, beam receive
std::vector<Command> PluginCommands();      // plugin
std::vector<Command> AlarmCommands();       // alarm
std::vector<Command> LinkCommands();        // link

}  // namespace qv::cli
