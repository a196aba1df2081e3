#pragma once
// The records a Link field stands for, written as text one level deeper: printing and the text
// export hand this to WriteRecordText. The linked databases are opened once and kept while the
// writer lives, and a database already open (the one being written, or one further down the
// stack) is used as it is.

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "processing/linked_database.h"
#include "processing/record_text.h"

namespace qv {

class LinkedTextWriter {
 public:
  // `open`: the databases already open (the open table), the one being written first.
  LinkedTextWriter(std::vector<Database*> open, Prompter& prompter, LinkAccessCheck access,
                   FormatOptions options);
  LinkedRecordsWriter writer();

 private:
  void Write(const Database& db, std::uint32_t number, int slot, int level, std::string& out);
  Database* Reach(const Database& db, int slot, std::uint32_t number);

  std::vector<Database*> open_;
  std::vector<std::unique_ptr<Database>> owned_;
  std::set<std::string> failed_;  // names already reported missing or refused: said once
  Prompter& prompter_;
  LinkAccessCheck access_;
  FormatOptions options_;
};

}  // namespace qv
