#pragma once
// What a usage line tells: how many positional arguments a command takes, and the help page
// of `qvdb COMMAND --help`.

#include <QCommandLineParser>
#include <iosfwd>
#include <string_view>

#include "cli/command.h"

namespace qv::cli {

inline constexpr int kAnyCount = -1;

// The most positional arguments a usage line allows: the plain words after the command name
// ("export FILE OUT [--csv]" takes 2) plus optional ones written "[N]". A line that repeats
// ("FIELD=VALUE ...") or offers alternatives ("list|new") takes kAnyCount: such a command counts
// for itself.
int MaxPositionalOf(std::string_view usage);

// "usage: qvdb ...", the description, the example and the options of the parser.
void PrintCommandHelp(const Command& command, const QCommandLineParser& parser, std::ostream& out);

}  // namespace qv::cli
