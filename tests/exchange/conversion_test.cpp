#include "exchange/conversion.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "engine/format.h"
#include "tests/support/builders.h"
#include "tests/support/old_database_builder.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

using B = OldDatabaseBuilder;

OldDatabaseBuilder Inventory() {
  OldDatabaseBuilder b("Inventory");
  b.Field(OldFieldSpec(1, "Item"))
      .Field(OldFieldSpec(2, "Qty"))
      .Field(OldFieldSpec(3, "Price").Decimals(2))
      .Field(OldFieldSpec(4, "Colour").List({"red", "green"}))
      .Field(OldFieldSpec(5, "Sold"))
      .Field(OldFieldSpec(6, "Bought"))
      .Field(OldFieldSpec(7, "At"))
      .Field(OldFieldSpec(8, "Notes").Hidden())
      .Field(OldFieldSpec(10, "Number"))
      .Field(OldFieldSpec(11, "Parts").Other("Parts"))
      .Field(OldFieldSpec(12, "Part").Other("Parts"))
      .Sort(0);
  b.Row({B::Text("bolt"),
         B::Integer(-350),
         B::Text("0.04"),
         B::Text("green"),
         {1},
         B::Date(14, 3, 2004),
         B::Time(9, 30),
         B::Text("box 3"),
         B::Text("17"),
         B::Text("4"),
         B::Text("12")});
  // Every value empty: "No Value".
  b.Row({{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}});
  return b;
}

class ConversionTest : public ::testing::Test {
 protected:
  std::string Texts(const Database& db, std::uint32_t record) {
    std::string out;
    for (int slot : UsedFieldsInDisplayOrder(db.definition()))
      out += RecordValueText(db, record, slot, EuropeanOptions()) + "|";
    return out;
  }

  TempFolder folder_;
  std::string path_ = folder_.Path("Inventory.PDB");
  FixedClock clock_;
  ScriptedPrompter prompter_;
};

TEST_F(ConversionTest, AConvertedInventoryLeavesInventoryOldBesideItWithTheOldBytes) {
  Inventory().Write(path_);
  const std::string old_bytes = Slurp(path_);
  ASSERT_TRUE(IsOlderFormatFile(path_));
  prompter_.Queue(Answer::Yes);  // unique values kept
  prompter_.Queue(Answer::No);   // link values not kept
  prompter_.Queue(Answer::Yes);  // linked values kept
  EXPECT_EQ(ConvertOldDatabase(path_, prompter_, clock_), 1);
  EXPECT_EQ(prompter_.Questions(),
            (std::vector<std::string>{
                "Use the existing data in this field for the unique values?\n(Note: The values "
                "must be unique numbers for this to convert properly.)",
                "Use the existing data in this field for the link values?\n(Note: The values "
                "must be unique numbers for this to convert properly.)",
                "Use the existing data in this field for the linked values?\n(Note: The values "
                "must be numbers that relate to the link field for this to convert properly.)"}));
  EXPECT_EQ(prompter_.Messages(), std::vector<std::string>{"Conversion Successful!"});

  const std::string old_copy = folder_.Path("Inventory-Old.PDB");
  const std::string kept = Slurp(old_copy);
  ASSERT_EQ(kept.size(), old_bytes.size());
  EXPECT_EQ(kept.substr(0, 32), std::string("Inventory-Old") + std::string(19, '\0'));
  EXPECT_EQ(kept.substr(32), old_bytes.substr(32));
  EXPECT_TRUE(IsOlderFormatFile(old_copy));

  Database db;
  ASSERT_TRUE(LoadDatabase(db, path_, prompter_));
  EXPECT_FALSE(IsOlderFormatFile(path_));
  EXPECT_EQ(db.name, "Inventory");
  const DatabaseDefinition& d = db.definition();
  std::vector<unsigned> types;
  for (int slot = 0; slot < 12; ++slot) types.push_back(d.field(slot).type());
  EXPECT_EQ(types, (std::vector<unsigned>{kText, kInteger, kFloat, kPopUp, kCheckBox, kDate, kTime,
                                          kNote, kUnique, kLink, kLinked, kNotUsed}));
  EXPECT_EQ(d.field(7).bytes()[5], 0);
  EXPECT_EQ(std::string(CStringAt(d.field(9).settings(), 40)), "Parts");
  EXPECT_EQ(db.schema.fields[3].texts, (std::vector<std::string>{"red", "green"}));
  EXPECT_EQ(d.sort_key(0).field, 0);
  ASSERT_EQ(db.count(), 2u);
  // Sorted on Item: the record of empty values comes first.
  // A kept Unique field numbers its empty values after the largest kept number.
  EXPECT_EQ(Texts(db, 0), "|0|||0|NO DATE|No Time||18|0||");
  EXPECT_EQ(Texts(db, 1), "bolt|-350|0.04|green|1|14/03/2004|09:30:00|box 3|17|0||");
  EXPECT_EQ(ValueUInt32(ValueBytes(db.records[1].data, 9)), 0u);
  EXPECT_EQ(ValueUInt32(ValueBytes(db.records[1].data, 10)), 12u);
}

