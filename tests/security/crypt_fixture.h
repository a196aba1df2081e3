#pragma once
// A small database with one field of each kind the record encryption treats differently.

#include <memory>
#include <string>

#include "engine/database.h"
#include "security/record_header.h"
#include "tests/support/builders.h"

namespace qv::test {

enum Slots { kName, kQty, kMemo, kSketch, kLinkedText, kPrice };

inline Bytes ImageValue(bool present) {
  Bytes v(2001, 0);
  v[0] = present ? 1 : 0;
  for (std::size_t i = 1; i < v.size(); ++i) v[i] = static_cast<std::uint8_t>(i * 7);
  return v;
}

inline Bytes LinkedValue(const std::string& text) {
  Bytes v(24, 0);
  for (int i = 0; i < 4; ++i) v[i] = static_cast<std::uint8_t>(0x10 + i);
  v.insert(v.end(), text.begin(), text.end());
  v.push_back(0);
  return v;
}

inline std::unique_ptr<Database> SecretsDatabase(int records = 3) {
  auto db = DatabaseBuilder("Secrets")
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Field("Memo", kNote, 2000)
                .Field("Sketch", kImage)
                .Field("Link", kLinked)
                .Field("Price", kFloat)
                .Build();
  for (int i = 0; i < records; ++i) {
    RecordValues values;
    values.Set(kName, TextValue("name " + std::to_string(i % 2)));
    values.Set(kQty, Int32Value(1000 + i));
    values.Set(kMemo, TextValue("a longer note for record " + std::to_string(i)));
    values.Set(kSketch, ImageValue(i % 2 == 0));
    values.Set(kLinkedText, LinkedValue("linked " + std::to_string(i)));
    values.Set(kPrice, TextValue("12.50"));
    StoreRecord(*db, values, kNewRecord);
  }
  EnableRecordHeaders(*db);
  db->changed = false;
  return db;
}

inline void MarkAll(Database& db) {
  for (int slot : {kName, kQty, kMemo, kSketch, kLinkedText, kPrice})
    db.definition().field(slot).set_encrypted(true);
}

inline std::uint8_t FlagsOf(const Database& db, std::uint32_t i) {
  return ReadRecordHeader(db.records[i].data)->flags();
}

}  // namespace qv::test
