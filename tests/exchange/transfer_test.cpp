#include "exchange/transfer.h"

#include <gtest/gtest.h>

#include "processing/filter.h"
#include "security/record_header.h"
#include "security/settings.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_passwords.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

class TransferTest : public ::testing::Test {
 protected:
  void SetUp() override {
    source_ = DatabaseBuilder("Stock")
                  .Field("Item", kText)
                  .Field("Qty", kInteger)
                  .Row({"a", "1"})
                  .Row({"b", "2"})
                  .Row({"c", "3"})
                  .Build();
    source_->path = folder_.Path("Stock.PDB");
    ASSERT_TRUE(SaveDatabase(*source_, clock_));
    auto target =
        DatabaseBuilder("Shop").Field("Name", kText).Field("N", kInteger).Row({"old", "9"}).Build();
    SaveAs(*target, target_path_);
  }

  void SaveAs(Database& db, const std::string& path) {
    db.path = path;
    ASSERT_TRUE(SaveDatabase(db, clock_));
  }

  std::unique_ptr<Database> Reload(const std::string& path) {
    auto db = std::make_unique<Database>();
    EXPECT_TRUE(LoadDatabase(*db, path, prompter_));
    return db;
  }

  TransferOutcome Transfer(bool move, std::uint32_t selector, const std::string& target) {
    return TransferRecords(move, selector, *source_, target, services_);
  }

  TempFolder folder_;
  FixedClock clock_;
  ScriptedPrompter prompter_;
  ScriptedPasswords passwords_;
  std::string buffer_;
  SecurityUi ui_{prompter_, passwords_, buffer_};
  TransferServices services_ = SecurityTransferServices(ui_, clock_);
  std::unique_ptr<Database> source_;
  std::string target_path_ = folder_.Path("Shop.PDB");
};

TEST_F(TransferTest, CopyingTheViewWalksBackwardsAndSavesTheTargetWhichRoundTrips) {
  TransferOutcome out = Transfer(false, kAllViewRecords, target_path_);
  EXPECT_TRUE(out.ok);
  EXPECT_EQ(out.result, 0);
  EXPECT_EQ(out.copied, 3u);
  EXPECT_EQ(source_->count(), 3u);
  auto target = Reload(target_path_);
  // Walking from the last record to the first appends the copies in that order.
  EXPECT_EQ(Column(*target, 0), (std::vector<std::string>{"old", "c", "b", "a"}));
  EXPECT_EQ(Column(*target, 1), (std::vector<std::string>{"9", "3", "2", "1"}));
  const Bytes image = SerializeDatabase(*target);
  EXPECT_EQ(std::string(image.begin(), image.end()), Slurp(target_path_));
  EXPECT_TRUE(prompter_.Messages().empty());
}

TEST_F(TransferTest, CopyingIntoTheSameDatabaseDuplicatesAndMovingThereIsRefused) {
  EXPECT_EQ(Transfer(true, kAllViewRecords, folder_.Path("STOCK.pdb")).copied, 0u);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{"ERROR: Cannot perform this operation to the same database"});
  EXPECT_EQ(source_->count(), 3u);
  TransferOutcome out = Transfer(false, kAllViewRecords, folder_.Path("STOCK.pdb"));
  EXPECT_EQ(out.result, 1);
  EXPECT_EQ(Column(*source_, 0), (std::vector<std::string>{"a", "b", "c", "c", "b", "a"}));
  EXPECT_EQ(source_->visible.size(), 6u);
}

TEST_F(TransferTest, MovingDeletesFromTheSourceOnlyWithDeleteAccess) {
  SetAccess(source_->definition(), kDeleteRecords, kNoAccess);
  TransferOutcome out = Transfer(true, kAllViewRecords, target_path_);
  EXPECT_EQ(out.copied, 3u);
  EXPECT_EQ(out.deleted, 0u);
  EXPECT_EQ(source_->count(), 3u);
  EXPECT_EQ(prompter_.Messages(), std::vector<std::string>{kNoSecurityAccess});
  EXPECT_EQ(Reload(target_path_)->count(), 4u);

  SetAccess(source_->definition(), kDeleteRecords, kFullAccess);
  source_->current = 1;
  out = Transfer(true, 1, target_path_);
  EXPECT_EQ(out.deleted, 1u);
  EXPECT_EQ(Column(*source_, 0), (std::vector<std::string>{"a", "c"}));
  EXPECT_EQ(Column(*Reload(target_path_), 0).back(), "b");
  out = Transfer(true, kAllViewRecords, target_path_);
  EXPECT_EQ(out.deleted, 2u);
  EXPECT_EQ(source_->count(), 0u);
  EXPECT_EQ(Reload(target_path_)->count(), 7u);
}

