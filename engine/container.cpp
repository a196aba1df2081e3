#include "engine/container.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "engine/text.h"

namespace qv {

std::string Header::Name() const {
  return std::string(CStringAt(name.data(), name.size()));
}

void Header::SetName(std::string_view text) {
  PutCString(name.data(), name.size(), text);
}

bool Header::IsQuorvant() const {
  return creator[0] == 'Q' && creator[1] == 'v' && creator[2] == 'n' && creator[3] == 't';
}

void ClampDates(Header& header) {
  if (header.modification_date < header.creation_date)
    header.creation_date = header.modification_date;
}

Header DecodeHeader(const std::uint8_t* p) {
  Header h;
  std::copy(p, p + 32, h.name.begin());
  h.attributes = GetBE16(p + 32);
  h.version = GetBE16(p + 34);
  h.creation_date = GetBE32(p + 36);
  h.modification_date = GetBE32(p + 40);
  h.backup_date = GetBE32(p + 44);
  h.modification_number = GetBE32(p + 48);
  h.app_info_offset = GetBE32(p + 52);
  h.sort_info_offset = GetBE32(p + 56);
  std::copy(p + 60, p + 64, h.type.begin());
  std::copy(p + 64, p + 68, h.creator.begin());
  h.unique_id_seed = GetBE32(p + 68);
  h.next_record_list = GetBE32(p + 72);
  h.record_count = GetBE16(p + 76);
  ClampDates(h);
  return h;
}

std::array<std::uint8_t, kHeaderSize> EncodeHeader(Header h) {
  ClampDates(h);
  std::array<std::uint8_t, kHeaderSize> out{};
  std::uint8_t* p = out.data();
  std::copy(h.name.begin(), h.name.end(), p);
  PutBE16(p + 32, h.attributes);
  PutBE16(p + 34, h.version);
  PutBE32(p + 36, h.creation_date);
  PutBE32(p + 40, h.modification_date);
  PutBE32(p + 44, h.backup_date);
  PutBE32(p + 48, h.modification_number);
  PutBE32(p + 52, h.app_info_offset);
  PutBE32(p + 56, h.sort_info_offset);
  std::copy(h.type.begin(), h.type.end(), p + 60);
  std::copy(h.creator.begin(), h.creator.end(), p + 64);
  PutBE32(p + 68, h.unique_id_seed);
  PutBE32(p + 72, h.next_record_list);
  PutBE16(p + 76, h.record_count);
  return out;
}

void PutRecordEntry(std::uint8_t* out, std::uint32_t offset, std::uint8_t attributes,
                    std::uint32_t uid) {
  PutBE32(out, offset);
  out[4] = attributes;
  out[5] = static_cast<std::uint8_t>(uid >> 16);
  out[6] = static_cast<std::uint8_t>(uid >> 8);
  out[7] = static_cast<std::uint8_t>(uid);
}

ParseResult ParseContainer(std::span<const std::uint8_t> image) {
  ParseResult result;
  if (image.size() < kHeaderSize) {
    result.error = ReadError::BadHeader;
    return result;
  }
  ContainerFile file;
  file.header = DecodeHeader(image.data());
  if (!file.header.IsQuorvant()) {
    result.error = ReadError::BadHeader;
    return result;
  }
  const std::size_t count = file.header.record_count;
  const std::size_t list_end = kHeaderSize + kEntrySize * count;
  if (list_end > image.size()) {
    result.error = ReadError::CannotInitialize;
    return result;
  }
  if (count < kSchemaRecords || count > kSchemaRecords + kMaxDataRecords) {
    result.error = ReadError::CannotRead;
    return result;
  }
  std::vector<std::uint32_t> offsets(count);
  file.records.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* e = image.data() + kHeaderSize + kEntrySize * i;
    offsets[i] = GetBE32(e);
    file.records[i].attributes = e[4];
    file.records[i].uid = (std::uint32_t{e[5]} << 16) | (std::uint32_t{e[6]} << 8) | e[7];
  }
  // Records must lie after the list, inside the file, in list order; the last one runs to the end.
  for (std::size_t i = 0; i < count; ++i) {
    std::size_t begin = offsets[i];
    std::size_t end = i + 1 < count ? offsets[i + 1] : image.size();
    if (begin < list_end || begin > image.size() || end < begin || end > image.size()) {
      if (i < kSchemaRecords) {
        result.error = ReadError::CannotRead;
      } else {
        result.error = ReadError::BadRecord;
        result.bad_record = static_cast<std::uint32_t>(i - kSchemaRecords);
      }
      return result;
    }
    file.records[i].data.assign(image.begin() + begin, image.begin() + end);
  }
  result.file = std::move(file);
  return result;
}

