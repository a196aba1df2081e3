// Receiving: records into the database they name, database files stored or merged, and names
// that try to leave the data folder.

#include "exchange/beam_receive.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "exchange/beam_send.h"
#include "exchange/sync_databases.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

using test::DatabaseBuilder;

class Receiving : public ::testing::Test {
 protected:
  test::TempFolder folder;
  test::ScriptedPrompter prompter;
  test::FixedClock clock;
  ReceiveHost host{prompter,
                   clock,
                   folder.path(),
                   nullptr,
                   [this](const std::string& path) {
                     auto db = std::make_unique<Database>();
                     return LoadDatabase(*db, path, prompter) ? std::move(db) : nullptr;
                   },
                   [this](Database& db) { return SaveDatabase(db, clock); },
                   {},
                   {}};

  std::unique_ptr<Database> Inventory(std::vector<std::vector<std::string>> rows) {
    DatabaseBuilder builder("Inventory");
    builder.Field("Item", kText).Field("Count", kInteger);
    for (auto& row : rows) builder.Row(row);
    return builder.Build();
  }
  void Save(Database& db, const std::string& file) {
    db.path = folder.Path(file);
    ASSERT_TRUE(SaveDatabase(db, clock));
  }
  std::string Temp(const Bytes& body) {
    std::string path = folder.Path("IrData.dat");
    test::WriteText(path, std::string(body.begin(), body.end()));
    return path;
  }
  std::vector<std::string> Items(const std::string& file) {
    Database db;
    EXPECT_TRUE(LoadDatabase(db, folder.Path(file), prompter));
    return test::Column(db, 0);
  }
};

TEST_F(Receiving, RecordsAreInsertedIntoTheNamedDatabase) {
  auto db = Inventory({{"bolt", "3"}});
  Save(*db, "Inventory.PDB");
  auto source = Inventory({{"nut", "1"}, {"gear", "2"}});
  ShowAllRecords(*source);
  auto many = ViewObject(*source);
  ASSERT_TRUE(many);
  prompter.default_answer = Answer::Yes;
  ReceivedObject object{many->name, many->description};
  std::string temp = Temp(many->body);
  EXPECT_EQ(HandleReceivedObject(host, object, temp), 1);
  EXPECT_FALSE(std::filesystem::exists(temp));
  EXPECT_EQ(prompter.Questions()[0], "Do you want to accept the data: Inventory: Filtered Records");
  EXPECT_EQ(Items("Inventory.PDB"), (std::vector<std::string>{"bolt", "nut", "gear"}));

  auto one = RecordObject(*source, 1);
  EXPECT_EQ(one->description, u"Inventory: Record 2");
  EXPECT_EQ(HandleReceivedObject(host, {u"Inventory.qvr", u"x"}, Temp(one->body)), 1);
  EXPECT_EQ(Items("Inventory.PDB").back(), "gear");
  EXPECT_EQ(Items("Inventory.PDB").size(), 4u);
}

TEST_F(Receiving, RecordsForAMissingOrUnsafeNameInsertNothing) {
  prompter.default_answer = Answer::Yes;
  for (std::u16string name : {u"Missing.qvr", u"../../x.qvr", u"a/b.qvm"}) {
    prompter.Clear();
    std::string temp = Temp({1, 2, 3});
    EXPECT_EQ(HandleReceivedObject(host, {name, u"d"}, temp), 0);
    EXPECT_FALSE(std::filesystem::exists(temp));
    ASSERT_EQ(prompter.Messages().size(), 1u);
    EXPECT_NE(prompter.Messages()[0].find("not found on device, and must be present"),
              std::string::npos);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 0);
}

