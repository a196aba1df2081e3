#pragma once
// Small helpers for the processing tests: records with raw values, and column reads.

#include <string>
#include <utility>
#include <vector>

#include "engine/database.h"
#include "engine/record.h"

namespace qv::test {

// Appends a record whose used fields are empty texts except the given raw values.
inline void AddRaw(Database& db, const std::vector<std::pair<int, Bytes>>& raw) {
  RecordValues values;
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db.definition().field(slot).used()) values.Set(slot, TextValue(""));
  for (const auto& [slot, bytes] : raw) values.Set(slot, bytes);
  StoreRecord(db, values, kNewRecord);
}

// The stored texts of one slot over the table.
inline std::vector<std::string> Texts(const Database& db, int slot) {
  std::vector<std::string> out;
  for (const RecordSlot& r : db.records) out.emplace_back(ValueText(ValueBytes(r.data, slot)));
  return out;
}

inline std::vector<std::int32_t> Ints(const Database& db, int slot) {
  std::vector<std::int32_t> out;
  for (const RecordSlot& r : db.records) out.push_back(ValueInt32(ValueBytes(r.data, slot)));
  return out;
}

}  // namespace qv::test
