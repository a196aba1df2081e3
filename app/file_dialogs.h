#pragma once
// The screens the file flows open, behind one interface so the flows run under tests too.

#include <optional>
#include <string>
#include <vector>

#include "engine/database.h"

namespace qv::app {

// One line of the start chooser after "More files...": a database's header name and the
// recent-files position it came from.
struct RecentEntry {
  std::string name;  // UTF-8
  int index = 0;
};

struct StartChoice {
  enum Kind { Dismissed, CreateNew, MoreFiles, Recent } kind = Dismissed;
  int recent_index = 0;  // the LastFile number for Recent
};

class FileDialogs {
 public:
  virtual ~FileDialogs() = default;
  // The Open file dialog starting in `folder`; the file must exist.
  virtual std::optional<std::string> AskOpenPath(const std::string& folder) = 0;
  // The Save-as dialog starting with `proposed`.
  virtual std::optional<std::string> AskSavePath(const std::string& proposed) = 0;
  virtual StartChoice ChooseStart(const std::vector<RecentEntry>& entries) = 0;
  // Lets the user define the fields of a new database; false when cancelled.
  virtual bool DefineNewDatabase(Database& db) = 0;
  // Opens record `number` in the record editor (read-only when `view_only`); true when the
  // record was changed.
  virtual bool OpenRecord(Database& db, std::uint32_t number, bool view_only) = 0;
};

}  // namespace qv::app
