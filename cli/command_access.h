#pragma once
// Which guarded action each qvdb command checks: the one the application's command doing the
// same thing checks. One table, so no command can miss its check; docs/SECURITY.md lists it.

#include <optional>
#include <string_view>

namespace qv::cli {

// The action (security/access.h numbering) that `command` with sub-command `verb` ("" for
// none) checks, beyond the Open Database check every command makes. Nothing for commands that
// only read, sort or filter, as the application's list, Sort, Filter, Find, Export and Run
// Report do.
std::optional<int> CommandAction(std::string_view command, std::string_view verb);

}  // namespace qv::cli
