#pragma once
// Views: named snapshots of the field order, the per-field column settings, the filter and the
// sort, kept in the 20 view blocks of the database definition. docs/FORMAT.md gives the layout.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

// Offsets inside one 1,142-byte view block.
namespace view {
inline constexpr std::size_t kName = 0;             // 32 bytes, NUL-terminated
inline constexpr std::size_t kFlags = 32;           // flag byte, kViewApplied
inline constexpr std::size_t kFieldOrder = 66;      // 100 slot numbers
inline constexpr std::size_t kListSetting = 166;    // 32-bit, from record 0 offset 28
inline constexpr std::size_t kFieldSettings = 170;  // 100 x 4 bytes
inline constexpr std::size_t kFilter = 570;         // six condition blocks
inline constexpr std::size_t kSortKeys = 1136;      // three 2-byte sort entries
}  // namespace view

// Flag bit: the view that was applied last, so the list and its drop-down reopen on it.
inline constexpr std::uint8_t kViewApplied = 0x01;

// The number of views, never above 20 whatever the file says.
int ViewCount(const Database& db);
std::string ViewName(const Database& db, int v);
// The view applied last, if any.
std::optional<int> CurrentView(const Database& db);

// Copies the current field order, per-field column settings (list width, field definition
// bytes 4 and 5), the six conditions, the list setting and the sort keys into view `v`. The
// name and flag byte stay as they are.
void CaptureView(Database& db, int v);

// The names of all views, in order.
std::vector<std::string> ViewNames(const Database& db);

// Opening the views page: a database without views gets view 0, "Default View", captured from
// the current settings. True when it was made.
bool EnsureDefaultView(Database& db);

// "New View": refused with the limit message at 20 views; otherwise the new last view, named
// "New View", flag byte cleared, captured from the current settings. Its number, for the editor.
std::optional<int> NewView(Database& db, Prompter& prompter);

// Copies view `selected` byte for byte to a new last view; silent and nothing done at 20 views
// or without a valid selection. The copy's number, for the editor.
std::optional<int> CopyView(Database& db, int selected);

// Asks "Are you sure you want to delete this view?"; on Yes moves the later views down, clears
// the name of slot 19 and lowers the count. True when deleted.
bool DeleteView(Database& db, int selected, Prompter& prompter);

// Makes view `v` the current settings: field order, column settings, filter, list setting and
// sort; sorts, rebuilds the filtered list and keeps the current record when it is still shown
// (else the first shown record). False when there is no such view.
bool ApplyView(Database& db, int v, Prompter& prompter);

// The view editor's parts of view `v`: its name, its field order (100 slots), the stored list
// width of each field (0: hidden) and its six filter conditions.
void SetViewName(Database& db, int v, std::string_view name);
std::vector<int> ViewFieldOrder(const Database& db, int v);
void SetViewFieldOrder(Database& db, int v, const std::vector<int>& order);
unsigned ViewFieldWidth(const Database& db, int v, int slot);
void SetViewFieldWidth(Database& db, int v, int slot, unsigned width);
Condition ViewCondition(const Database& db, int v, int i);
void SetViewCondition(Database& db, int v, int i, const Condition& c);
// The view's three sort keys.
SortKey ViewSortKey(const Database& db, int v, int k);

// A list width changed by the user (a dragged divider, "Hide Field"): the field's width and,
// when a view is current, that view's width for it, so re-applying the view keeps it.
void StoreListWidth(Database& db, int slot, unsigned width);

}  // namespace qv
