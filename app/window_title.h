#pragma once
// The texts the main window shows about the current database (UTF-8).

#include <string>

#include "engine/workspace.h"

namespace qv::app {

// "Name* (shown/total)" while modified, "Name (shown/total)" otherwise, "Quorvant" with no
// database open.
std::string WindowTitle(const Workspace& workspace);
// The record-count label above the list.
std::string RecordCountText(const Workspace& workspace);

}  // namespace qv::app
