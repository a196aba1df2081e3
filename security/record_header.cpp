#include "security/record_header.h"

#include <algorithm>

namespace qv {

std::optional<RecordHeader> ReadRecordHeader(std::span<const std::uint8_t> record) {
  if (!HasRecordHeader(record)) return std::nullopt;
  RecordHeader header;
  std::copy(record.begin(), record.begin() + kRecordHeaderSize, header.bytes.begin());
  return header;
}

bool WriteRecordHeader(Bytes& record, const RecordHeader& header) {
  if (!HasRecordHeader(record)) return false;
  std::copy(header.bytes.begin(), header.bytes.end(), record.begin());
  return true;
}

RecordHeader NewRecordHeader(RandomBytes& random) {
  RecordHeader header;
  header.bytes[record_header::kLead] = 22;
  auto span = std::span(header.bytes);
  random.Fill(span.subspan(record_header::kIdentity1, 8));
  random.Fill(span.subspan(record_header::kIdentity2, 3));
  random.Fill(span.subspan(record_header::kIdentity3, 3));
  return header;
}

void EnableRecordHeaders(Database& db) {
  if (db.definition().record_header_on()) return;
  db.definition().set_record_header_on(true);
  RandomBytes random;
  for (RecordSlot& slot : db.records) {
    if (slot.data.empty()) continue;
    RecordValues values = DecodeRecord(slot.data);
    RecordHeader header = NewRecordHeader(random);
    values.prefix.assign(header.bytes.begin(), header.bytes.end());
    slot.data = EncodeRecord(db.definition(), values);
  }
  db.changed = true;
}

}  // namespace qv
