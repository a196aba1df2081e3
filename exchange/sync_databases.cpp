#include "exchange/sync_databases.h"

#include <map>
#include <set>

namespace qv {

namespace {

using Identity = std::array<std::uint8_t, 14>;

// The three identity parts of a record header, when the record carries one.
std::optional<Identity> IdentityOf(const Database& db, const Bytes& data) {
  if (!db.definition().record_header_on() || data.size() < kRecordHeaderSize || data[0] != 22)
    return std::nullopt;
  Identity id{};
  std::copy(data.begin() + 1, data.begin() + 12, id.begin());        // parts 1 and 2
  std::copy(data.begin() + 15, data.begin() + 18, id.begin() + 11);  // part 3
  return id;
}

}  // namespace

bool SchemasCompatible(const Database& a, const Database& b) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (a.definition().field(slot).type() != b.definition().field(slot).type()) return false;
  return true;
}

int SyncDatabases(Database& existing, const Database& received) {
  if (!SchemasCompatible(existing, received)) return -1;
  std::map<Identity, std::uint32_t> by_identity;
  std::set<Bytes> contents;
  for (std::uint32_t i = 0; i < existing.count(); ++i) {
    const Bytes& data = existing.records[i].data;
    if (auto id = IdentityOf(existing, data)) by_identity.emplace(*id, i);
    contents.insert(data);
  }
  for (const RecordSlot& incoming : received.records) {
    if (contents.count(incoming.data)) continue;  // already here, unchanged
    if (auto id = IdentityOf(received, incoming.data)) {
      if (auto found = by_identity.find(*id); found != by_identity.end()) {
        existing.records[found->second].data = incoming.data;
        existing.changed = true;
        continue;
      }
    }
    if (existing.count() >= kMaxDataRecords) break;  // the table is full; the rest stay out
    existing.records.push_back({incoming.data, TakeRecordUid(existing), incoming.attributes});
    if (auto id = IdentityOf(existing, incoming.data))
      by_identity.emplace(*id, existing.count() - 1);
    contents.insert(incoming.data);
    existing.changed = true;
  }
  return 1;
}

}  // namespace qv
