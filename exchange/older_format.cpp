#include "exchange/older_format.h"

#include <cstring>

namespace qv {

namespace {

// The records of a container as spans into the image, or nothing when the list does not fit.
struct RecordSpan {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::uint8_t attributes = 0;
  std::uint32_t uid = 0;
};

std::optional<std::vector<RecordSpan>> RecordList(std::span<const std::uint8_t> image,
                                                  const Header& header) {
  const std::size_t count = header.record_count;
  const std::size_t list_end = kHeaderSize + kEntrySize * count;
  if (list_end > image.size()) return std::nullopt;
  std::vector<RecordSpan> spans(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* e = image.data() + kHeaderSize + kEntrySize * i;
    spans[i].begin = GetBE32(e);
    spans[i].attributes = e[4];
    spans[i].uid = (std::uint32_t{e[5]} << 16) | (std::uint32_t{e[6]} << 8) | e[7];
  }
  for (std::size_t i = 0; i < count; ++i) {
    spans[i].end = i + 1 < count ? spans[i + 1].begin : image.size();
    if (spans[i].begin < list_end || spans[i].end < spans[i].begin || spans[i].end > image.size())
      return std::nullopt;
  }
  return spans;
}

// Record 0's span when the header and the record list reach it; nothing otherwise.
std::optional<RecordSpan> FirstRecord(std::span<const std::uint8_t> image, Header& header) {
  if (image.size() < kHeaderSize) return std::nullopt;
  header = DecodeHeader(image.data());
  if (!header.IsQuorvant() || header.record_count < kOldSchemaRecords) return std::nullopt;
  const std::size_t list_end = kHeaderSize + kEntrySize * header.record_count;
  if (list_end > image.size()) return std::nullopt;
  RecordSpan first;
  first.begin = GetBE32(image.data() + kHeaderSize);
  first.end = GetBE32(image.data() + kHeaderSize + kEntrySize);
  if (first.begin < list_end || first.end < first.begin || first.end > image.size())
    return std::nullopt;
  return first;
}

bool DefinitionLooksOld(std::span<const std::uint8_t> def) {
  if (def.size() != kOldDefinitionSize) return false;
  if (std::memcmp(def.data() + old_def::kSignature, "Quorv", 5) == 0) return false;
  const unsigned fields = GetBE16(def.data() + old_def::kFieldCount);
  if (fields > kOldFieldSlots) return false;
  for (unsigned i = 0; i < fields; ++i) {
    const std::uint8_t type = def[old_def::kFields + kOldFieldDefinitionSize * i];
    if (type == kOldNotUsed || type >= kOldFieldTypeCount) return false;
  }
  return true;
}

OldField DecodeOldField(const std::uint8_t* p) {
  OldField f;
  f.type = p[0];
  f.length = GetBE16(p + 1);
  f.width = p[3];
  f.shown = (p[4] & 0x01) != 0;
  f.decimals = p[5];
  f.name = std::string(CStringAt(p + 6, 20));
  f.other_database = std::string(CStringAt(p + 26, 34));
  return f;
}

}  // namespace

bool LooksLikeOlderFormat(std::span<const std::uint8_t> image) {
  Header header;
  auto first = FirstRecord(image, header);
  return first && DefinitionLooksOld(image.subspan(first->begin, first->end - first->begin));
}

bool IsOlderFormatFile(const std::string& path) {
  auto image = ReadWholeFile(path);
  return image && LooksLikeOlderFormat(*image);
}

std::optional<OldDatabase> ReadOldDatabase(std::span<const std::uint8_t> image) {
  if (!LooksLikeOlderFormat(image)) return std::nullopt;
  OldDatabase db;
  db.header = DecodeHeader(image.data());
  auto spans = RecordList(image, db.header);
  if (!spans) return std::nullopt;
  auto bytes_of = [&image](const RecordSpan& s) {
    return Bytes(image.begin() + static_cast<std::ptrdiff_t>(s.begin),
                 image.begin() + static_cast<std::ptrdiff_t>(s.end));
  };
  const Bytes def = bytes_of((*spans)[0]);
  const unsigned fields = GetBE16(def.data() + old_def::kFieldCount);
  for (unsigned i = 0; i < fields; ++i)
    db.fields.push_back(
        DecodeOldField(def.data() + old_def::kFields + kOldFieldDefinitionSize * i));
  for (int k = 0; k < 3; ++k) {
    const std::uint8_t field = def[old_def::kSort + 2 * k];
    db.sort[k].field = field < fields ? field : -1;
    db.sort[k].forward = def[old_def::kSort + 2 * k + 1] != 0;
  }
  for (unsigned i = 0; i < fields; ++i) db.popup_records.push_back(bytes_of((*spans)[1 + i]));
  for (std::size_t i = kOldSchemaRecords; i < spans->size(); ++i) {
    db.data_records.push_back(bytes_of((*spans)[i]));
    db.data_ids.emplace_back((*spans)[i].attributes, (*spans)[i].uid);
  }
  return db;
}

std::optional<std::vector<std::string>> DecodeOldPopupList(std::span<const std::uint8_t> record) {
  std::vector<std::string> items;
  if (record.empty()) return items;  // a field without a list
  std::size_t at = 1;
  for (unsigned i = 0; i < record[0]; ++i) {
    if (at >= record.size()) return std::nullopt;
    const void* nul = std::memchr(record.data() + at, 0, record.size() - at);
    if (!nul) return std::nullopt;
    const std::size_t end =
        static_cast<std::size_t>(static_cast<const std::uint8_t*>(nul) - record.data());
    items.emplace_back(reinterpret_cast<const char*>(record.data() + at), end - at);
    at = end + 1;
  }
  return items;
}

std::optional<std::vector<Bytes>> DecodeOldRecord(std::span<const std::uint8_t> record,
                                                  std::size_t field_count) {
  std::vector<Bytes> values;
  std::size_t at = 0;
  for (std::size_t i = 0; i < field_count; ++i) {
    if (at >= record.size()) return std::nullopt;
    const std::size_t length = record[at++];
    if (length > record.size() - at) return std::nullopt;
    values.emplace_back(record.begin() + static_cast<std::ptrdiff_t>(at),
                        record.begin() + static_cast<std::ptrdiff_t>(at + length));
    at += length;
  }
  if (at != record.size()) return std::nullopt;
  return values;
}

}  // namespace qv
