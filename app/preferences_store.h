#pragma once
// The five user preferences, kept as "%d" strings in the settings.

#include <string>

#include "engine/workspace.h"
#include "platform/settings.h"

namespace qv::app {

// Missing or unreadable values keep the defaults (AutoSave, AutoSIP, AllowChecks on; AllowPopups,
// AllowDateTime off).
Preferences ReadPreferences(const Settings& settings);
void WritePreferences(Settings& settings, const Preferences& preferences);

// Where beams go and where this program listens: Comm/IrDA/Peer, Comm/IrDA/Port and
// Comm/IrDA/Bind (loopback until the user lets other computers beam here).
struct BeamPreferences {
  std::string peer = "127.0.0.1";
  int port = 650;
  std::string bind = "127.0.0.1";
  bool allow_network() const { return bind != "127.0.0.1" && bind != "::1" && bind != "localhost"; }
};
BeamPreferences ReadBeamPreferences(const Settings& settings);
void WriteBeamPreferences(Settings& settings, const BeamPreferences& preferences);

}  // namespace qv::app
