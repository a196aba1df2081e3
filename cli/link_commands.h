#pragma once
// qvdb link, and the --linked-to option of qvdb add: records reached through Link fields.

#include <QCommandLineParser>
#include <QString>
#include <memory>

#include "cli/cli_context.h"
#include "engine/record.h"
#include "processing/linked_database.h"

namespace qv::cli {

// The access check a linked database gets: Open Database, its encryption password, and what a
// password at hand deciphers.
LinkAccessCheck LinkedAccess(CliContext& context);

// Adds --link-field, --key-field and --pair to `qvdb field`.
void AddLinkFieldOptions(QCommandLineParser& parser);
// Applies them to field `slot`: --link-field names the other database's field (the value a DB
// Popup shows; the field a Link or Relationship matches), --key-field this database's number
// field a Relationship matches by, --pair the group of paired DB Popup fields. False (said)
// when an option does not fit the field or names no field.
bool ApplyLinkFieldOptions(CliContext& context, Database& db, int slot,
                           const QCommandLineParser& parser);

// Deletes the linked databases' records that hang on the Link keys (LinkKeysOf) of records
// just deleted from `db`, each linked database opened, checked (Delete Records) and saved as
// the command's own. False when one could not be reached or saved (said).
bool DeleteLinkedRecordsOf(CliContext& context, const Database& db,
                           const std::vector<LinkKeys>& keys);

// The parent record a new record is added under: `PARENT.PDB:RECORD:FIELD`.
class LinkedParent {
 public:
  // Opens the parent (its lock held until saved) and checks that its FIELD links to `child`;
  // nothing, with the problem reported and `code` set, otherwise.
  static std::unique_ptr<LinkedParent> Open(CliContext& context, const QString& spec,
                                            const Database& child, int& code);
  // Gives the parent record a link key when it has none (saving the parent), then puts the key
  // into the new record's values. False when the parent could not be saved.
  bool Attach(CliContext& context, const Database& child, RecordValues& values);

 private:
  std::unique_ptr<Database> parent_;
  int slot_ = -1;
  std::uint32_t record_ = 0;
  int child_field_ = -1;
};

}  // namespace qv::cli
