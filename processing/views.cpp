#include "processing/views.h"

#include <algorithm>
#include <cstring>

#include "engine/bytes.h"
#include "processing/filter.h"
#include "processing/recalc.h"

namespace qv {

int ViewCount(const Database& db) {
  return static_cast<int>(std::min<std::uint32_t>(db.definition().view_count(), kMaxViews));
}

namespace {

constexpr std::size_t kViewFieldEntry = 4;
// The field definition bytes a view keeps per field: the list width (offset 6, 16-bit) and the
// two display bytes at offsets 4 and 5 (byte 5: the field is shown).
constexpr std::size_t kWidthOffset = 6;
constexpr std::size_t kDisplayByteA = 4;
constexpr std::size_t kDisplayByteB = 5;

void SetApplied(Database& db, int applied) {
  for (int v = 0; v < ViewCount(db); ++v) {
    std::uint8_t& flags = db.definition().view_block(v)[view::kFlags];
    if (v == applied)
      flags |= kViewApplied;
    else
      flags &= static_cast<std::uint8_t>(~kViewApplied);
  }
}

// The record's identity survives sorting; its table position does not.
std::optional<std::uint32_t> PositionOfUid(const Database& db, std::uint32_t uid) {
  for (std::uint32_t i = 0; i < db.count(); ++i)
    if (db.records[i].uid == uid) return i;
  return std::nullopt;
}

}  // namespace

std::string ViewName(const Database& db, int v) {
  if (v < 0 || v >= kMaxViews) return {};
  return std::string(CStringAt(db.definition().view_block(v) + view::kName, 32));
}

std::optional<int> CurrentView(const Database& db) {
  for (int v = 0; v < ViewCount(db); ++v)
    if (db.definition().view_block(v)[view::kFlags] & kViewApplied) return v;
  return std::nullopt;
}

void CaptureView(Database& db, int v) {
  if (v < 0 || v >= kMaxViews) return;
  DatabaseDefinition& d = db.definition();
  std::uint8_t* block = d.view_block(v);
  std::memcpy(block + view::kFieldOrder, d.data() + def::kDisplayOrder, kFieldSlots);
  std::memcpy(block + view::kListSetting, d.data() + def::kListSetting, 4);
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    const std::uint8_t* field = d.field(slot).bytes();
    std::uint8_t* entry = block + view::kFieldSettings + kViewFieldEntry * slot;
    entry[0] = field[kWidthOffset];
    entry[1] = field[kWidthOffset + 1];
    entry[2] = field[kDisplayByteA];
    entry[3] = field[kDisplayByteB];
  }
  std::memcpy(block + view::kFilter, d.data() + def::kFilter, kConditions * kConditionSize);
  std::memcpy(block + view::kSortKeys, d.data() + def::kSort, 2 * kSortKeys);
  db.changed = true;
}

std::vector<std::string> ViewNames(const Database& db) {
  std::vector<std::string> names;
  for (int v = 0; v < ViewCount(db); ++v) names.push_back(ViewName(db, v));
  return names;
}

bool EnsureDefaultView(Database& db) {
  if (ViewCount(db) > 0) return false;
  CaptureView(db, 0);
  PutCString(db.definition().view_block(0) + view::kName, 32, "Default View");
  // It is what the list shows right now.
  db.definition().set_view_count(1);
  SetApplied(db, 0);
  return true;
}

std::optional<int> NewView(Database& db, Prompter& prompter) {
  int count = ViewCount(db);
  if (count >= kMaxViews) {
    prompter.message("Sorry, you have reached the maximum number of Views for this database.",
                     "ERROR", Icon::Exclamation);
    return std::nullopt;
  }
  db.definition().set_view_count(static_cast<std::uint32_t>(count + 1));
  std::uint8_t* block = db.definition().view_block(count);
  PutCString(block + view::kName, 32, "New View");
  block[view::kFlags] = 0;
  CaptureView(db, count);
  return count;
}

std::optional<int> CopyView(Database& db, int selected) {
  int count = ViewCount(db);
  // Silent at the limit, unlike NewView; on purpose.
  if (count >= kMaxViews || selected < 0 || selected >= count) return std::nullopt;
  DatabaseDefinition& d = db.definition();
  std::memcpy(d.view_block(count), d.view_block(selected), kViewSize);
  d.set_view_count(static_cast<std::uint32_t>(count + 1));
  db.changed = true;
  return count;
}

bool DeleteView(Database& db, int selected, Prompter& prompter) {
  int count = ViewCount(db);
  if (selected < 0 || selected >= count) return false;
  if (prompter.ask("Are you sure you want to delete this view?", "Question", Buttons::YesNo,
                   Icon::Question) != Answer::Yes)
    return false;
  DatabaseDefinition& d = db.definition();
  std::memmove(d.view_block(selected), d.view_block(selected + 1),
               kViewSize * static_cast<std::size_t>(kMaxViews - 1 - selected));
  // Only the name of the freed last slot is cleared; the rest of it stays as it was.
  std::memset(d.view_block(kMaxViews - 1) + view::kName, 0, 32);
  d.set_view_count(static_cast<std::uint32_t>(count - 1));
  db.changed = true;
  return true;
}

