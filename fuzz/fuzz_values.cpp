// libFuzzer target: record values of every field type. Records from outside bytes, and values
// of each type from outside bytes, must decode, format, compare, parse back and encode again
// without trouble.

#include "engine/format.h"
#include "fuzz/fuzz_database.h"
#include "processing/conditional.h"
#include "processing/sort.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qv::fuzz::FuzzBytes in(data, size);
  auto db = qv::fuzz::EveryTypeDatabase();
  const qv::DatabaseDefinition& d = db->definition();
  qv::FormatOptions options;
  options.decimal_comma = in.Byte() & 1;
  // One record of typed values, each type's bytes from the input.
  qv::RecordValues values;
  for (int slot = 0; slot < 18; ++slot) {
    auto bytes = in.Take(in.Byte() % 40);
    values.Set(slot, qv::Bytes(bytes.begin(), bytes.end()));
  }
  db->records.push_back({qv::EncodeRecord(d, values), qv::TakeRecordUid(*db), 0});
  const std::string typed = in.Text(in.Byte());
  qv::fuzz::AddRawRecords(*db, in);
  for (std::uint32_t r = 0; r < db->count(); ++r) {
    std::span<const std::uint8_t> record = db->records[r].data;
    qv::EncodeRecord(d, qv::DecodeRecord(record));
    for (int slot = 0; slot < 18; ++slot) {
      qv::ConstFieldDefinition field = d.field(slot);
      auto value = qv::ValueBytes(record, slot);
      std::string shown = qv::FormatValue(field, value, options);
      qv::RecordValueText(*db, r, slot, options);
      qv::CanonicalValueText(field, value);
      qv::ParseValue(field, db->schema.fields[slot], shown, options);
      qv::ParseValue(field, db->schema.fields[slot], typed, options);
      qv::CompareField(*db, record, db->records[0].data, slot, true);
    }
  }
  return 0;
}
