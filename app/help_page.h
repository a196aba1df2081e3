#pragma once
#include <string>

#include "platform/paths.h"

namespace qv::app {

// Opens the bundled help page at its contents in the default browser. The page is copied out of
// the program's resources first, since a browser cannot read them.
bool OpenHelpPage(const Paths& paths);
// Where OpenHelpPage puts the page, for telling the user when no browser can be started.
std::string HelpPagePath(const Paths& paths);

}  // namespace qv::app
