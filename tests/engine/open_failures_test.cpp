// Damaged files must give the program's messages and load nothing.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include <unistd.h>

#include "engine/database.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv {
namespace {

using test::DatabaseBuilder;

Bytes SampleImage() {
  auto db = DatabaseBuilder("Sample")
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Items({"a", "b"})
                .Row({"one", "1"})
                .Row({"two", "2"})
                .Build();
  return SerializeDatabase(*db);
}

struct Outcome {
  bool loaded;
  std::vector<std::string> messages;
};

Outcome Open(const Bytes& image) {
  // One file per test process: ctest runs the cases side by side.
  auto path = std::filesystem::temp_directory_path() /
              ("qv-open-failure-" + std::to_string(::getpid()) + ".PDB");
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
  Database db;
  test::ScriptedPrompter prompter;
  bool ok = LoadDatabase(db, path.string(), prompter);
  std::filesystem::remove(path);
  if (!ok) {
    EXPECT_FALSE(db.loaded);
    EXPECT_TRUE(db.records.empty());
  }
  return {ok, prompter.Messages()};
}

const std::string kBadHeader =
    "ERROR: Reading header!\nMake sure you are converting a Quorvant data file!\n";

TEST(OpenFailures, MissingFile) {
  Database db;
  test::ScriptedPrompter prompter;
  EXPECT_FALSE(LoadDatabase(db, "/nonexistent/x.PDB", prompter));
  EXPECT_EQ(prompter.Messages(),
            std::vector<std::string>{"ERROR: Cannot Open File: /nonexistent/x.PDB for reading"});
}

TEST(OpenFailures, HeaderProblems) {
  Bytes image = SampleImage();
  EXPECT_EQ(Open(Bytes(image.begin(), image.begin() + 50)).messages, std::vector<std::string>{kBadHeader});
  Bytes foreign = image;
  foreign[67] = 'x';
  EXPECT_EQ(Open(foreign).messages, std::vector<std::string>{kBadHeader});
}

TEST(OpenFailures, RecordListProblems) {
  Bytes image = SampleImage();
  Bytes too_many = image;
  PutBE16(too_many.data() + 76, 65535);  // more records than any database may hold, and than the file
  EXPECT_FALSE(Open(too_many).loaded);
  Bytes short_list = image;
  short_list.resize(78 + 8 * 50);  // the list runs past the end of the file
  EXPECT_EQ(Open(short_list).messages, std::vector<std::string>{"Could not initialize file"});
  Bytes few = image;
  PutBE16(few.data() + 76, 101);
  EXPECT_EQ(Open(few).messages, std::vector<std::string>{"Could not read file"});
}

TEST(OpenFailures, OffsetsPastTheEndBackwardsOrOverlappingTheList) {
  Bytes image = SampleImage();
  const std::size_t data0 = 78 + 8 * 102;  // entry of the first data record
  Bytes past = image;
  PutBE32(past.data() + data0 + 8, static_cast<std::uint32_t>(image.size() + 10));
  EXPECT_EQ(Open(past).messages, (std::vector<std::string>{"ERROR:Reading Record: 0", "Could not read file"}));
  Bytes backwards = image;
  PutBE32(backwards.data() + data0 + 8, GetBE32(image.data() + data0) - 1);
  EXPECT_EQ(Open(backwards).messages, (std::vector<std::string>{"ERROR:Reading Record: 0", "Could not read file"}));
  Bytes overlap = image;
  PutBE32(overlap.data() + 78, 100);  // record 0 inside the record list
  EXPECT_EQ(Open(overlap).messages, std::vector<std::string>{"Could not read file"});
}

TEST(OpenFailures, FieldRecordWhoseItemCountsOverrunIt) {
  Bytes image = SampleImage();
  std::uint32_t field1 = GetBE32(image.data() + 78 + 8);
  PutLE16(image.data() + field1 + 23, 300);  // 300 items cannot fit in the record
  EXPECT_EQ(Open(image).messages, std::vector<std::string>{"Could not read file"});
}

TEST(OpenFailures, ExactlySchemaRecordsOpensEmpty) {
  auto db = DatabaseBuilder("Empty").Field("A", kText).Build();
  Outcome o = Open(SerializeDatabase(*db));
  EXPECT_TRUE(o.loaded);
  EXPECT_TRUE(o.messages.empty());
}

// Random damage anywhere in a file never crashes the reader (the sanitizers watch).
TEST(OpenFailures, RandomDamageNeverCrashes) {
  Bytes image = SampleImage();
  std::mt19937 random(1234);
  for (int round = 0; round < 400; ++round) {
    Bytes damaged = image;
    int edits = 1 + static_cast<int>(random() % 8);
    for (int e = 0; e < edits; ++e) {
      std::size_t at = random() % (random() % 2 ? 78 + 8 * 104 : damaged.size());
      damaged[at] = static_cast<std::uint8_t>(random());
    }
    if (random() % 4 == 0) damaged.resize(random() % damaged.size());
    Database db;
    std::uint32_t bad = 0;
    if (ParseDatabase(damaged, db, bad) == ReadError::None) {
      for (std::uint32_t r = 0; r < db.count(); ++r)
        for (int slot = 0; slot < kFieldSlots; ++slot) RecordValueText(db, r, slot, FormatOptions{});
    }
  }
}

}  // namespace
}  // namespace qv
