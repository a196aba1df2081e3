#include "engine/schema.h"

#include <gtest/gtest.h>

#include "engine/database.h"
#include "tests/support/builders.h"

namespace qv {
namespace {

TEST(Schema, NewDatabaseDefaults) {
  Schema s = NewSchema();
  const std::uint8_t* p = s.definition.data();
  EXPECT_EQ(std::string(p + 22, p + 27), "Quorv");
  EXPECT_EQ(GetBE32(p + 28), 1u);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(p[596 + 2 * k], 0xFF);
    EXPECT_EQ(p[597 + 2 * k], 1);
  }
  EXPECT_EQ(p[608], 1);
  EXPECT_EQ(p[609], 1);
  EXPECT_EQ(p[12230], 255);
  EXPECT_EQ(p[12231], 0);
  EXPECT_EQ(p[35816], 255);
  EXPECT_EQ(p[35817], 3);
  for (int i = 0; i < 6; ++i) {
    Condition c = s.definition.condition(i);
    EXPECT_EQ(c.in_use, 0);
    EXPECT_EQ(c.lower, 0u);
    EXPECT_EQ(c.upper, 65000u);
  }
  ConstFieldDefinition f7 = s.definition.field(6);
  EXPECT_EQ(f7.name(), "Field 7");
  EXPECT_EQ(s.definition.field(99).name(), "Field 100");
  EXPECT_EQ(f7.type(), 0u);
  EXPECT_EQ(f7.length(), 40u);
  EXPECT_EQ(f7.width(), 58u);
  EXPECT_EQ(f7.bytes()[5], 1);
  EXPECT_EQ(f7.bytes()[16], 255);
  EXPECT_EQ(f7.bytes()[17], 255);
  EXPECT_EQ(f7.flag_a(), 0);  // per-type bytes read 0 for an unused slot
  EXPECT_EQ(f7.bytes()[8], 1);
  EXPECT_EQ(s.definition.display_slot(42), 42);
  EXPECT_EQ(p[12375], 0);
}

TEST(Schema, FieldRecordLayout) {
  FieldRecord empty;
  EXPECT_EQ(empty.Encode().size(), 31u);
  FieldRecord many;
  many.SetItems(std::vector<std::string>(300, "x"));
  Bytes bytes = many.Encode();
  EXPECT_EQ(bytes[23], 0x2C);  // item count low byte first
  EXPECT_EQ(bytes[24], 0x01);
  EXPECT_EQ(bytes.size(), 31u + 20 * 300 + 2 * 300);
  EXPECT_EQ(bytes.size(), many.EncodedSize());
  auto back = FieldRecord::Decode(bytes);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->texts.size(), 300u);
  EXPECT_EQ(back->Encode(), bytes);
}

TEST(Schema, EmptyItemsStoreNoText) {
  FieldRecord r;
  r.SetItems({"Red", "", "Blue"});
  Bytes bytes = r.Encode();
  EXPECT_EQ(bytes.size(), 31u + 60 + 4 + 5);
  EXPECT_EQ(FieldRecord::Decode(bytes)->Encode(), bytes);
}

TEST(Schema, DisplayOrderRepair) {
  DatabaseDefinition d = NewSchema().definition;
  d.set_display_slot(0, 5);
  d.set_display_slot(5, 0);
  d.RepairDisplayOrder();  // a permutation is kept
  EXPECT_EQ(d.display_slot(0), 5);
  d.set_display_slot(3, 150);  // out of range becomes 0, which duplicates slot 0's place
  d.RepairDisplayOrder();
  for (int i = 0; i < kFieldSlots; ++i) ASSERT_EQ(d.display_slot(i), i);
}

TEST(Schema, TypeNamesAndPerTypeAccessors) {
  EXPECT_EQ(FieldTypeName(5), "Check-Box");
  EXPECT_EQ(FieldTypeName(14), "DB Popup");
  EXPECT_EQ(FieldTypeName(19), "");
  EXPECT_EQ(FieldTypeByName("check-box"), kCheckBox);
  DatabaseDefinition d = NewSchema().definition;
  FieldDefinition f = d.field(0);
  f.set_type(19);
  EXPECT_EQ(f.flag_a(), 0);
  f.set_type(kCalculated);
  EXPECT_EQ(f.flag_a(), 1);
  EXPECT_FALSE(f.position_dependent());
  f.bytes()[10] = 1;
  EXPECT_TRUE(f.position_dependent());
  f.set_type(kInteger);
  EXPECT_FALSE(f.position_dependent());
}

// A database with every field type, list items and views survives a save byte for byte.
TEST(Schema, EveryTypeRoundTripsByteForByte) {
  test::DatabaseBuilder b("Everything");
  for (unsigned code = 1; code < kFieldTypeCount; ++code)
    b.Field(std::string(FieldTypeName(code)), static_cast<FieldType>(code));
  auto db = b.Build();
  db->schema.fields[3].SetItems({"Small", "Medium", "Large"});
  db->schema.aux.entries.resize(2);
  db->schema.aux.entries[1][5] = 0x77;
  std::uint8_t* view = db->definition().view_block(1);
  for (std::size_t i = 0; i < kViewSize; ++i) view[i] = static_cast<std::uint8_t>(i * 7);
  db->definition().set_view_count(2);
  RecordValues values = DefaultValues(*db);
  values.Set(0, TextValue("text"));
  values.Set(6, Bytes{1, 2, 3});  // an image value with bytes of its own
  StoreRecord(*db, values, kNewRecord);
  StoreRecord(*db, DefaultValues(*db), kNewRecord);
  Bytes image = SerializeDatabase(*db);
  Database back;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(image, back, bad), ReadError::None);
  EXPECT_EQ(SerializeDatabase(back), image);
  EXPECT_EQ(back.schema.fields[3].ItemText(2), "Large");
  EXPECT_EQ(back.definition().view_count(), 2u);
}

TEST(Schema, DirtyBitWhileChanged) {
  auto db = test::DatabaseBuilder().Field("A", kText).Build();
  EXPECT_EQ(SerializeDatabase(*db)[78 + 4] & 0x40, 0);
  StoreRecord(*db, DefaultValues(*db), kNewRecord);
  EXPECT_TRUE(db->changed);
  EXPECT_EQ(SerializeDatabase(*db)[78 + 4] & 0x40, 0x40);
}

}  // namespace
}  // namespace qv
