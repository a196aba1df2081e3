#include "app/window_title.h"

#include "app/status_text.h"
#include "engine/text.h"

namespace qv::app {

std::string WindowTitle(const Workspace& workspace) {
  if (!workspace.has_open_database()) return "Quorvant";
  const Database& db = workspace.current();
  std::string name = Cp1252ToUtf8(db.name);
  unsigned shown = static_cast<unsigned>(db.visible.size());
  return db.changed ? StringPrintf("%s* (%u/%u)", name.c_str(), shown, db.count())
                    : StringPrintf("%s (%u/%u)", name.c_str(), shown, db.count());
}

std::string RecordCountText(const Workspace& workspace) {
  if (!workspace.has_open_database()) return "No database open";
  const Database& db = workspace.current();
  unsigned shown = static_cast<unsigned>(db.visible.size());
  if (shown == db.count()) return GroupedNumber(shown) + (shown == 1 ? " record" : " records");
  return GroupedNumber(shown) + " of " + GroupedNumber(db.count()) + " records";
}

}  // namespace qv::app
