#include "engine/record_data.h"

#include <gtest/gtest.h>

#include "engine/atomic_file.h"
#include "engine/database.h"
#include "tests/support/builders.h"
#include "tests/support/fakes.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

using test::DatabaseBuilder;

bool Inside(const FileBytes& image, const std::uint8_t* p) {
  return p >= image.data() && p < image.data() + image.size();
}

// A file whose record 1 carries two bytes after its values, which encoding it again would drop.
FileImage ImageWithOddRecord() {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Row({"b"}).Row({"c"}).Build();
  Bytes odd = db->records[1].data;
  odd.push_back(0xAB);
  odd.push_back(0xCD);
  db->records[1].data = odd;
  return std::make_shared<const FileBytes>(SerializeDatabase(*db));
}

TEST(RecordData, UnchangedRecordsAreWrittenBackFromTheOriginalBytes) {
  FileImage image = ImageWithOddRecord();
  Database db;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(image, db, bad), ReadError::None);
  for (const RecordSlot& r : db.records) {
    EXPECT_TRUE(r.data.is_view());
    EXPECT_TRUE(Inside(*image, r.data.data()));
  }
  Bytes odd = db.records[1].data;
  RecordValues values = DecodeRecord(db.records[0].data);
  values.Set(0, TextValue("changed"));
  ASSERT_TRUE(StoreRecord(db, values, 0));
  EXPECT_FALSE(db.records[0].data.is_view());
  EXPECT_TRUE(db.records[1].data.is_view());

  std::vector<RawRecord> schema;
  ContainerLayout layout = LayOutDatabase(db, schema);
  // Records 1 and 2 lie end to end in the image: one piece, taken from the image itself.
  ASSERT_EQ(layout.pieces.size(), 3 + kSchemaRecords);
  EXPECT_EQ(layout.pieces.back().data(), db.records[1].data.data());
  EXPECT_EQ(layout.pieces.back().size(), db.records[1].data.size() + db.records[2].data.size());

  Database back;
  ASSERT_EQ(ParseDatabase(JoinPieces(layout), back, bad), ReadError::None);
  EXPECT_EQ(back.records[1].data, odd);  // the two extra bytes are kept
  EXPECT_EQ(ValueText(ValueBytes(back.records[0].data, 0)), "changed");
  EXPECT_EQ(ValueText(ValueBytes(back.records[2].data, 0)), "c");
}

TEST(RecordData, EditingCopiesOutOfTheImageAndCopiesStayApart) {
  FileImage image = ImageWithOddRecord();
  const Bytes before(image->begin(), image->end());
  Database db;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(image, db, bad), ReadError::None);
  RecordData copy = db.records[0].data;
  db.records[0].data.edit().push_back(7);
  EXPECT_EQ(*image, before);
  EXPECT_EQ(db.records[0].data.size(), copy.size() + 1);
  EXPECT_TRUE(copy.is_view());
  RecordData owned = db.records[0].data;
  owned.edit()[0] ^= 1;
  EXPECT_NE(owned, db.records[0].data);
  RecordData assigned;
  assigned = owned;  // assignment copies bytes of its own too
  assigned.edit().push_back(9);
  EXPECT_EQ(assigned.size(), owned.size() + 1);
  RecordData none;
  EXPECT_TRUE(none.empty());
  none.edit().push_back(1);
  EXPECT_EQ(none, Bytes{1});
  // A record taken out of the database keeps the image alive after both are gone.
  RecordSlot kept = db.records[2];
  db = Database{};
  image.reset();
  EXPECT_EQ(ValueText(ValueBytes(kept.data, 0)), "c");
}

TEST(RecordData, SaveWritesEveryPieceInOrder) {
  test::TempFolder folder;
  const std::string path = folder.Path("pieces.bin");
  // More pieces than one vectored write takes, some of them empty.
  std::vector<Bytes> parts;
  for (int i = 0; i < 1500; ++i) parts.push_back(Bytes(static_cast<std::size_t>(i % 4), i & 0xFF));
  std::vector<std::span<const std::uint8_t>> pieces(parts.begin(), parts.end());
  ASSERT_EQ(SaveFileAtomically(path, pieces).result, WriteResult::Written);
  std::string expected;
  for (const Bytes& p : parts) expected.append(p.begin(), p.end());
  EXPECT_EQ(test::Slurp(path), expected);

  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Row({"b"}).Build();
  db->path = folder.Path("db.PDB");
  test::FixedClock clock;
  ASSERT_TRUE(SaveDatabase(*db, clock));
  Bytes saved(*ReadWholeFile(db->path));
  EXPECT_EQ(saved, SerializeDatabase(*db));
}

}  // namespace
}  // namespace qv
