#include "processing/sort.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "engine/record.h"

#include "engine/text.h"
#include "processing/filter.h"
#include "processing/recalc.h"
#include "security/enciphered.h"

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

// What one key of one record looks like to the sort, located once: the comparisons then need
// neither to walk the record nor, mostly, to touch its bytes. Each comparison answers exactly
// what CompareField answers (in sign), so the order left is the same.
struct CachedKey {
  std::uint64_t prefix = 0;  // Integer/Unique/Date/Time: the number; texts: 8 lowered bytes
  std::span<const std::uint8_t> value;
  bool present = false;
};

enum class KeyKind { None, Number32, Number24, Text, Other };

struct KeyPlan {
  int slot = -1;
  bool forward = true;
  KeyKind kind = KeyKind::None;
};

KeyKind KindOf(unsigned type) {
  switch (type) {
    case kInteger:
    case kUnique:
    case kDate: return KeyKind::Number32;
    case kTime: return KeyKind::Number24;
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional: return KeyKind::Text;
    default: return KeyKind::Other;
  }
}

template <int N>
struct SortEntry {
  std::span<const std::uint8_t> record;
  std::uint32_t index = 0;
  std::array<CachedKey, N> key;
};

std::uint64_t Prefix(KeyKind kind, std::span<const std::uint8_t> v) {
  std::uint64_t out = 0;
  if (kind == KeyKind::Number32 || kind == KeyKind::Number24) {
    std::size_t n = kind == KeyKind::Number32 ? 4 : 3;
    for (std::size_t i = 0; i < n && i < v.size(); ++i) out |= std::uint64_t{v[i]} << (8 * i);
    return out;
  }
  std::string_view text = ValueText(v);
  for (std::size_t i = 0; i < 8; ++i) {
    std::uint8_t c = i < text.size() ? static_cast<std::uint8_t>(LowerAscii(text[i])) : 0;
    out = (out << 8) | c;
  }
  return out;
}

int Sign64(std::uint64_t x, std::uint64_t y) { return x < y ? -1 : (x > y ? 1 : 0); }

int CompareKey(const Database& db, const KeyPlan& plan, const CachedKey& a, const CachedKey& b,
               std::span<const std::uint8_t> ra, std::span<const std::uint8_t> rb) {
  if (!a.present) return -1;
  if (!b.present) return 1;
  const CachedKey& x = plan.forward ? a : b;
  const CachedKey& y = plan.forward ? b : a;
  switch (plan.kind) {
    case KeyKind::Number32: {
      auto d = static_cast<std::int32_t>(static_cast<std::uint32_t>(x.prefix) -
                                         static_cast<std::uint32_t>(y.prefix));
      return d < 0 ? -1 : (d > 0 ? 1 : 0);
    }
    case KeyKind::Number24: return Sign64(x.prefix, y.prefix);
    case KeyKind::Text:
      if (x.prefix != y.prefix) return Sign64(x.prefix, y.prefix);
      return Stricmp(ValueText(x.value), ValueText(y.value));
    default: return CompareField(db, ra, rb, plan.slot, plan.forward);
  }
}

template <int N>
int CompareEntries(const Database& db, const KeyPlan* plans, const SortEntry<N>& a,
                   const SortEntry<N>& b) {
  if (a.record.empty() || b.record.empty()) return 0;
  for (int k = 0; k < N; ++k) {
    int r = CompareKey(db, plans[k], a.key[k], b.key[k], a.record, b.record);
    if (r != 0 || k + 1 == N) return r;
  }
  return 0;
}

// The quicksort: median of three, no recursion, the larger part pushed so the stack stays
// logarithmic. The bounds on i and j never change the comparisons made under a consistent
// comparison; they keep a damaged definition (whose comparison is not one) inside the table.
template <int N>
void QuickSort(const Database& db, const KeyPlan* plans, std::vector<SortEntry<N>>& r) {
  auto cmp = [&](const SortEntry<N>& x, const SortEntry<N>& y) {
    return CompareEntries<N>(db, plans, x, y);
  };
  struct Segment {
    int low, high;
  };
  Segment stack[64];
  int depth = 0;
  int low = 0, high = static_cast<int>(r.size()) - 1;
  while (true) {
    while (high > low) {
      int mid = static_cast<int>((static_cast<unsigned>(low) + static_cast<unsigned>(high)) / 2);
      if (cmp(r[low], r[mid]) > 0) std::swap(r[low], r[mid]);
      if (cmp(r[low], r[high]) > 0) std::swap(r[low], r[high]);
      if (cmp(r[mid], r[high]) > 0) std::swap(r[mid], r[high]);
      if (high - low < 3) break;
      std::swap(r[mid], r[high - 1]);
      const SortEntry<N> pivot = r[high - 1];
      int i = low, j = high - 1;
      while (true) {
        do ++i;
        while (cmp(r[i], pivot) < 0 && i < high);
        do --j;
        while (cmp(r[j], pivot) > 0 && j > low);
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

// Only the keys the comparison can reach take part: up to the first key that is no key.
template <int N>
void SortWithKeys(Database& db, const KeyPlan* plans, std::uint32_t count) {
  std::vector<SortEntry<N>> entries(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    SortEntry<N>& e = entries[i];
    e.index = i;
    e.record = db.records[i].data;
    for (int k = 0; k < N; ++k) {
      auto ref = LocateValue(e.record, plans[k].slot);
      if (!ref) continue;
      e.key[k].present = true;
      e.key[k].value = e.record.subspan(ref->offset, ref->length);
      if (plans[k].kind != KeyKind::Other) e.key[k].prefix = Prefix(plans[k].kind, e.key[k].value);
    }
  }
  QuickSort<N>(db, plans, entries);
  // The order alone is kept, so the entries' memory is free before the table is rebuilt.
  std::vector<std::uint32_t> order(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) order[i] = entries[i].index;
  std::vector<SortEntry<N>>().swap(entries);
  RecordTable sorted;
  sorted.reserve(db.count());
  for (std::uint32_t i : order) sorted.push_back(std::move(db.records[i]));
  for (std::uint32_t i = count; i < db.count(); ++i) sorted.push_back(std::move(db.records[i]));
  db.records = std::move(sorted);
}

void SortTable(Database& db, const KeySet& keys) {
  KeyPlan plans[kSortKeys];
  int n = 0;
  while (n < kSortKeys && keys.k[n].field >= 0) {
    plans[n] = {keys.k[n].field, keys.k[n].forward,
                KindOf(db.definition().field(keys.k[n].field).type())};
    ++n;
  }
  // Enciphered values are no sort keys: those records go after the others, in their order.
  auto plain_end =
      std::stable_partition(db.records.begin(), db.records.end(),
                            [](const RecordSlot& r) { return !IsRecordEnciphered(r.data); });
  auto count = static_cast<std::uint32_t>(plain_end - db.records.begin());
  if (n == 1) SortWithKeys<1>(db, plans, count);
  else if (n == 2) SortWithKeys<2>(db, plans, count);
  else if (n == 3) SortWithKeys<3>(db, plans, count);
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
    SortTable(db, keys);
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
  std::span<const std::uint8_t> fresh = db.records[count].data;
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
