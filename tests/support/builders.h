#pragma once
// Databases and records made in code for tests.

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/database.h"
#include "tests/support/fakes.h"

namespace qv::test {

class DatabaseBuilder {
 public:
  explicit DatabaseBuilder(std::string name = "Test");
  // Adds a field in the next free slot; `length` is the field length (text size).
  DatabaseBuilder& Field(std::string name, FieldType type, unsigned length = 40);
  DatabaseBuilder& Items(std::vector<std::string> popup_items);  // for the last field added
  DatabaseBuilder& Sort(int slot, bool forward = true);
  DatabaseBuilder& Options(FormatOptions options);
  // Adds a record from display texts, one per field in the order the fields were added;
  // fails the test when a text does not parse.
  DatabaseBuilder& Row(std::vector<std::string> texts);
  std::unique_ptr<Database> Build();

 private:
  FixedClock clock_;
  std::unique_ptr<Database> db_;
  std::vector<int> slots_;
  int sort_keys_ = 0;
  FormatOptions options_;
};

// Encoded values for one record from display texts keyed by slot.
RecordValues ValuesFromTexts(const Database& db, const std::vector<std::pair<int, std::string>>& texts,
                             const FormatOptions& options = {});

// Display texts of one field over every record, in table order.
std::vector<std::string> Column(const Database& db, int slot, const FormatOptions& options = {});

}  // namespace qv::test
