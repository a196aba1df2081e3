#include "cli/command_access.h"

#include <array>

#include "security/access.h"

namespace qv::cli {

namespace {

struct CommandRule {
  std::string_view command;
  std::string_view verb;  // "*" for every sub-command
  int action;
};

constexpr std::array kRules = {
    // Add Records: the new-record command, and records coming from elsewhere.
    CommandRule{"add", "*", kAddRecords},
    CommandRule{"import", "*", kAddRecords},
    CommandRule{"new", "into", kAddRecords},  // --from-csv over an existing database
    CommandRule{"receive", "*", kAddRecords},
    // Edit Records: the record editor; recalculation rewrites stored values as it does.
    CommandRule{"set", "*", kEditRecords},
    CommandRule{"recalc", "*", kEditRecords},
    CommandRule{"plugin", "call", kEditRecords},
    // A record's alarm is set in the record editor.
    CommandRule{"alarm", "set", kEditRecords},
    CommandRule{"alarm", "clear", kEditRecords},
    // Delete Records: deleting. (copy and move check Add Records on the target and Delete
    // Records on the source themselves, since they open two databases.)
    CommandRule{"delete", "*", kDeleteRecords},
    // DB Properties: everything the database properties pages change.
    CommandRule{"calc", "*", kDbProperties},
    CommandRule{"field", "add", kDbProperties},
    CommandRule{"field", "set", kDbProperties},
    CommandRule{"field", "move", kDbProperties},
    CommandRule{"field", "delete", kDbProperties},
    CommandRule{"plugin", "configure", kDbProperties},
    CommandRule{"views", "new", kDbProperties},
    CommandRule{"views", "copy", kDbProperties},
    CommandRule{"views", "delete", kDbProperties},
    CommandRule{"security", "*", kDbProperties},
    CommandRule{"encrypt", "*", kDbProperties},
    CommandRule{"decrypt", "*", kDbProperties},
    // Delete Database: a database replaced by a new one.
    CommandRule{"new", "replace", kDeleteDatabase},
    // `link` reads: Open Database on the database it starts from and on the linked one.
    // Beam Data.
    CommandRule{"beam", "*", kBeamData},
};

}  // namespace

std::optional<int> CommandAction(std::string_view command, std::string_view verb) {
  for (const CommandRule& rule : kRules)
    if (rule.command == command && (rule.verb == "*" || rule.verb == verb)) return rule.action;
  return std::nullopt;
}

}  // namespace qv::cli
