#pragma once
// Three databases linked one below the other, saved into a folder: "Projects" (Name, Tasks:
// Link to "Project Tasks"), "Project Tasks" in the file tasks-2026.PDB, so that only the folder
// listing finds it (Task, Project: Linked to "Projects", Steps: Link to "Steps"), and "Steps"
// (Step, Task: Linked to "Project Tasks").

#include <string>

#include "engine/database.h"

namespace qv::test {

struct LinkedFamily {
  std::string projects, tasks, steps;  // the paths
};

// Projects: "Garden" (key 1), "Garage" (key 2). Tasks: "Dig" and "Plant" under Garden, "Sweep"
// under Garage; Dig has key 7 in its Steps field. Steps: "Spade" and "Gloves" under Dig.
LinkedFamily SaveLinkedFamily(const std::string& folder);

}  // namespace qv::test
