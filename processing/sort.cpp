#include "processing/sort.h"

#include <utility>

#include "engine/text.h"
#include "processing/filter.h"
#include "processing/recalc.h"

namespace qv {

// compare.cpp: the record comparison with the keys read once.
int CompareRecordData(const Database& db, const SortKey keys[kSortKeys],
                      std::span<const std::uint8_t> a, std::span<const std::uint8_t> b);

namespace {

struct KeySet {
  SortKey k[kSortKeys];
  explicit KeySet(const Database& db)
      : k{EffectiveSortKey(db, 0), EffectiveSortKey(db, 1), EffectiveSortKey(db, 2)} {}
  bool none() const { return k[0].field < 0 && k[1].field < 0 && k[2].field < 0; }
};

// The quicksort: median of three, no recursion, the larger part pushed so the stack stays
// logarithmic. Swaps exchange record handles only. The bounds on i and j never change the
// comparisons made under a consistent comparison; they keep a damaged definition (whose
// comparison is not one) inside the table.
void QuickSort(Database& db, const KeySet& keys) {
  auto& r = db.records;
  auto cmp = [&](int x, int y) { return CompareRecordData(db, keys.k, r[x].data, r[y].data); };
  struct Segment {
    int low, high;
  };
  Segment stack[64];
  int depth = 0;
  int low = 0, high = static_cast<int>(r.size()) - 1;
  while (true) {
    while (high > low) {
      int mid = static_cast<int>((static_cast<unsigned>(low) + static_cast<unsigned>(high)) / 2);
      if (cmp(low, mid) > 0) std::swap(r[low], r[mid]);
      if (cmp(low, high) > 0) std::swap(r[low], r[high]);
      if (cmp(mid, high) > 0) std::swap(r[mid], r[high]);
      if (high - low < 3) break;
      std::swap(r[mid], r[high - 1]);
      std::span<const std::uint8_t> pivot = r[high - 1].data;
      int i = low, j = high - 1;
      while (true) {
        do ++i;
        while (CompareRecordData(db, keys.k, r[i].data, pivot) < 0 && i < high);
        do --j;
        while (CompareRecordData(db, keys.k, r[j].data, pivot) > 0 && j > low);
        if (j < i) break;
        std::swap(r[i], r[j]);
      }
      std::swap(r[i], r[high - 1]);
      if (j - low <= high - i) {
        stack[depth++] = {i + 1, high};
        high = j;
      } else {
        stack[depth++] = {low, j};
        low = i + 1;
      }
    }
    if (depth == 0) break;
    --depth;
    low = stack[depth].low;
    high = stack[depth].high;
  }
}

}  // namespace

bool CanSortOnField(const Database& db, int slot, bool report, Prompter& prompter) {
  bool valid = slot >= 0 && slot < kFieldSlots;
  std::string name = valid ? db.definition().field(slot).name() : std::string();
  unsigned type = db.definition().field_type(slot);
  const char* refusal = nullptr;
  if (valid && db.definition().field(slot).encrypted())
    refusal = "This field (%s) is flagged for encrypted, and therefore cannot be sorted!";
  else if (type == kNotUsed || type == kImage || type == kLink || type == kHeading ||
           type == kExternal || type >= kFieldTypeCount)
    refusal = "This type of field (%s) cannot currently be sorted!";
  else if (db.definition().field(slot).position_dependent())
    refusal =
        "Since this field (%s) references other records, it's value is relative to it's "
        "position, meaning that it cannot be the basis for a sort!";
  if (!refusal) return true;
  if (report) {
    prompter.busy(false);
    prompter.message(StringPrintf(refusal, name.c_str()), "Error", Icon::Exclamation);
  }
  return false;
}

void SortDatabase(Database& db, bool rebuild_filtered_list, Prompter& prompter) {
  prompter.busy(true);
  KeySet keys(db);
  if (keys.k[0].field >= 0 && db.count() >= 2) {
    QuickSort(db, keys);
    db.changed = true;
  }
  if (rebuild_filtered_list) RebuildFilteredList(db);
  prompter.busy(false);
}

void MoveTableEntry(Database& db, std::uint32_t from, std::uint32_t to) { MoveRecord(db, from, to); }

std::uint32_t FindInsertPosition(Database& db, std::uint32_t count) {
  if (count >= db.count()) return count;
  KeySet keys(db);
  // With no primary key nothing is compared and the record stays at the end, even when a later
  // key is set; on purpose.
  if (keys.k[0].field < 0) return count;
  const Bytes& fresh = db.records[count].data;
  if (fresh.empty()) return count;
  for (std::uint32_t r = 0; r < count; ++r) {
    if (db.records[r].data.empty()) return count;
    if (CompareRecordData(db, keys.k, fresh, db.records[r].data) < 0) {
      MoveTableEntry(db, count, r);
      return r;
    }
  }
  return count;
}

std::uint32_t RepositionRecord(Database& db, std::uint32_t index) {
  if (index >= db.count()) return index;
  KeySet keys(db);
  if (keys.none() || db.records[index].data.empty()) return index;
  const std::uint32_t count = db.count();
  if (keys.k[0].field >= 0) {
    std::span<const std::uint8_t> moving = db.records[index].data;
    for (std::uint32_t r = 0; r < count; ++r) {
      if (r == index) continue;
      if (CompareRecordData(db, keys.k, moving, db.records[r].data) < 0) {
        MoveTableEntry(db, index, r);
        return r > index ? r - 1 : r;
      }
    }
  }
  if (index == count - 1) return index;
  MoveTableEntry(db, index, count);
  return count - 1;
}

void SortOnColumn(Database& db, int slot, bool forward, Prompter& prompter) {
  db.definition().set_sort_key(0, SortKey{slot, forward});
  db.definition().set_sort_key(1, SortKey{});
  db.definition().set_sort_key(2, SortKey{});
  SortDatabase(db, false, prompter);
  RecalculateAfterChange(db, 0, 1, prompter);
  RebuildFilteredList(db);
  db.redraw = true;
}

namespace {
constexpr std::size_t kViewSortEntries = 1136;  // the view block's three sort entries
}

bool StoreSortDialog(Database& db, const SortDialogState& state, int view, Prompter& prompter) {
  for (int k = 0; k < kSortKeys; ++k)
    if (state.field[k] >= 0 && !CanSortOnField(db, state.field[k], true, prompter)) return false;
  if (view >= kMaxViews) return false;
  // The tertiary direction comes from the primary "Forward" button, not its own; on purpose.
  const bool forward[kSortKeys] = {state.forward[0], state.forward[1], state.forward[0]};
  for (int k = 0; k < kSortKeys; ++k) {
    SortKey key{state.field[k] >= 0 ? state.field[k] : -1, forward[k]};
    if (view < 0) {
      db.definition().set_sort_key(k, key);
    } else {
      std::uint8_t* entry = db.definition().view_block(view) + kViewSortEntries + 2 * k;
      entry[0] = key.field < 0 ? 0xFF : static_cast<std::uint8_t>(key.field);
      entry[1] = key.forward ? 1 : 0;
    }
  }
  db.changed = true;
  db.redraw = true;
  return true;
}

}  // namespace qv
