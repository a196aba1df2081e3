#pragma once
// The status bar's account of what the list shows: how many records pass the filter and what
// the records are sorted by (UTF-8).

#include <string>

#include "engine/workspace.h"

namespace qv::app {

// 65000 as "65,000".
std::string GroupedNumber(std::uint64_t n);
// "3,717 of 65,000 records pass the filter" (or "65,000 records" without a filter), then
// "  |  Sorted by Name, Qty (reverse)" when a sort key is set. Empty with no database open.
std::string ListStatusText(const Workspace& workspace);

}  // namespace qv::app
