#include "engine/container.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "engine/atomic_file.h"
#include "engine/save_journal.h"
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

namespace {

ParseResult ParseRecords(const FileImage& image_owner, std::size_t file_size, bool with_data) {
  ParseResult result;
  std::span<const std::uint8_t> image(*image_owner);
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
  file.records.resize(kSchemaRecords);
  if (with_data) file.data.reserve(count - kSchemaRecords);  // filled in order below
  // Records must lie after the list, inside the file, in list order; the last one runs to the end.
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* e = image.data() + kHeaderSize + kEntrySize * i;
    std::size_t begin = GetBE32(e);
    std::size_t end = i + 1 < count ? GetBE32(e + kEntrySize) : file_size;
    if (begin < list_end || begin > file_size || end < begin || end > file_size) {
      if (i < kSchemaRecords) {
        result.error = ReadError::CannotRead;
      } else {
        result.error = ReadError::BadRecord;
        result.bad_record = static_cast<std::uint32_t>(i - kSchemaRecords);
      }
      return result;
    }
    if (i >= kSchemaRecords && !with_data) continue;
    if (end > image.size()) {  // a start that stops short of the schema records
      result.error = ReadError::CannotRead;
      return result;
    }
    std::uint32_t uid = (std::uint32_t{e[5]} << 16) | (std::uint32_t{e[6]} << 8) | e[7];
    RecordData data(image_owner, begin, end - begin);
    if (i < kSchemaRecords)
      file.records[i] = {std::move(data), e[4], uid};
    else
      file.data.push_back({std::move(data), uid, e[4]});
  }
  result.file = std::move(file);
  return result;
}

}  // namespace

ParseResult ParseContainer(const FileImage& image) {
  return ParseRecords(image, image->size(), true);
}

ParseResult ParseContainerStart(const FileImage& start, std::size_t file_size) {
  return ParseRecords(start, file_size, false);
}

std::size_t ContainerLayout::size() const {
  std::size_t total = 0;
  for (const auto& piece : pieces) total += piece.size();
  return total;
}

namespace {

// Appends a record's entry and its bytes, joined to the last piece when they follow it in memory.
void AddRecord(ContainerLayout& layout, std::size_t index, std::size_t& offset,
               std::span<const std::uint8_t> data, std::uint8_t attributes, std::uint32_t uid) {
  PutRecordEntry(layout.head.data() + kHeaderSize + kEntrySize * index,
                 static_cast<std::uint32_t>(offset), attributes, uid);
  offset += data.size();
  if (data.empty()) return;
  auto& last = layout.pieces.back();
  if (layout.pieces.size() > 1 && last.data() + last.size() == data.data())
    last = {last.data(), last.size() + data.size()};
  else
    layout.pieces.push_back(data);
}

}  // namespace

ContainerLayout LayOutContainer(const Header& header, std::span<const RawRecord> schema,
                                std::span<const RecordSlot> data) {
  const std::size_t count = schema.size() + data.size();
  ContainerLayout layout;
  layout.head.assign(kHeaderSize + kEntrySize * count + 2 + kAppInfoSize, 0);
  Header h = header;
  h.record_count = static_cast<std::uint16_t>(count);
  h.app_info_offset = static_cast<std::uint32_t>(kHeaderSize + kEntrySize * count + 2);
  auto encoded = EncodeHeader(h);
  std::copy(encoded.begin(), encoded.end(), layout.head.begin());
  layout.pieces.push_back(layout.head);
  std::size_t offset = layout.head.size();
  std::size_t index = 0;
  for (const RawRecord& r : schema) AddRecord(layout, index++, offset, r.data, r.attributes, r.uid);
  for (const RecordSlot& r : data) AddRecord(layout, index++, offset, r.data, r.attributes, r.uid);
  return layout;
}

Bytes JoinPieces(const ContainerLayout& layout) {
  Bytes out;
  out.reserve(layout.size());
  for (const auto& piece : layout.pieces) out.insert(out.end(), piece.begin(), piece.end());
  return out;
}

Bytes SerializeContainer(const ContainerFile& file) {
  return JoinPieces(LayOutContainer(file.header, file.records, file.data));
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

std::optional<FileBytes> ReadFileStart(const std::string& path, std::size_t limit,
                                       std::size_t& file_size) {
  for (int attempt = 0; attempt < 50; ++attempt) {
    int fd = OpenRegularFile(path);
    if (fd < 0) return std::nullopt;
    FileStamp before = StampOf(path);
    struct stat st;
    bool read = ::fstat(fd, &st) == 0 && static_cast<std::uint64_t>(st.st_size) <= kMaxFileSize;
    if (read && before.inode != static_cast<std::uint64_t>(st.st_ino)) {  // replaced just now
      ::close(fd);
      continue;
    }
    FileBytes start;
    if (read) {
      file_size = static_cast<std::size_t>(st.st_size);
      start = FileBytes(std::min(limit, file_size));
      std::size_t done = 0;
      while (done < start.size()) {
        ssize_t n = ::pread(fd, start.data() + done, start.size() - done, static_cast<off_t>(done));
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
      }
      read = done == start.size();
    }
    ::close(fd);
    if (!read) return std::nullopt;
    // As for whole reads: a save in place that ran meanwhile is undone or waited for.
    if (CheckJournal(path, before, start) != JournalCheck::ReadAgain) return start;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return std::nullopt;
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
