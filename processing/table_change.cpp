#include "processing/table_change.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "processing/filter.h"

namespace qv {

namespace {

bool UniqueIds(const RecordTable& records) {
  std::unordered_set<std::uint32_t> seen;
  for (const RecordSlot& r : records)
    if (!seen.insert(r.uid).second) return false;
  return true;
}

std::vector<std::uint32_t> Order(const RecordTable& records) {
  std::vector<std::uint32_t> order;
  order.reserve(records.size());
  for (const RecordSlot& r : records) order.push_back(r.uid);
  return order;
}

bool Same(const RecordSlot& a, const RecordSlot& b) {
  return a.data == b.data && a.attributes == b.attributes;
}

// Records of `from` that `to` lacks or holds differently.
RecordTable Missing(const RecordTable& from,
                                const RecordTable& to) {
  std::unordered_map<std::uint32_t, const RecordSlot*> index;
  for (const RecordSlot& r : to) index[r.uid] = &r;
  RecordTable out;
  for (const RecordSlot& r : from) {
    auto it = index.find(r.uid);
    if (it == index.end() || !Same(*it->second, r)) out.push_back(r);
  }
  return out;
}

}  // namespace

TableChange TableChange::Between(const RecordTable& before, const Database& after) {
  TableChange change;
  if (!UniqueIds(before) || !UniqueIds(after.records)) {
    // Identifiers cannot tell records apart: keep both tables whole, in order.
    change.whole_ = true;
    change.removed_ = before;
    change.added_ = after.records;
    return change;
  }
  change.removed_ = Missing(before, after.records);
  change.added_ = Missing(after.records, before);
  change.order_before_ = Order(before);
  change.order_after_ = Order(after.records);
  return change;
}

void TableChange::Apply(Database& db, const std::vector<std::uint32_t>& order,
                        const RecordTable& records) const {
  RecordTable table;
  table.reserve(order.size());
  if (whole_) {
    table = records;
  } else {
    std::unordered_map<std::uint32_t, const RecordSlot*> index;
    for (const RecordSlot& r : db.records) index[r.uid] = &r;
    for (const RecordSlot& r : records) index[r.uid] = &r;
    for (std::uint32_t uid : order) {
      auto it = index.find(uid);
      if (it != index.end()) table.push_back(*it->second);
    }
  }
  db.records = std::move(table);
  db.next_uid = 0;  // taken afresh from the restored table
  if (db.current >= db.count()) db.current = db.count() == 0 ? 0 : db.count() - 1;
  RebuildFilteredList(db);
  db.changed = true;
}

}  // namespace qv