bool ApplyView(Database& db, int v, Prompter& prompter) {
  if (v < 0 || v >= ViewCount(db)) return false;
  DatabaseDefinition& d = db.definition();
  const std::uint8_t* block = d.view_block(v);
  std::memcpy(d.data() + def::kDisplayOrder, block + view::kFieldOrder, kFieldSlots);
  d.RepairDisplayOrder();
  std::memcpy(d.data() + def::kListSetting, block + view::kListSetting, 4);
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    std::uint8_t* field = d.field(slot).bytes();
    const std::uint8_t* entry = block + view::kFieldSettings + kViewFieldEntry * slot;
    field[kWidthOffset] = entry[0];
    field[kWidthOffset + 1] = entry[1];
    field[kDisplayByteA] = entry[2];
    field[kDisplayByteB] = entry[3];
  }
  std::memcpy(d.data() + def::kFilter, block + view::kFilter, kConditions * kConditionSize);
  std::memcpy(d.data() + def::kSort, block + view::kSortKeys, 2 * kSortKeys);
  SetApplied(db, v);
  db.changed = true;

  std::optional<std::uint32_t> uid;
  if (db.current < db.count()) uid = db.records[db.current].uid;
  // The new order and filter change which record comes before which, so values that refer to
  // the previous record are brought up to date with the sort.
  ResortAndRecalculate(db, prompter);
  RebuildFilteredList(db);
  std::optional<std::uint32_t> at = uid ? PositionOfUid(db, *uid) : std::nullopt;
  if (at && std::find(db.visible.begin(), db.visible.end(), *at) != db.visible.end())
    db.current = *at;
  else
    db.current = db.visible.empty() ? 0 : db.visible.front();
  return true;
}

namespace {

bool ValidView(int v) {
  return v >= 0 && v < kMaxViews;
}

std::uint8_t* FieldEntry(Database& db, int v, int slot) {
  return db.definition().view_block(v) + view::kFieldSettings + kViewFieldEntry * slot;
}

}  // namespace

void SetViewName(Database& db, int v, std::string_view name) {
  if (!ValidView(v)) return;
  PutCString(db.definition().view_block(v) + view::kName, 32, std::string(name.substr(0, 31)));
  db.changed = true;
}

std::vector<int> ViewFieldOrder(const Database& db, int v) {
  std::vector<int> order;
  if (!ValidView(v)) return order;
  const std::uint8_t* table = db.definition().view_block(v) + view::kFieldOrder;
  for (int i = 0; i < kFieldSlots; ++i) order.push_back(table[i]);
  return order;
}

void SetViewFieldOrder(Database& db, int v, const std::vector<int>& order) {
  if (!ValidView(v) || order.size() != static_cast<std::size_t>(kFieldSlots)) return;
  std::uint8_t* table = db.definition().view_block(v) + view::kFieldOrder;
  for (int i = 0; i < kFieldSlots; ++i) table[i] = static_cast<std::uint8_t>(order[i]);
  db.changed = true;
}

unsigned ViewFieldWidth(const Database& db, int v, int slot) {
  if (!ValidView(v) || slot < 0 || slot >= kFieldSlots) return 0;
  return GetBE16(db.definition().view_block(v) + view::kFieldSettings + kViewFieldEntry * slot);
}

void SetViewFieldWidth(Database& db, int v, int slot, unsigned width) {
  if (!ValidView(v) || slot < 0 || slot >= kFieldSlots) return;
  PutBE16(FieldEntry(db, v, slot), static_cast<std::uint16_t>(std::min(width, 0xFFFFu)));
  db.changed = true;
}

Condition ViewCondition(const Database& db, int v, int i) {
  if (!ValidView(v) || i < 0 || i >= kConditions) return {};
  return Condition::Read(db.definition().view_block(v) + view::kFilter + kConditionSize * i);
}

void SetViewCondition(Database& db, int v, int i, const Condition& c) {
  if (!ValidView(v) || i < 0 || i >= kConditions) return;
  c.Write(db.definition().view_block(v) + view::kFilter + kConditionSize * i);
  db.changed = true;
}

SortKey ViewSortKey(const Database& db, int v, int k) {
  if (!ValidView(v) || k < 0 || k >= kSortKeys) return {};
  const std::uint8_t* entry = db.definition().view_block(v) + view::kSortKeys + 2 * k;
  return SortKey{entry[0] < kFieldSlots ? entry[0] : -1, entry[1] != 0};
}

void StoreListWidth(Database& db, int slot, unsigned width) {
  if (slot < 0 || slot >= kFieldSlots) return;
  db.definition().field(slot).set_width(width);
  if (auto v = CurrentView(db)) SetViewFieldWidth(db, *v, slot, width);
  db.changed = true;
}

}  // namespace qv
