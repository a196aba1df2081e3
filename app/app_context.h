#pragma once
// The services the main window works with; owned by the caller (the program, or a test).

#include "app/dialogs.h"
#include "app/open_hooks.h"
#include "engine/workspace.h"
#include "platform/paths.h"

namespace qv::app {

struct AppContext {
  Workspace& workspace;
  const Paths& paths;
  Dialogs& dialogs;
  AccessGate& access;
  FormatConverter& converter;
  NotificationHandler& alarms;
};

}  // namespace qv::app
