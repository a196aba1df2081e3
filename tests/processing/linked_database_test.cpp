#include "processing/linked_database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "engine/field_settings.h"
#include "processing/filter.h"
#include "processing/linked_text.h"
#include "tests/support/builders.h"
#include "tests/support/linked_family.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

using test::ScriptedPrompter;

std::unique_ptr<Database> Load(const std::string& path) {
  auto db = std::make_unique<Database>();
  ScriptedPrompter quiet;
  EXPECT_TRUE(LoadDatabase(*db, path, quiet)) << path;
  ShowAllRecords(*db);
  return db;
}

class LinkedDatabaseTest : public ::testing::Test {
 protected:
  test::TempFolder folder_;
  test::LinkedFamily family_ = test::SaveLinkedFamily(folder_.path());
  std::unique_ptr<Database> projects_ = Load(family_.projects);
  ScriptedPrompter prompter_;
  std::vector<Database*> open_{projects_.get()};

  LinkedOpen Follow(const Database& db, int slot, std::uint32_t record,
                    const LinkAccessCheck& access = {}) {
    return OpenLinkedDatabase(db, slot, record, open_, prompter_, access);
  }
  std::vector<std::string> Names(const Database& db) {
    std::vector<std::string> names;
    for (std::uint32_t n : db.visible) names.push_back(RecordValueText(db, n, 0, {}));
    return names;
  }
};

TEST_F(LinkedDatabaseTest, FollowingALinkFindsTheFileByHeaderNameAndRestrictsItsList) {
  LinkedOpen tasks = Follow(*projects_, 1, 0);
  ASSERT_TRUE(tasks.db);
  ASSERT_TRUE(tasks.opened);
  EXPECT_EQ(tasks.db->path, family_.tasks);
  EXPECT_EQ(tasks.request.key, 1u);
  EXPECT_EQ(tasks.request.record, 0u);
  EXPECT_TRUE(tasks.request.area.empty());
  int field = ChildKeyField(*projects_, 1, *tasks.db);
  EXPECT_EQ(field, 1);
  RestrictToParent(*tasks.db, field, tasks.request.key);
  EXPECT_EQ(Names(*tasks.db), (std::vector<std::string>{"Dig", "Plant"}));
  RestrictToParent(*tasks.db, field, 2);
  EXPECT_EQ(Names(*tasks.db), (std::vector<std::string>{"Sweep"}));
  ClearRestriction(*tasks.db);
  EXPECT_EQ(tasks.db->visible.size(), 3u);
  EXPECT_TRUE(prompter_.calls().empty());
}

TEST_F(LinkedDatabaseTest, RequestCarriesByte65AndTheRecordHeaderArea) {
  projects_->definition().field(1).bytes()[link_settings::kOtherField] = 9;
  Bytes record = projects_->records[1].data;
  Bytes with_header = {22};
  for (int i = 1; i <= 22; ++i) with_header.push_back(static_cast<std::uint8_t>(i));
  with_header.insert(with_header.end(), record.begin() + 1, record.end());
  projects_->records[1].data = with_header;
  LinkRequest request = MakeLinkRequest(*projects_, 1, 1);
  EXPECT_EQ(request.key, 2u);
  EXPECT_EQ(request.field_byte, 9);
  ASSERT_EQ(request.area.size(), 22u);
  EXPECT_EQ(request.area.front(), 1);
  EXPECT_EQ(request.area.back(), 22);
}

TEST_F(LinkedDatabaseTest, AnOpenDatabaseIsReusedWhateverTheCaseOfItsPath) {
  auto tasks = Load(family_.tasks);
  std::string upper = family_.tasks;
  std::transform(upper.begin(), upper.end(), upper.begin(), ::toupper);
  tasks->path = upper;
  open_.push_back(tasks.get());
  LinkedOpen again = Follow(*projects_, 1, 0);
  EXPECT_EQ(again.db, tasks.get());
  EXPECT_FALSE(again.opened);
  // The table holds four: a fifth open database is never found there.
  auto a = Load(family_.steps), b = Load(family_.steps);
  open_ = {projects_.get(), a.get(), b.get(), a.get(), tasks.get()};
  LinkedOpen fifth = Follow(*projects_, 1, 0);
  EXPECT_NE(fifth.db, tasks.get());
  EXPECT_TRUE(fifth.opened);
}

