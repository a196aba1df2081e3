#include "bench/support/sample_database.h"

#include <filesystem>
#include <random>
#include <string>

#include "engine/format.h"
#include "platform/system_clock.h"

namespace qv::bench {

namespace {

const char* const kWords[] = {"apple",  "Banana", "cherry", "delta",  "Echo",   "falcon",
                              "garden", "harbor", "Indigo", "jasper", "kettle", "lantern",
                              "meadow", "Nickel", "orchid", "pepper", "quartz", "river"};
const char* const kCities[] = {"Oslo", "Lima", "Cairo", "Perth", "Quito", "Riga", "Sofia", "Turin"};

std::string Word(std::mt19937& random) {
  return kWords[random() % std::size(kWords)];
}

}  // namespace

RecordValues SampleRecordValues(const Database& db, std::uint32_t n) {
  std::mt19937 random(n * 2654435761u + 17);
  RecordValues v = DefaultValues(db);
  v.Set(0, TextValue(Word(random) + " " + Word(random) + " " + std::to_string(n % 977)));
  v.Set(1, Int32Value(static_cast<std::int32_t>(random() % 200000) - 100000));
  v.Set(2, TextValue(std::to_string(random() % 100000 / 100.0).substr(0, 8)));
  v.Set(3, UInt32Value(36000 + random() % 9000));
  v.Set(4, TimeValue(static_cast<int>(random() % 24), static_cast<int>(random() % 60), 0));
  v.Set(5, CheckValue(random() % 2));
  const char* sizes[] = {"Small", "Medium", "Large"};
  v.Set(6, TextValue(sizes[random() % 3]));
  v.Set(7,
        TextValue(random() % 4 ? std::string() : "A longer note about item " + std::to_string(n)));
  v.Set(8, TextValue(kCities[random() % std::size(kCities)]));
  v.Set(9, TextValue("C-" + std::to_string(random() % 100000)));
  return v;
}

std::unique_ptr<Database> MakeSampleDatabase(std::uint32_t records, std::uint32_t seed) {
  SystemClock clock;
  auto db = NewDatabase("Sample", clock);
  struct Spec {
    const char* name;
    FieldType type;
  } specs[] = {{"Name", kText}, {"Qty", kInteger},   {"Price", kFloat}, {"Bought", kDate},
               {"At", kTime},   {"Done", kCheckBox}, {"Size", kPopUp},  {"Notes", kNote},
               {"City", kText}, {"Code", kText}};
  for (int slot = 0; slot < 10; ++slot) {
    FieldDefinition f = db->definition().field(slot);
    f.set_type(specs[slot].type);
    f.set_name(specs[slot].name);
  }
  db->schema.fields[6].SetItems({"Small", "Medium", "Large"});
  db->records.reserve(records);
  for (std::uint32_t n = 0; n < records; ++n)
    StoreRecord(*db, SampleRecordValues(*db, n + seed * 1000003u), kNewRecord);
  ShowAllRecords(*db);
  db->changed = false;
  return db;
}

std::string SavedSampleFile(const std::string& file_name, std::uint32_t records) {
  auto db = MakeSampleDatabase(records);
  db->path = (std::filesystem::temp_directory_path() / file_name).string();
  SystemClock clock;
  SaveDatabase(*db, clock);
  return db->path;
}

}  // namespace qv::bench
