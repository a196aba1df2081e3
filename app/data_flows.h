#pragma once
// What the data commands do around their dialogs: Find and Find Again, Sorting, Edit Filters,
// the column sorts, Export, Import and Set Values. Long work runs on a copy of the database
// with a progress dialog; the copy replaces the database only when the work was not cancelled.

#include <functional>
#include <optional>
#include <string>

#include "app/dialogs.h"
#include "app/open_hooks.h"
#include "engine/workspace.h"
#include "processing/find.h"

namespace qv::app {

class DataFlows {
 public:
  DataFlows(Workspace& workspace, Dialogs& dialogs, AccessGate& access)
      : workspace_(workspace), dialogs_(dialogs), access_(access) {}

  // "Find...": the dialog, then a search from the current record. The match, if any.
  std::optional<FindMatch> Find();
  // "Find Again": on from the last match (or the current record); past the last record it
  // goes round to the first once before "Not Found in Database!".
  std::optional<FindMatch> FindAgain();
  // "Sort...": true when new keys were stored and the records sorted.
  bool Sort();
  // "Filter...": true when a new filter was stored.
  bool Filter();
  // The column menu's "Sort Forward" / "Sort Reverse".
  bool SortOnColumn(int slot, bool forward);
  // A view chosen in the drop-down: applied (sorted, filtered) with the progress dialog.
  bool ApplyView(int view);
  // "Export Records...".
  void Export();
  // "Import CSV...": true when records were added.
  bool Import();
  // The column menu's "Set Values To..": true when values were set.
  bool SetValues(int slot);
  // Forgets the last match (another database was opened).
  void Forget() { last_.reset(); }

 private:
  enum class Outcome { Cancelled, Dropped, Kept };
  // Runs `work` on a copy of the current database under a progress dialog; when it finishes
  // and answers true, the copy replaces the database and the current record stays the same
  // record. Nothing the work shares may be read after a cancel: it may still be running.
  Outcome RunOnCopy(const std::string& title, std::function<bool(Database&, Prompter&)> work);
  std::optional<FindMatch> Search(const FindSettings& settings, int start, int start_field,
                                  bool report);

  Workspace& workspace_;
  Dialogs& dialogs_;
  AccessGate& access_;
  std::optional<FindMatch> last_;
};

}  // namespace qv::app
