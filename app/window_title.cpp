#include "app/window_title.h"

#include "app/recent_files.h"
#include "app/status_text.h"
#include "engine/container.h"
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

namespace {

std::string FileName(const std::string& path) {
  std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Both entries of the recent-files list that hold the current database's name.
std::vector<std::string> SameNamedRecentFiles(const Workspace& workspace) {
  std::vector<std::string> out;
  const Database& db = workspace.current();
  for (const std::string& path : ReadRecentFiles(workspace.settings)) {
    if (path.empty() || ToLowerAscii(path) == ToLowerAscii(db.path)) continue;
    Header header;
    if (ReadHeader(path, header) == 1 && header.Name() == db.name) out.push_back(path);
  }
  return out;
}

}  // namespace

bool NameSharedWithRecentFile(const Workspace& workspace) {
  return workspace.has_open_database() && !SameNamedRecentFiles(workspace).empty();
}

std::string TitleNamingFile(const Workspace& workspace) {
  const std::string& path = workspace.current().path;
  bool same_file_name = false;
  for (const std::string& other : SameNamedRecentFiles(workspace))
    same_file_name |= ToLowerAscii(FileName(other)) == ToLowerAscii(FileName(path));
  return WindowTitle(workspace) + " - " + (same_file_name ? path : FileName(path));
}

std::string RecordCountText(const Workspace& workspace) {
  if (!workspace.has_open_database()) return "No database open";
  const Database& db = workspace.current();
  unsigned shown = static_cast<unsigned>(db.visible.size());
  if (shown == db.count()) return GroupedNumber(shown) + (shown == 1 ? " record" : " records");
  return GroupedNumber(shown) + " of " + GroupedNumber(db.count()) + " records";
}

}  // namespace qv::app
