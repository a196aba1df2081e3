#pragma once
// The five user preferences, kept as "%d" strings in the settings.

#include "engine/workspace.h"
#include "platform/settings.h"

namespace qv::app {

// Missing or unreadable values keep the defaults (AutoSave, AutoSIP, AllowChecks on; AllowPopups,
// AllowDateTime off).
Preferences ReadPreferences(const Settings& settings);
void WritePreferences(Settings& settings, const Preferences& preferences);

}  // namespace qv::app