TEST_F(LinkedDatabaseTest, MissingAndUnopenableFilesSayWhy) {
  std::filesystem::remove(family_.tasks);
  EXPECT_FALSE(Follow(*projects_, 1, 0).db);
  ASSERT_FALSE(prompter_.calls().empty());
  EXPECT_EQ(prompter_.calls().back().text, kLinkedNotPresent);
  EXPECT_EQ(prompter_.calls().back().caption, "ERROR");
  EXPECT_EQ(prompter_.calls().back().icon, Icon::Exclamation);

  // Found by its header, but the record list behind it is cut off.
  test::SaveLinkedFamily(folder_.path());
  std::filesystem::resize_file(family_.tasks, 100);
  prompter_.Clear();
  EXPECT_FALSE(Follow(*projects_, 1, 0).db);
  ASSERT_FALSE(prompter_.calls().empty());
  EXPECT_EQ(prompter_.calls().back().text, kLinkedCannotOpen);
  EXPECT_EQ(prompter_.calls().back().caption, "ERROR");
}

TEST_F(LinkedDatabaseTest, MyStuffIsTriedWithBlanksThenUnderscores) {
  auto stuff = test::DatabaseBuilder("My Stuff").Field("Thing", kText).Build();
  stuff->path = folder_.Path("My_Stuff.PDB");
  test::FixedClock clock;
  ASSERT_TRUE(SaveDatabase(*stuff, clock));
  SetLinkTarget(projects_->definition().field(1), "My Stuff");
  EXPECT_EQ(Follow(*projects_, 1, 0).db->path, folder_.Path("My_Stuff.PDB"));
  stuff->path = folder_.Path("My Stuff.PDB");
  ASSERT_TRUE(SaveDatabase(*stuff, clock));
  EXPECT_EQ(Follow(*projects_, 1, 0).db->path, folder_.Path("My Stuff.PDB"));
}

TEST_F(LinkedDatabaseTest, RefusedAccessGivesNothingAndClosesWhatWasOpened) {
  bool asked_loaded = false;
  LinkedOpen refused = Follow(*projects_, 1, 0, [&](Database& db) {
    asked_loaded = db.loaded;
    return false;
  });
  EXPECT_TRUE(asked_loaded);
  EXPECT_FALSE(refused.db);
  EXPECT_FALSE(refused.opened);
  // A reused database stays open for the one who opened it.
  auto tasks = Load(family_.tasks);
  open_.push_back(tasks.get());
  EXPECT_FALSE(Follow(*projects_, 1, 0, [](Database&) { return false; }).db);
  EXPECT_TRUE(tasks->loaded);
}

TEST_F(LinkedDatabaseTest, AddReassignAndDeleteThroughTheLink) {
  auto tasks = Load(family_.tasks);
  // A new parent gets a key when it is first followed, one past the largest.
  StoreRecord(*projects_, test::ValuesFromTexts(*projects_, {{0, "Shed"}}), kNewRecord);
  EXPECT_EQ(LinkKey(*projects_, 1, 2), 0u);
  EXPECT_EQ(EnsureLinkKey(*projects_, 1, 2), 3u);
  EXPECT_EQ(LinkKey(*projects_, 1, 2), 3u);
  EXPECT_TRUE(projects_->changed);

  RecordValues values = test::ValuesFromTexts(*tasks, {{0, "Paint"}});
  BelongToParent(*tasks, 1, 3, ParentShownText(*projects_, 2, {}), values);
  auto added = StoreRecord(*tasks, values, kNewRecord);
  ASSERT_TRUE(added);
  EXPECT_EQ(LinkedRecords(*tasks, 1, 3), std::vector<std::uint32_t>{*added});
  EXPECT_EQ(RecordValueText(*tasks, *added, 1, {}), "Shed");

  ASSERT_TRUE(ReassignLinkedRecord(*tasks, *added, 1, 1, "Garden"));
  EXPECT_EQ(LinkedRecords(*tasks, 1, 1).size(), 3u);
  EXPECT_TRUE(LinkedRecords(*tasks, 1, 3).empty());

  std::vector<std::uint32_t> doomed{0};
  auto keys = LinkKeysOf(*projects_, doomed);
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys[0].keys, std::vector<std::uint32_t>{1});
  EXPECT_EQ(DeleteLinkedRecords(*tasks, 1, keys[0].keys, prompter_), 3u);
  EXPECT_EQ(tasks->count(), 1u);
  EXPECT_EQ(RecordValueText(*tasks, 0, 0, {}), "Sweep");
}

