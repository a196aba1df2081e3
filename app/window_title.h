#pragma once
// The texts the main window shows about the current database (UTF-8).

#include <string>

#include "engine/workspace.h"

namespace qv::app {

// "Name* (shown/total)" while modified, "Name (shown/total)" otherwise, "Quorvant" with no
// database open.
std::string WindowTitle(const Workspace& workspace);
// Whether another database of the recent-files list (another file) has the current one's name;
// the title then names the file too, so the two can be told apart.
bool NameSharedWithRecentFile(const Workspace& workspace);
// The title followed by " - " and the database's file (its whole path when a recent file of the
// same name lies in another folder).
std::string TitleNamingFile(const Workspace& workspace);
// The record-count label above the list.
std::string RecordCountText(const Workspace& workspace);

}  // namespace qv::app
