#pragma once
// Changes that could not be saved when the program was ended from outside (a signal, the end of
// the desktop session) without anyone to answer the save question: they are kept in a recovery
// file beside the database and offered at the next start.

#include <functional>
#include <memory>
#include <string>

#include "engine/workspace.h"
#include "platform/paths.h"

namespace qv::app {

// "Stock.PDB.recovery" beside the database; a never-saved one's goes to the data folder.
std::string RecoveryPath(const Database& db, const std::string& data_folder);

// Writes the database, as a save would, to its recovery file (readable by the owner only) and
// notes it in the settings for the next start. False when it could not be written.
bool KeepForRecovery(Settings& settings, const Database& db, const std::string& data_folder);

// Asks whether to restore the kept changes. Yes: the database as it was, at its own path and
// marked modified, once `accept` agrees (the access checks of an open); the recovery file is then
// removed. No also removes it. Nothing when there was none or it was not taken.
std::unique_ptr<Database> TakeRecovery(Settings& settings, Prompter& prompter,
                                       const std::function<bool(Database&)>& accept);

// Removes the recovery file noted in the settings: its changes were dealt with after all.
void DropRecovery(Settings& settings);

// Closes every open database as Exit would, without asking: one the close-with-save rule saves
// without a question is saved; one it would ask about (or whose save fails) is kept for
// recovery. When `quitting`, the kept ones are marked unmodified so the shut-down that follows
// does not also save them; otherwise (the session manager's commit-data request) they stay as
// they are.
void CloseUnattended(Workspace& workspace, const Paths& paths, bool quitting);

}  // namespace qv::app