TEST_F(LinkedDatabaseTest, RelationshipMatchesNumberFieldsAndOwnsNothing) {
  auto orders = test::DatabaseBuilder("Orders")
                    .Field("Customer", kInteger)
                    .Field("Lines", kRelationship)
                    .Row({"42"})
                    .Row({"0"})
                    .Build();
  auto lines = test::DatabaseBuilder("Lines")
                   .Field("Item", kText)
                   .Field("Customer", kInteger)
                   .Row({"bolt", "42"})
                   .Row({"nut", "7"})
                   .Row({"washer", "42"})
                   .Build();
  FieldDefinition f = orders->definition().field(1);
  f.bytes()[link_settings::kSourceField] = 0;
  f.bytes()[link_settings::kOtherField] = 1;
  EXPECT_EQ(ChildKeyField(*orders, 1, *lines), 1);
  EXPECT_EQ(LinkKey(*orders, 1, 0), 42u);
  EXPECT_EQ(EnsureLinkKey(*orders, 1, 1), 0u);  // an empty key field is not given a number
  EXPECT_EQ(LinkedRecords(*lines, 1, 42), (std::vector<std::uint32_t>{0, 2}));
  f.bytes()[link_settings::kOtherField] = 0;  // a Text field cannot hold the key
  EXPECT_EQ(ChildKeyField(*orders, 1, *lines), -1);
  std::vector<std::uint32_t> all{0, 1};
  EXPECT_TRUE(LinkKeysOf(*orders, all).empty());
}

TEST_F(LinkedDatabaseTest, DbPopupFillsItsPairedFields) {
  auto db = test::DatabaseBuilder("Orders")
                .Field("Project", kDbPopup)
                .Field("Code", kDbPopup)
                .Field("Other", kDbPopup)
                .Row({"", "", ""})
                .Build();
  for (int s = 0; s < 3; ++s) {
    SetLinkTarget(db->definition().field(s), "Projects");
    db->definition().field(s).bytes()[link_settings::kSourceField] = 0;
  }
  db->definition().field(0).bytes()[link_settings::kPairGroup] = 4;
  db->definition().field(1).bytes()[link_settings::kPairGroup] = 4;
  db->definition().field(2).bytes()[link_settings::kPairGroup] = 5;
  RecordValues values;
  FillDbPopups(*db, 0, *projects_, 1, {}, values);
  EXPECT_EQ(ValueText(values.values[0]), "Garage");
  EXPECT_EQ(ValueText(values.values[1]), "Garage");
  EXPECT_FALSE(values.present[2]);
}

TEST_F(LinkedDatabaseTest, TextWriterIndentsLinkedRecordsThreeBlanksPerLevel) {
  LinkedTextWriter linked(open_, prompter_, {}, {});
  std::string out;
  WriteRecordText(*projects_, 0, 0, {}, out, linked.writer());
  const std::string rule = "----------------------------------------\n";
  EXPECT_EQ(out,
            "Name: Garden\n"
            "   Task: Dig\n   Project: Garden\n"
            "      Step: Spade\n      Task: Dig\n" +
                rule + "      Step: Gloves\n      Task: Dig\n" + rule + rule +
                "   Task: Plant\n   Project: Garden\n" + rule + rule);
}

}  // namespace
}  // namespace qv
