#include "tests/support/old_database_builder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

#include "engine/container.h"

namespace qv::test {

OldDatabaseBuilder& OldDatabaseBuilder::Field(OldFieldSpec spec) {
  fields_.push_back(std::move(spec));
  return *this;
}

OldDatabaseBuilder& OldDatabaseBuilder::Sort(int slot, bool forward) {
  sort_.emplace_back(slot, forward);
  return *this;
}

OldDatabaseBuilder& OldDatabaseBuilder::Row(std::vector<Bytes> values) {
  Bytes record;
  for (const Bytes& v : values) {
    record.push_back(static_cast<std::uint8_t>(v.size()));
    record.insert(record.end(), v.begin(), v.end());
  }
  records_.push_back(std::move(record));
  return *this;
}

OldDatabaseBuilder& OldDatabaseBuilder::RawRow(Bytes record) {
  records_.push_back(std::move(record));
  return *this;
}

OldDatabaseBuilder& OldDatabaseBuilder::RawPopupRecord(int slot, Bytes record) {
  raw_popups_.emplace_back(slot, std::move(record));
  return *this;
}

Bytes OldDatabaseBuilder::Integer(std::int32_t v) {
  Bytes b(4);
  PutBE32(b.data(), static_cast<std::uint32_t>(v));
  return b;
}

Bytes OldDatabaseBuilder::Date(int day, int month, int year) {
  Bytes b(2);
  PutBE16(b.data(), static_cast<std::uint16_t>(((year - 1904) << 9) | (month << 5) | day));
  return b;
}

Bytes OldDatabaseBuilder::Build() const {
  ContainerFile file;
  file.header.SetName(name_);
  std::memcpy(file.header.type.data(), "DATA", 4);
  std::memcpy(file.header.creator.data(), "Qvnt", 4);
  file.header.creation_date = file.header.modification_date = 3000000000u;
  Bytes settings(2448, 0);
  PutBE16(settings.data() + 28, static_cast<std::uint16_t>(fields_.size()));
  for (int k = 0; k < 3; ++k) {
    settings[30 + 2 * k] = k < static_cast<int>(sort_.size()) ? sort_[k].first : 0xFF;
    settings[31 + 2 * k] = k < static_cast<int>(sort_.size()) && !sort_[k].second ? 0 : 1;
  }
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    std::uint8_t* p = settings.data() + 36 + 60 * i;
    const OldFieldSpec& f = fields_[i];
    p[0] = f.type;
    PutBE16(p + 1, f.length);
    p[3] = f.width;
    p[4] = f.shown ? 1 : 0;
    p[5] = f.decimals;
    std::memcpy(p + 6, f.name.data(), std::min<std::size_t>(f.name.size(), 19));
    std::memcpy(p + 26, f.other_database.data(),
                std::min<std::size_t>(f.other_database.size(), 33));
  }
  file.records.push_back({settings, 0, 1});
  for (int slot = 0; slot < 40; ++slot) {
    Bytes list;
    if (slot < static_cast<int>(fields_.size()) && !fields_[slot].items.empty()) {
      list.push_back(static_cast<std::uint8_t>(fields_[slot].items.size()));
      for (const std::string& item : fields_[slot].items) {
        list.insert(list.end(), item.begin(), item.end());
        list.push_back(0);
      }
    }
    for (const auto& [raw_slot, bytes] : raw_popups_)
      if (raw_slot == slot) list = bytes;
    file.records.push_back({list, 0, static_cast<std::uint32_t>(2 + slot)});
  }
  std::uint32_t uid = 100;
  for (const Bytes& r : records_) file.records.push_back({r, 0, uid++});
  return SerializeContainer(file);
}

void OldDatabaseBuilder::Write(const std::string& path) const {
  Bytes image = Build();
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(image.data()),
            static_cast<std::streamsize>(image.size()));
  ASSERT_TRUE(out.good()) << "cannot write " << path;
}

}  // namespace qv::test
