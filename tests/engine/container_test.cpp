#include "engine/container.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "engine/database.h"
#include "tests/support/builders.h"

namespace qv {
namespace {

using test::DatabaseBuilder;

TEST(Header, DateClampAppliesOnReadAndOnWrite) {
  Header h;
  h.creation_date = 5000;
  h.modification_date = 4000;
  auto bytes = EncodeHeader(h);
  EXPECT_EQ(GetBE32(bytes.data() + 36), 4000u);
  EXPECT_EQ(GetBE32(bytes.data() + 40), 4000u);
  PutBE32(bytes.data() + 36, 9000);  // creation after modification, as another writer left it
  Header read = DecodeHeader(bytes.data());
  EXPECT_EQ(read.creation_date, 4000u);
  EXPECT_EQ(read.modification_date, 4000u);
}

TEST(Container, EmptyDatabaseLayout) {
  auto db = DatabaseBuilder().Build();
  Bytes image = SerializeDatabase(*db);
  EXPECT_EQ(GetBE16(image.data() + 76), 102u);       // record count
  EXPECT_EQ(GetBE32(image.data() + 52), 896u);       // application-info offset
  EXPECT_EQ(GetBE32(image.data() + 78), 936u);       // record 0
  EXPECT_EQ(GetBE32(image.data() + 86), 936u + 35852u);  // record 1 follows record 0
  EXPECT_EQ(image[894], 0);
  EXPECT_EQ(image[895], 0);
  for (int i = 896; i < 936; ++i) ASSERT_EQ(image[i], 0) << i;
  // Record 0 ends in two zero bytes; each empty field record is 31 bytes; record 101 is 28.
  EXPECT_EQ(image[936 + 35850], 0);
  EXPECT_EQ(image[936 + 35851], 0);
  for (int r = 1; r <= 100; ++r) {
    std::uint32_t begin = GetBE32(image.data() + 78 + 8 * r);
    std::uint32_t end = GetBE32(image.data() + 78 + 8 * (r + 1));
    ASSERT_EQ(end - begin, 31u) << r;
  }
  EXPECT_EQ(image.size() - GetBE32(image.data() + 78 + 8 * 101), 28u);
  EXPECT_EQ(std::string(image.begin() + 64, image.begin() + 68), "Qvnt");
}

TEST(Container, IdentifierBytesMostSignificantFirst) {
  std::uint8_t entry[8];
  PutRecordEntry(entry, 0x01020304, 0x40, 0x0A0B0C);
  EXPECT_EQ(entry[4], 0x40);
  EXPECT_EQ(entry[5], 0x0A);
  EXPECT_EQ(entry[6], 0x0B);
  EXPECT_EQ(entry[7], 0x0C);
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Build();
  db->records[0].uid = 0x0A0B0C;
  Database back;
  std::uint32_t bad = 0;
  Bytes image = SerializeDatabase(*db);
  ASSERT_EQ(ParseDatabase(image, back, bad), ReadError::None);
  EXPECT_EQ(back.records[0].uid, 0x0A0B0Cu);
  EXPECT_EQ(image[78 + 8 * 102 + 5], 0x0A);
}

class Finder : public ::testing::Test {
 protected:
  std::filesystem::path dir_ = std::filesystem::temp_directory_path() /
                               ("qvfind-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                                ::testing::UnitTest::GetInstance()->current_test_info()->name());
  void SetUp() override { std::filesystem::create_directories(dir_); }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::string Make(const std::string& file, const std::string& header_name) {
    auto db = DatabaseBuilder(header_name).Build();
    db->path = (dir_ / file).string();
    test::FixedClock clock;
    EXPECT_TRUE(SaveDatabase(*db, clock));
    return db->path;
  }
  std::string Reference() const { return (dir_ / "Parent.PDB").string(); }
};

TEST_F(Finder, ExactNameThenUnderscoresThenListing) {
  std::string underscored = Make("My_Stuff.PDB", "My Stuff");
  EXPECT_EQ(FindDatabaseByName("My Stuff", Reference()), underscored);
  std::string exact = Make("My Stuff.PDB", "My Stuff");
  EXPECT_EQ(FindDatabaseByName("My Stuff", Reference()), exact);
  std::string renamed = Make("zz-renamed.PDB", "Tools");
  EXPECT_EQ(FindDatabaseByName("Tools", Reference()), renamed);
  Make("Tools.PDB", "Other Name");  // a file name that lies about the header is skipped
  EXPECT_EQ(FindDatabaseByName("Tools", Reference()), renamed);
  EXPECT_EQ(FindDatabaseByName("Missing", Reference()), std::nullopt);
}

TEST_F(Finder, ReadHeaderTellsForeignCreators) {
  std::string path = Make("A.PDB", "A");
  Header h;
  EXPECT_EQ(ReadHeader(path, h), 1);
  auto bytes = *ReadWholeFile(path);
  bytes[64] = 'X';
  std::ofstream((dir_ / "B.PDB").string(), std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  EXPECT_EQ(ReadHeader((dir_ / "B.PDB").string(), h), -1);
  EXPECT_EQ(ReadHeader((dir_ / "none.PDB").string(), h), 0);
  EXPECT_FALSE(TestForFile((dir_ / "none.PDB").string()));
}

TEST_F(Finder, SaveReplacesTheFileWholeAndLeavesNoTemporary) {
  std::string path = Make("Keep.PDB", "Keep");
  auto db = DatabaseBuilder("Keep").Field("N", kInteger).Row({"1"}).Build();
  db->path = path;
  test::FixedClock clock;
  ASSERT_TRUE(SaveDatabase(*db, clock));
  EXPECT_EQ(*ReadWholeFile(path), SerializeDatabase(*db));
  EXPECT_FALSE(std::filesystem::exists(path + ".saving"));
  db->path = (dir_ / "no-such-folder" / "x.PDB").string();
  EXPECT_FALSE(SaveDatabase(*db, clock));
}

}  // namespace
}  // namespace qv