Bytes SerializeContainer(const ContainerFile& file) {
  const std::size_t count = file.records.size();
  std::size_t total = kHeaderSize + kEntrySize * count + 2 + kAppInfoSize;
  for (const auto& r : file.records) total += r.data.size();
  Bytes out(total, 0);
  Header header = file.header;
  header.record_count = static_cast<std::uint16_t>(count);
  header.app_info_offset = static_cast<std::uint32_t>(kHeaderSize + kEntrySize * count + 2);
  auto encoded = EncodeHeader(header);
  std::copy(encoded.begin(), encoded.end(), out.begin());
  std::size_t offset = header.app_info_offset + kAppInfoSize;
  for (std::size_t i = 0; i < count; ++i) {
    const RawRecord& r = file.records[i];
    PutRecordEntry(out.data() + kHeaderSize + kEntrySize * i, static_cast<std::uint32_t>(offset),
                   r.attributes, r.uid);
    std::copy(r.data.begin(), r.data.end(), out.begin() + static_cast<std::ptrdiff_t>(offset));
    offset += r.data.size();
  }
  return out;
}

bool TestForFile(const std::string& path) {
  int fd = OpenRegularFile(path);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

int ReadHeader(const std::string& path, Header& header) {
  int fd = OpenRegularFile(path);
  if (fd < 0) return 0;
  std::uint8_t bytes[kHeaderSize];
  ssize_t got = ::read(fd, bytes, kHeaderSize);
  ::close(fd);
  if (got != static_cast<ssize_t>(kHeaderSize)) return 0;
  header = DecodeHeader(bytes);
  return header.IsQuorvant() ? 1 : -1;
}

namespace {

bool HeaderNameIs(const std::string& path, const std::string& name) {
  Header header;
  if (ReadHeader(path, header) == 0) return false;  // a foreign creator still counts, on purpose
  return header.Name() == name;
}

}  // namespace

std::optional<std::string> FindDatabaseByName(const std::string& name,
                                              const std::string& reference_path) {
  namespace fs = std::filesystem;
  fs::path folder = fs::path(reference_path).parent_path();
  std::string prefix = folder.empty() ? std::string() : folder.string() + "/";
  std::string exact = prefix + name + ".PDB";
  if (HeaderNameIs(exact, name)) return exact;
  std::string underscored = name;
  std::replace(underscored.begin(), underscored.end(), ' ', '_');
  std::string second = prefix + underscored + ".PDB";
  if (HeaderNameIs(second, name)) return second;
  std::error_code ec;
  std::vector<std::string> candidates;
  for (const auto& entry : fs::directory_iterator(folder.empty() ? "." : folder, ec)) {
    std::string file = entry.path().filename().string();
    if (file.size() > 4 && EqualsNoCase(file.substr(file.size() - 4), ".PDB"))
      candidates.push_back(prefix + file);
  }
  std::sort(candidates.begin(), candidates.end());  // a stable listing order
  for (const auto& candidate : candidates)
    if (HeaderNameIs(candidate, name)) return candidate;
  return std::nullopt;
}

}  // namespace qv
