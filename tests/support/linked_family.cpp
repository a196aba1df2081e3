#include "tests/support/linked_family.h"

#include <gtest/gtest.h>

#include "engine/field_settings.h"
#include "processing/linked_database.h"
#include "tests/support/builders.h"

namespace qv::test {

namespace {

void Save(Database& db, const std::string& path) {
  db.path = path;
  FixedClock clock;
  EXPECT_TRUE(SaveDatabase(db, clock)) << path;
}

// Sets a Link key or a Linked key with its shown text.
void SetKey(Database& db, std::uint32_t record, int slot, std::uint32_t key, const char* shown) {
  Bytes value = db.definition().field_type(slot) == kLinked ? LinkedValue(key, shown ? shown : "")
                                                            : UInt32Value(key);
  db.records[record].data = ReplaceValue(db.records[record].data, db.definition(), slot, value);
}

}  // namespace

LinkedFamily SaveLinkedFamily(const std::string& folder) {
  LinkedFamily family{folder + "/Projects.PDB", folder + "/tasks-2026.PDB", folder + "/Steps.PDB"};
  auto projects = DatabaseBuilder("Projects")
                      .Field("Name", kText)
                      .Field("Tasks", kLink)
                      .Row({"Garden"})
                      .Row({"Garage"})
                      .Build();
  SetLinkTarget(projects->definition().field(1), "Project Tasks");
  SetKey(*projects, 0, 1, 1, nullptr);
  SetKey(*projects, 1, 1, 2, nullptr);
  Save(*projects, family.projects);

  auto tasks = DatabaseBuilder("Project Tasks")
                   .Field("Task", kText)
                   .Field("Project", kLinked)
                   .Field("Steps", kLink)
                   .Row({"Dig"})
                   .Row({"Plant"})
                   .Row({"Sweep"})
                   .Build();
  SetLinkTarget(tasks->definition().field(1), "Projects");
  SetLinkTarget(tasks->definition().field(2), "Steps");
  SetKey(*tasks, 0, 1, 1, "Garden");
  SetKey(*tasks, 1, 1, 1, "Garden");
  SetKey(*tasks, 2, 1, 2, "Garage");
  SetKey(*tasks, 0, 2, 7, nullptr);
  Save(*tasks, family.tasks);

  auto steps = DatabaseBuilder("Steps")
                   .Field("Step", kText)
                   .Field("Task", kLinked)
                   .Row({"Spade"})
                   .Row({"Gloves"})
                   .Build();
  SetLinkTarget(steps->definition().field(1), "Project Tasks");
  SetKey(*steps, 0, 1, 7, "Dig");
  SetKey(*steps, 1, 1, 7, "Dig");
  Save(*steps, family.steps);
  return family;
}

}  // namespace qv::test
