#include "engine/record.h"

#include <gtest/gtest.h>

#include "engine/database.h"
#include "tests/support/builders.h"

namespace qv {
namespace {

TEST(RecordLayout, PrefixByteDecidesWhereValuesBegin) {
  Bytes p0 = {0, 4, 0, 1, 2, 3, 4};
  EXPECT_EQ(LocateValue(p0, 0)->offset, 3u);
  Bytes p1(21, 0);
  p1[0] = 1;  // P = 1 means a 20-byte body, not 1
  p1.insert(p1.end(), {2, 0, 'a', 0});
  EXPECT_EQ(LocateValue(p1, 0)->offset, 23u);
  EXPECT_EQ(LocateValue(p1, 0)->length, 2u);
  Bytes p5 = {5, 9, 9, 9, 9, 9, 1, 0, 'z'};
  EXPECT_EQ(LocateValue(p5, 0)->offset, 8u);
}

TEST(RecordLayout, LocatingWalksTheLengths) {
  Bytes r = {0, 4, 0, 1, 2, 3, 4, 0, 0, 10, 0};
  r.insert(r.end(), 10, 'x');
  r.insert(r.end(), {1, 0, 'y', 0xFF, 0xFF});
  auto slot3 = LocateValue(r, 3);
  ASSERT_TRUE(slot3);
  EXPECT_EQ(slot3->offset, 23u);  // 1 + 6 + 2 + 12 + 2
  EXPECT_EQ(LocateValue(r, 1)->length, 0u);
  EXPECT_FALSE(LocateValue(r, 4));   // the end marker
  EXPECT_FALSE(LocateValue(r, 99));
  EXPECT_FALSE(LocateValue(Bytes{0, 0xFF, 0xFF}, 0));
  EXPECT_FALSE(LocateValue(Bytes{0, 50, 0, 1}, 0));  // length past the end of the record
  EXPECT_FALSE(LocateValue(Bytes{}, 0));
}

TEST(RecordEncoding, UnusedSlotsAndTheEndMarker) {
  DatabaseDefinition d = NewSchema().definition;
  d.field(0).set_type(kInteger);
  d.field(2).set_type(kText);
  RecordValues v;
  v.Set(0, Int32Value(-2));
  v.Set(2, TextValue("ab"));
  Bytes r = EncodeRecord(d, v);
  // prefix 0; slot 0: 4 bytes; slot 1 unused but a used slot follows: 00 00; slot 2 "ab\0";
  // slot 3 unused with nothing used after it: FF FF.
  EXPECT_EQ(r, (Bytes{0, 4, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0, 0, 3, 0, 'a', 'b', 0, 0xFF, 0xFF}));
  for (int slot = 0; slot < kFieldSlots; ++slot) d.field(slot).set_type(kCheckBox);
  RecordValues all;
  for (int slot = 0; slot < kFieldSlots; ++slot) all.Set(slot, CheckValue(true));
  Bytes full = EncodeRecord(d, all);
  EXPECT_EQ(full.size(), 1u + 300);  // no end marker when every slot is used
  EXPECT_NE(full[full.size() - 2], 0xFF);
}

TEST(RecordEncoding, HeaderWhenSwitchedOnAndReplaceKeepsTheRest) {
  DatabaseDefinition d = NewSchema().definition;
  d.field(0).set_type(kText);
  d.field(1).set_type(kInteger);
  d.set_record_header_on(true);
  RecordValues v;
  v.Set(0, TextValue("old"));
  v.Set(1, Int32Value(7));
  Bytes r = EncodeRecord(d, v);
  ASSERT_EQ(r[0], 22);
  EXPECT_EQ(LocateValue(r, 0)->offset, 25u);
  r[5] = 0xAB;  // identity bytes survive a value change
  Bytes changed = ReplaceValue(r, d, 0, TextValue("newer"));
  EXPECT_EQ(changed[5], 0xAB);
  EXPECT_EQ(ValueText(ValueBytes(changed, 0)), "newer");
  EXPECT_EQ(ValueInt32(ValueBytes(changed, 1)), 7);
  EXPECT_EQ(DecodeRecord(changed).prefix.size(), 23u);
}

TEST(RecordEncoding, LargestSizes) {
  DatabaseDefinition d = NewSchema().definition;
  FieldDefinition f = d.field(0);
  f.set_length(30);
  std::pair<FieldType, std::size_t> expected[] = {
      {kText, 31}, {kExternal, 30}, {kInteger, 4}, {kFloat, 17}, {kPopUp, 14}, {kCheckBox, 1},
      {kImage, 2001}, {kLinked, 280}, {kNote, 2002}, {kConditional, 254}, {kHeading, 0}};
  for (auto [type, size] : expected) {
    f.set_type(type);
    EXPECT_EQ(LargestValueSize(f), size) << FieldTypeName(type);
  }
}

TEST(Database, StoreMoveDelete) {
  auto db = test::DatabaseBuilder().Field("N", kInteger).Build();
  EXPECT_EQ(StoreRecord(*db, test::ValuesFromTexts(*db, {{0, "0"}}), kNewRecord), 0u);
  EXPECT_EQ(db->count(), 1u);
  for (int i = 1; i < 7; ++i)
    EXPECT_EQ(StoreRecord(*db, test::ValuesFromTexts(*db, {{0, std::to_string(i)}}), kNewRecord),
              static_cast<std::uint32_t>(i));
  MoveRecord(*db, 5, 2);
  EXPECT_EQ(test::Column(*db, 0), (std::vector<std::string>{"0", "1", "5", "2", "3", "4", "6"}));
  MoveRecord(*db, 2, 5);
  EXPECT_EQ(test::Column(*db, 0), (std::vector<std::string>{"0", "1", "2", "3", "5", "4", "6"}));
  MoveRecord(*db, 0, 100);
  EXPECT_EQ(test::Column(*db, 0).back(), "0");
  DeleteRecord(*db, 0);
  EXPECT_EQ(db->count(), 6u);
  EXPECT_EQ(RecordValueText(*db, 6, 0, {}), "<no record>");
  StoreRecord(*db, test::ValuesFromTexts(*db, {{0, "99"}}), 2);
  EXPECT_EQ(RecordValueText(*db, 2, 0, {}), "99");
}

TEST(Database, NewRecordsTakeTheNextUniqueNumber) {
  auto db = test::DatabaseBuilder().Field("Id", kUnique).Field("T", kTime).Build();
  for (int i = 0; i < 3; ++i) StoreRecord(*db, DefaultValues(*db), kNewRecord);
  EXPECT_EQ(test::Column(*db, 0), (std::vector<std::string>{"0", "1", "2"}));
  EXPECT_EQ(RecordValueText(*db, 0, 1, {}), "No Time");
}

TEST(Database, TableHoldsAtMost65000Records) {
  auto db = test::DatabaseBuilder().Field("C", kCheckBox).Build();
  RecordValues v = DefaultValues(*db);
  db->records.resize(kMaxDataRecords - 1);
  EXPECT_EQ(StoreRecord(*db, v, kNewRecord), kMaxDataRecords - 1);
  EXPECT_EQ(StoreRecord(*db, v, kNewRecord), std::nullopt);
}

}  // namespace
}  // namespace qv
