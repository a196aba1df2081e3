#include "processing/linked_text.h"

#include "engine/field_settings.h"

namespace qv {

LinkedTextWriter::LinkedTextWriter(std::vector<Database*> open, Prompter& prompter,
                                   LinkAccessCheck access, FormatOptions options)
    : open_(std::move(open)),
      prompter_(prompter),
      access_(std::move(access)),
      options_(std::move(options)) {}

LinkedRecordsWriter LinkedTextWriter::writer() {
  return [this](const Database& db, std::uint32_t number, int slot, int level, std::string& out) {
    Write(db, number, slot, level, out);
  };
}

Database* LinkedTextWriter::Reach(const Database& db, int slot, std::uint32_t number) {
  std::string name = LinkTarget(db.definition().field(slot));
  if (failed_.count(name)) return nullptr;
  LinkedOpen linked = OpenLinkedDatabase(db, slot, number, open_, prompter_, access_);
  if (!linked.db) {
    failed_.insert(name);
    return nullptr;
  }
  if (linked.opened) {
    // Kept in the open table so the next parent record finds it there.
    open_.push_back(linked.db);
    owned_.push_back(std::move(linked.opened));
  }
  return linked.db;
}

void LinkedTextWriter::Write(const Database& db, std::uint32_t number, int slot, int level,
                             std::string& out) {
  // Four databases deep at most, as the open table holds four; this also ends a cycle of links.
  if (level >= static_cast<int>(kOpenTableSize)) return;
  std::uint32_t key = LinkKey(db, slot, number);
  if (key == 0) return;
  Database* child = Reach(db, slot, number);
  if (!child) return;
  int field = ChildKeyField(db, slot, *child);
  for (std::uint32_t r : LinkedRecords(*child, field, key))
    WriteRecordText(*child, r, level, options_, out, writer());
}

}  // namespace qv