TEST_F(TransferTest, MismatchedFieldTypesEmptyViewsAndRefusedAddsTransferNothing) {
  const std::string before = Slurp(target_path_);
  auto other = DatabaseBuilder("Other").Field("Name", kText).Field("When", kDate).Build();
  SaveAs(*other, folder_.Path("Other.PDB"));
  EXPECT_FALSE(Transfer(false, kAllViewRecords, folder_.Path("Other.PDB")).ok);
  EXPECT_EQ(prompter_.Messages(),
            std::vector<std::string>{
                "ERROR: Field Types of Database:Other do not match that of this database!"});
  EXPECT_EQ(prompter_.calls()[0].caption, "ERROR");

  source_->restriction_field = 1;
  source_->restriction_key = 77;
  RebuildFilteredList(*source_);
  TransferOutcome empty = Transfer(true, kAllViewRecords, target_path_);
  EXPECT_TRUE(empty.ok);
  EXPECT_EQ(empty.copied, 0u);
  EXPECT_EQ(source_->count(), 3u);
  EXPECT_EQ(Slurp(target_path_), before);

  source_->restriction_field = -1;
  RebuildFilteredList(*source_);
  auto locked = Reload(target_path_);
  SetAccess(locked->definition(), kAddRecords, kNoAccess);
  ASSERT_TRUE(SaveDatabase(*locked, clock_));
  const std::string locked_bytes = Slurp(target_path_);
  prompter_.Clear();
  EXPECT_FALSE(Transfer(true, kAllViewRecords, target_path_).ok);
  EXPECT_EQ(prompter_.Messages(), std::vector<std::string>{kNoSecurityAccess});
  EXPECT_EQ(Slurp(target_path_), locked_bytes);
  EXPECT_EQ(source_->count(), 3u);
}

TEST_F(TransferTest, ATargetChangedOnDiskMeanwhileIsNeverOverwritten) {
  auto open = services_.open;
  services_.open = [&](const std::string& path) {
    auto db = open(path);
    // Another program saves the file after it was opened here.
    auto other = Reload(path);
    StoreRecord(*other, ValuesFromTexts(*other, {{0, "theirs"}}), kNewRecord);
    clock_.now += 5;
    EXPECT_TRUE(SaveDatabase(*other, clock_));
    return db;
  };
  TransferOutcome out = Transfer(true, kAllViewRecords, target_path_);
  EXPECT_FALSE(out.ok);
  EXPECT_EQ(out.deleted, 0u);
  EXPECT_EQ(source_->count(), 3u);
  EXPECT_EQ(Column(*Reload(target_path_), 0), (std::vector<std::string>{"old", "theirs"}));
  ASSERT_EQ(prompter_.Messages().size(), 1u);
  EXPECT_NE(prompter_.Messages()[0].find("was changed by another program"), std::string::npos);
}

TEST_F(TransferTest, ATargetOpenAlreadyTakesTheCopiesInMemory) {
  auto target = Reload(target_path_);
  ShowAllRecords(*target);
  const std::string before = Slurp(target_path_);
  services_.open_databases = {target.get()};
  EXPECT_TRUE(Transfer(false, 0, target_path_).ok);
  EXPECT_EQ(Column(*target, 0), (std::vector<std::string>{"old", "a"}));
  EXPECT_TRUE(target->changed);
  EXPECT_EQ(Slurp(target_path_), before);
}

TEST_F(TransferTest, EncipheredRecordsAreNotCopiedAsValues) {
  EnableRecordHeaders(*source_);
  auto header = ReadRecordHeader(source_->records[1].data);
  ASSERT_TRUE(header);
  header->set(kRecordFieldsEnciphered, true);
  WriteRecordHeader(source_->records[1].data, *header);
  TransferOutcome out = Transfer(false, kAllViewRecords, target_path_);
  EXPECT_EQ(out.copied, 2u);
  EXPECT_EQ(Column(*Reload(target_path_), 0), (std::vector<std::string>{"old", "c", "a"}));
  ASSERT_EQ(prompter_.Messages().size(), 1u);
  EXPECT_EQ(prompter_.Messages()[0].rfind("1 records could not be copied", 0), 0u);
}

TEST(FieldTypesMatchTest, EverySlotIsCompared) {
  auto a = DatabaseBuilder().Field("x", kText).Field("y", kInteger).Build();
  auto b = DatabaseBuilder().Field("other", kText).Field("names", kInteger).Build();
  EXPECT_TRUE(FieldTypesMatch(a->definition(), b->definition()));
  b->definition().field(99).set_type(kNote);
  EXPECT_FALSE(FieldTypesMatch(a->definition(), b->definition()));
}

}  // namespace
}  // namespace qv::test
