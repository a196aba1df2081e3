#pragma once
// What the fuzz targets share: a reader of the fuzzer's bytes, and a database with one field of
// every type whose records and settings the fuzzer then fills.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>

#include "engine/database.h"
#include "platform/clock.h"

namespace qv::fuzz {

class FuzzBytes {
 public:
  FuzzBytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool empty() const { return pos_ >= size_; }
  std::uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  // Up to n bytes (fewer at the end).
  std::span<const std::uint8_t> Take(std::size_t n) {
    n = std::min(n, size_ - pos_);
    std::span<const std::uint8_t> out(data_ + pos_, n);
    pos_ += n;
    return out;
  }
  // Copies up to n bytes over `to`, leaving the rest as it was.
  void Fill(std::uint8_t* to, std::size_t n) {
    auto part = Take(n);
    if (!part.empty()) std::memcpy(to, part.data(), part.size());
  }
  std::string Text(std::size_t n) {
    auto part = Take(n);
    return std::string(reinterpret_cast<const char*>(part.data()), part.size());
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

class ZeroClock : public Clock {
 public:
  std::int64_t LocalNow() const override { return 1700000000; }
};

// Field slot k - 1 has type k (1 Text ... 18 External); the pop-up and DB pop-up lists hold
// three items.
inline std::unique_ptr<Database> EveryTypeDatabase() {
  ZeroClock clock;
  auto db = NewDatabase("Fuzz", clock);
  for (int type = 1; type <= 18; ++type) {
    FieldDefinition f = db->definition().field(type - 1);
    f.set_type(static_cast<unsigned>(type));
    f.set_name("F" + std::to_string(type));
    f.set_length(20);
  }
  db->schema.fields[3].SetItems({"S", "M", "L"});
  db->schema.fields[13].SetItems({"one", "two", "three"});
  return db;
}

// The rest of the input as records: a length byte, then that many bytes, as they come.
inline void AddRawRecords(Database& db, FuzzBytes& in, std::size_t most = 8) {
  while (!in.empty() && db.records.size() < most) {
    auto bytes = in.Take(in.Byte() * 2u);
    db.records.push_back({Bytes(bytes.begin(), bytes.end()), TakeRecordUid(db), 0});
  }
}

}  // namespace qv::fuzz