TEST_F(Receiving, ADatabaseIsStoredUnderItsHeaderNameOnlyWhenThatIsSafe) {
  prompter.default_answer = Answer::Yes;
  auto db = Inventory({{"bolt", "3"}});
  Bytes image = SerializeDatabase(*db);
  EXPECT_EQ(HandleReceivedObject(host, {u"whatever.PDB", u"d"}, Temp(image)), 1);
  EXPECT_EQ(test::Slurp(folder.Path("Inventory.PDB")), std::string(image.begin(), image.end()));

  db->header.SetName("../evil");
  image = SerializeDatabase(*db);
  prompter.Clear();
  EXPECT_EQ(HandleReceivedObject(host, {u"x", u"d"}, Temp(image)), 0);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("../evil.PDB")));
  EXPECT_EQ(prompter.Messages().size(), 1u);

  prompter.Clear();
  EXPECT_EQ(HandleReceivedObject(host, {u"x", u"d"}, Temp({'h', 'i'})), 0);
  EXPECT_EQ(prompter.Messages(),
            std::vector<std::string>{"File sent was not a Quorvant .PDB File"});
}

TEST_F(Receiving, MergingAChangedCopyUpdatesChangedRecordsAndAddsNewOnes) {
  auto existing = Inventory({{"bolt", "3"}, {"nut", "1"}});
  existing->definition().set_record_header_on(true);
  // Identities as the record header carries them: byte 0 = 22 and 22 more bytes.
  auto with_header = [](Bytes data, std::uint8_t identity) {
    Bytes header(kRecordHeaderSize, 0);
    header[0] = 22;
    header[1] = identity;
    header.insert(header.end(), data.begin() + 1, data.end());
    return header;
  };
  for (std::uint8_t i = 0; i < 2; ++i)
    existing->records[i].data = with_header(existing->records[i].data, i + 1);
  Save(*existing, "Inventory.PDB");

  auto changed = Inventory({{"bolt", "30"}, {"nut", "1"}, {"gear", "2"}});
  changed->definition().set_record_header_on(true);
  for (std::uint8_t i = 0; i < 3; ++i)
    changed->records[i].data = with_header(changed->records[i].data, i + 1);
  prompter.Queue(Answer::Yes);  // accept
  prompter.Queue(Answer::Yes);  // merge
  EXPECT_EQ(HandleReceivedObject(host, {u"Inventory.PDB", u"d"}, Temp(SerializeDatabase(*changed))),
            1);
  Database merged;
  ASSERT_TRUE(LoadDatabase(merged, folder.Path("Inventory.PDB"), prompter));
  EXPECT_EQ(test::Column(merged, 1), (std::vector<std::string>{"30", "1", "2"}));

  auto other = DatabaseBuilder("Inventory").Field("Item", kText).Field("When", kDate).Build();
  EXPECT_EQ(SyncDatabases(merged, *other), -1);
}

TEST(SyncWithoutIdentity, RecordsAreMatchedByTheirBytes) {
  auto a = DatabaseBuilder("A").Field("Item", kText).Row({"x"}).Row({"y"}).Build();
  auto b = DatabaseBuilder("A").Field("Item", kText).Row({"y"}).Row({"z"}).Build();
  EXPECT_EQ(SyncDatabases(*a, *b), 1);
  EXPECT_EQ(test::Column(*a, 0), (std::vector<std::string>{"x", "y", "z"}));
}

}  // namespace
}  // namespace qv

namespace qv {
namespace {

TEST(ReceivedNames, KindsBySubstringAndFileNamesThatStayInTheFolder) {
  EXPECT_EQ(KindOfObject(u"a.QVR.PDB"), ObjectKind::Record);
  EXPECT_EQ(RecordsDatabaseName(u"a.QVR.PDB"), "a");
  EXPECT_EQ(KindOfObject(u"Stock.qvm"), ObjectKind::Records);
  EXPECT_EQ(KindOfObject(u""), ObjectKind::DatabaseFile);  // no Name: a database file
  EXPECT_TRUE(SafeFileName("Stock 2024"));
  for (const char* bad : {"", "../x", "a/b", "a\\b", "..", ".hidden", "a\nb", "C:x"})
    EXPECT_FALSE(SafeFileName(bad)) << bad;
}

}  // namespace
}  // namespace qv
