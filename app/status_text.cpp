#include "app/status_text.h"

#include "engine/text.h"
#include "processing/filter.h"
#include "processing/sort.h"

namespace qv::app {

std::string GroupedNumber(std::uint64_t n) {
  std::string digits = std::to_string(n);
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), ",");
  return digits;
}

std::string ListStatusText(const Workspace& workspace) {
  if (!workspace.has_open_database()) return {};
  const Database& db = workspace.current();
  std::string text = FilterActive(db)
                         ? GroupedNumber(db.visible.size()) + " of " + GroupedNumber(db.count()) +
                               " records pass the filter"
                         : GroupedNumber(db.count()) + (db.count() == 1 ? " record" : " records");
  std::string keys;
  for (int k = 0; k < kSortKeys; ++k) {
    SortKey key = EffectiveSortKey(db, k);
    if (key.field < 0) {
      if (k == 0) break;  // without a primary key nothing is sorted
      continue;
    }
    if (!keys.empty()) keys += ", ";
    keys += Cp1252ToUtf8(db.definition().field(key.field).name());
    if (!key.forward) keys += " (reverse)";
  }
  if (!keys.empty()) text += "  |  Sorted by " + keys;
  return text;
}

}  // namespace qv::app
