#include <gtest/gtest.h>

#include "engine/database.h"
#include "tests/support/builders.h"
#include "tests/support/fakes.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

class SchemaOpen : public ::testing::Test {
 protected:
  void SetUp() override {
    auto db = test::DatabaseBuilder("Parts").Field("Name", kText).Field("Qty", kInteger).Build();
    db->records.clear();
    for (int i = 0; i < 50; ++i) db->records.push_back({TextValue(std::to_string(i)), 200u + i, 0});
    db->path = path_;
    test::FixedClock clock;
    ASSERT_TRUE(SaveDatabase(*db, clock));
    image_ = SerializeDatabase(*db);
  }

  test::TempFolder folder_;
  std::string path_ = folder_.Path("parts.PDB");
  Bytes image_;
  test::ScriptedPrompter prompter_;
};

TEST_F(SchemaOpen, ReadsTheHeaderAndFieldsButNoRecords) {
  Database all, schema;
  ASSERT_TRUE(LoadDatabase(all, path_, prompter_));
  ASSERT_TRUE(LoadDatabase(schema, path_, prompter_, LoadParts::Schema));
  EXPECT_EQ(schema.count(), 0u);
  EXPECT_EQ(schema.header.record_count, 152u);
  EXPECT_EQ(schema.name, "Parts");
  EXPECT_EQ(schema.definition().field(1).name(), "Qty");
  EXPECT_EQ(schema.definition().bytes(), all.definition().bytes());
  EXPECT_EQ(all.count(), 50u);
}

TEST_F(SchemaOpen, ChecksEveryEntryAsAFullOpenDoes) {
  // Cut the file inside the data records: both opens refuse it with the same messages.
  test::WriteText(path_, std::string(image_.begin(), image_.end() - 40));
  Database all, schema;
  EXPECT_FALSE(LoadDatabase(all, path_, prompter_));
  auto full_messages = prompter_.Messages();
  prompter_.Clear();
  EXPECT_FALSE(LoadDatabase(schema, path_, prompter_, LoadParts::Schema));
  EXPECT_EQ(prompter_.Messages(), full_messages);
  ASSERT_FALSE(full_messages.empty());
  // A file that stops inside the schema records is refused too.
  test::WriteText(path_, std::string(image_.begin(), image_.begin() + 2000));
  prompter_.Clear();
  EXPECT_FALSE(LoadDatabase(schema, path_, prompter_, LoadParts::Schema));
  EXPECT_FALSE(prompter_.Messages().empty());
}

}  // namespace
}  // namespace qv