TEST_F(ConversionTest, APopupListFailureStillSavesWithoutTheSuccessMessage) {
  // The list claims three items and holds one.
  Inventory().RawPopupRecord(3, {3, 'r', 'e', 'd', 0}).Write(path_);
  EXPECT_EQ(ConvertOldDatabase(path_, prompter_, clock_), 1);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{"Error: Converting old popup lists to new format"});
  Database db;
  ASSERT_TRUE(LoadDatabase(db, path_, prompter_));
  EXPECT_EQ(db.count(), 2u);
  EXPECT_TRUE(std::filesystem::exists(folder_.Path("Inventory-Old.PDB")));
}

TEST_F(ConversionTest, ARecordThatCannotBeReadIsReportedAndTheOthersKept) {
  Inventory().RawRow({4, 'a'}).Write(path_);
  EXPECT_EQ(ConvertOldDatabase(path_, prompter_, clock_), 1);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{"Error: Converting old records to new format"});
  Database db;
  ASSERT_TRUE(LoadDatabase(db, path_, prompter_));
  EXPECT_EQ(db.count(), 2u);
}

TEST_F(ConversionTest, OtherFilesAreRefusedAndLeftAsTheyWere) {
  auto current = DatabaseBuilder("Inventory").Field("Item", kText).Row({"a"}).Build();
  current->path = path_;
  ASSERT_TRUE(SaveDatabase(*current, clock_));
  const std::string random = folder_.Path("random.PDB");
  WriteText(random, std::string("\x01\x02junk that is no database at all") + std::string(200, 'x'));
  for (const std::string& file : {path_, random}) {
    const std::string before = Slurp(file);
    EXPECT_FALSE(IsOlderFormatFile(file));
    prompter_.Clear();
    EXPECT_EQ(ConvertOldDatabase(file, prompter_, clock_), 0);
    EXPECT_EQ(prompter_.Messages(),
              std::vector<std::string>{"Error: File is not a Quorvant 2.x file, cannot convert."});
    EXPECT_EQ(Slurp(file), before);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 2);
}

TEST_F(ConversionTest, AnEarlierOldCopyIsNeverOverwritten) {
  Inventory().Write(path_);
  WriteText(folder_.Path("Inventory-Old.PDB"), "mine");
  const std::string before = Slurp(path_);
  EXPECT_EQ(ConvertOldDatabase(path_, prompter_, clock_), 0);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{"Error: Cannot create Old Quorvant PDB file storage"});
  EXPECT_EQ(Slurp(path_), before);
  EXPECT_EQ(Slurp(folder_.Path("Inventory-Old.PDB")), "mine");
}

TEST_F(ConversionTest, AChildWaitsForItsParentDatabase) {
  OldDatabaseBuilder("Orders").Field(OldFieldSpec(1, "Customer")).Write(folder_.Path("Orders.PDB"));
  const std::string child = folder_.Path("Lines.PDB");
  OldDatabaseBuilder("Lines").Field(OldFieldSpec(13, "Order").Other("Orders")).Write(child);
  EXPECT_EQ(ParentToConvertFirst(child), folder_.Path("Orders.PDB"));
  prompter_.Queue(Answer::Yes);
  EXPECT_FALSE(OfferConversion(child, prompter_, clock_));
  EXPECT_EQ(prompter_.Questions(), std::vector<std::string>{kConversionOffer});
  ASSERT_EQ(prompter_.Messages().size(), 1u);
  EXPECT_NE(prompter_.Messages()[0].find("until the file " + folder_.Path("Orders.PDB") + " is"),
            std::string::npos);
  EXPECT_TRUE(IsOlderFormatFile(child));

  prompter_.Queue(Answer::Yes);
  EXPECT_TRUE(OfferConversion(folder_.Path("Orders.PDB"), prompter_, clock_));
  EXPECT_EQ(ParentToConvertFirst(child), std::nullopt);
}

TEST(OlderFormatReaderTest, DamagedListsAndRecordsAreCaught) {
  Bytes image = OldDatabaseBuilder("X").Field(OldFieldSpec(1, "A")).Build();
  EXPECT_TRUE(LooksLikeOlderFormat(image));
  EXPECT_TRUE(ReadOldDatabase(image).has_value());
  Bytes cut(image.begin(), image.begin() + 200);
  EXPECT_FALSE(ReadOldDatabase(cut).has_value());
  Bytes unknown_type = image;
  const std::size_t record0 = GetBE32(image.data() + kHeaderSize);
  unknown_type[record0 + 36] = 14;
  EXPECT_FALSE(LooksLikeOlderFormat(unknown_type));
  EXPECT_EQ(DecodeOldRecord(std::vector<std::uint8_t>{2, 'a', 'b'}, 2), std::nullopt);
  EXPECT_EQ(DecodeOldRecord(std::vector<std::uint8_t>{1, 'a', 0, 9}, 2), std::nullopt);
  EXPECT_EQ(DecodeOldPopupList(std::vector<std::uint8_t>{2, 'a', 0, 'b'}), std::nullopt);
}

}  // namespace
}  // namespace qv::test
