// qvdb link: the records of the linked database that belong to one record.

#include "cli/link_commands.h"

#include <iostream>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/record_selection.h"
#include "engine/container.h"
#include "engine/field_settings.h"
#include "engine/file_lock.h"
#include "engine/text.h"
#include "processing/json_export.h"
#include "processing/linked_database.h"
#include "processing/store.h"
#include "security/access.h"
#include "security/cipher_session.h"
#include "security/enciphered.h"
#include "security/protected_open.h"

namespace qv::cli {

namespace {

constexpr const char* kLinkUsage =
    "link FILE RECORD FIELD [--format text|tsv|csv|json|jsonl] [--raw] [--fields A,B,...] "
    "[--numbers]";

// A record number from 1 and a field of `db` that reaches other databases' records.
bool ParentPlace(CliContext& context, const Database& db, const QString& record,
                 const QString& field, std::uint32_t& number, int& slot) {
  bool ok = false;
  uint n = record.toUInt(&ok);
  if (!ok || n == 0 || n > db.count()) {
    context.Error("no record " + record.toStdString() + " (the database holds " +
                  std::to_string(db.count()) + ")");
    return false;
  }
  auto found = db.definition().FindField(Utf8ToCp1252(field.toStdString()));
  unsigned type = found ? db.definition().field_type(*found) : unsigned{kNotUsed};
  if (type != kLink && type != kRelationship) {
    context.Error(found ? "field '" + field.toStdString() + "' is not a Link or Relationship field"
                        : "no field named '" + field.toStdString() + "'");
    return false;
  }
  number = n - 1;
  slot = *found;
  return true;
}

int PrintRecords(CliContext& context, const QCommandLineParser& parser, const Database& db,
                 const std::vector<std::uint32_t>& records) {
  int code = kFailed;
  auto fields = SelectFields(context, db, parser, code);
  if (!fields) return code;
  const QString format = parser.value("format");
  if (format.startsWith("json")) {
    JsonOptions json{.typed = !parser.isSet("raw"), .lines = format == "jsonl"};
    std::cout << RecordsAsJson(db, records, *fields, json, context.options());
  } else {
    TableFormat table = format == "tsv"   ? TableFormat::Tsv
                        : format == "csv" ? TableFormat::Csv
                                          : TableFormat::Text;
    WriteTable(RecordTable(db, records, *fields, context.options(), parser.isSet("numbers")), table,
               std::cout);
  }
  context.ReportLeftOut(CountEnciphered(db, records));
  return kOk;
}

int Link(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file holding the link.");
  parser.addPositionalArgument("RECORD", "Record number, from 1.");
  parser.addPositionalArgument("FIELD", "The Link or Relationship field.");
  parser.addOption({"format", "text, tsv, csv, json or jsonl (JSON Lines).", "format", "text"});
  parser.addOption({"raw", "JSON: every value its display text, as a string."});
  parser.addOption({"fields", "Only these fields, in this order (names between commas).", "A,B"});
  parser.addOption({"numbers", "Show record numbers (text, tsv and csv)."});
  if (!context.Parse(parser, arguments, 3, kLinkUsage)) return kUsage;
  static const QStringList kFormats = {"text", "tsv", "csv", "json", "jsonl"};
  if (!kFormats.contains(parser.value("format")))
    return context.UsageError("unknown format '" + parser.value("format").toStdString() +
                              "' (text, tsv, csv, json or jsonl)");
  const QStringList args = parser.positionalArguments();
  auto db = context.Open(args.at(0).toStdString());
  if (!db) return kFailed;
  std::uint32_t number = 0;
  int slot = -1;
  if (!ParentPlace(context, *db, args.at(1), args.at(2), number, slot)) return kFailed;
  Database* open[] = {db.get()};
  LinkedOpen linked =
      OpenLinkedDatabase(*db, slot, number, open, context.prompter, LinkedAccess(context));
  if (!linked.db) return kFailed;
  int child_field = ChildKeyField(*db, slot, *linked.db);
  return PrintRecords(context, parser, *linked.db,
                      LinkedRecords(*linked.db, child_field, linked.request.key));
}

}  // namespace

void AddLinkFieldOptions(QCommandLineParser& parser) {
  parser.addOption({"link-field",
                    "The linked database's field: shown by a DB Popup, matched by a Link or "
                    "Relationship.",
                    "name"});
  parser.addOption({"key-field", "The number field a Relationship matches by.", "name"});
  parser.addOption(
      {"pair", "DB Popup fields with the same group (1-255) are filled together.", "n"});
}

bool ApplyLinkFieldOptions(CliContext& context, Database& db, int slot,
                           const QCommandLineParser& parser) {
  FieldDefinition f = db.definition().field(slot);
  const unsigned type = f.type();
  auto refuse = [&](const std::string& text) {
    context.Error(text);
    return false;
  };
  if (parser.isSet("key-field")) {
    if (type != kRelationship) return refuse("--key-field is for Relationship fields");
    auto key = db.definition().FindField(Utf8ToCp1252(parser.value("key-field").toStdString()));
    unsigned key_type = key ? db.definition().field_type(*key) : unsigned{kNotUsed};
    if (key_type != kInteger && key_type != kUnique)
      return refuse("--key-field names an Integer or Unique field of this database");
    f.bytes()[link_settings::kSourceField] = static_cast<std::uint8_t>(*key);
  }
  if (parser.isSet("pair")) {
    bool ok = false;
    uint group = parser.value("pair").toUInt(&ok);
    if (type != kDbPopup) return refuse("--pair is for DB Popup fields");
    if (!ok || group > 255) return refuse("a pair group is a number from 0 (none) to 255");
    f.bytes()[link_settings::kPairGroup] = static_cast<std::uint8_t>(group);
  }
  if (parser.isSet("link-field")) {
    if (type != kDbPopup && type != kLink && type != kRelationship)
      return refuse("--link-field is for DB Popup, Link and Relationship fields");
    // The name is looked up in the linked database's own schema, found as links find it.
    auto path = FindDatabaseByName(LinkTarget(f), db.path);
    Database other;
    SilentPrompter quiet;
    if (!path || !LoadDatabase(other, *path, quiet, LoadParts::Schema))
      return refuse(std::string(kLinkedNotPresent) + " (" + Cp1252ToUtf8(LinkTarget(f)) + ")");
    auto field =
        other.definition().FindField(Utf8ToCp1252(parser.value("link-field").toStdString()));
    if (!field)
      return refuse("no field named '" + parser.value("link-field").toStdString() + "' in '" +
                    Cp1252ToUtf8(other.header.Name()) + "'");
    f.bytes()[type == kDbPopup ? link_settings::kSourceField : link_settings::kOtherField] =
        static_cast<std::uint8_t>(*field);
  }
  return true;
}

bool DeleteLinkedRecordsOf(CliContext& context, const Database& db,
                           const std::vector<LinkKeys>& keys) {
  bool all = true;
  for (const LinkKeys& k : keys) {
    auto path = FindDatabaseByName(LinkTarget(db.definition().field(k.slot)), db.path);
    if (!path) {
      context.prompter.message(kLinkedNotPresent, kLinkedErrorCaption, Icon::Exclamation);
      all = false;
      continue;
    }
    // Opened as the command's own database: locked, and checked for Delete Records.
    auto child = context.Open(*path);
    if (!child) {
      all = false;
      continue;
    }
    int field = ChildKeyField(db, k.slot, *child);
    if (DeleteLinkedRecords(*child, field, k.keys, context.prompter) > 0 && !context.Save(*child))
      all = false;
  }
  return all;
}

LinkAccessCheck LinkedAccess(CliContext& context) {
  return [&context](Database& db) {
    if (CheckAccess(db.definition(), kOpenDatabase, true, context.ui) == 0) return false;
    if (!UnlockEncipheredDatabase(db, context.ui)) return false;
    if (CountEnciphered(db) > 0 && context.passwords.CanAsk()) DecipherForReading(db, context.ui);
    return true;
  };
}

std::unique_ptr<LinkedParent> LinkedParent::Open(CliContext& context, const QString& spec,
                                                 const Database& child, int& code) {
  code = kUsage;
  int last = spec.lastIndexOf(':');
  int middle = last > 0 ? spec.lastIndexOf(':', last - 1) : -1;
  if (middle <= 0 || last == middle + 1 || last == spec.size() - 1) {
    context.UsageError("--linked-to is PARENT.PDB:RECORD:FIELD, not '" + spec.toStdString() + "'");
    return nullptr;
  }
  code = kFailed;
  const std::string path = spec.left(middle).toStdString();
  auto result = std::make_unique<LinkedParent>();
  auto parent = std::make_unique<Database>();
  FileLock lock;
  LockForUpdate(lock, path, kLockPatience);
  if (!OpenProtectedDatabase(*parent, path, context.ui)) return nullptr;
  parent->lock = std::move(lock);
  if (CountEnciphered(*parent) > 0 && context.passwords.CanAsk())
    DecipherForReading(*parent, context.ui);
  PositionOpenedDatabase(*parent, context.prompter);
  if (!ParentPlace(context, *parent, spec.mid(middle + 1, last - middle - 1), spec.mid(last + 1),
                   result->record_, result->slot_))
    return nullptr;
  std::string target = LinkTarget(parent->definition().field(result->slot_));
  if (target != child.header.Name()) {
    context.Error("field '" + spec.mid(last + 1).toStdString() + "' links to '" +
                  Cp1252ToUtf8(target) + "', not to '" + Cp1252ToUtf8(child.header.Name()) + "'");
    return nullptr;
  }
  result->child_field_ = ChildKeyField(*parent, result->slot_, child);
  if (result->child_field_ < 0) {
    context.Error("'" + Cp1252ToUtf8(child.header.Name()) +
                  "' has no field that holds the key of '" + Cp1252ToUtf8(parent->header.Name()) +
                  "'");
    return nullptr;
  }
  result->parent_ = std::move(parent);
  return result;
}

bool LinkedParent::Attach(CliContext& context, const Database& child, RecordValues& values) {
  std::uint32_t key = EnsureLinkKey(*parent_, slot_, record_);
  if (key == 0) {
    context.Error("the parent record's key field is empty");
    return false;
  }
  // The parent's new key is stored before any record carries it.
  if (parent_->changed && !context.Save(*parent_)) return false;
  BelongToParent(child, child_field_, key, ParentShownText(*parent_, record_, context.options()),
                 values);
  return true;
}

std::vector<Command> LinkCommands() {
  return {
      {"link", kLinkUsage, Link,
       "Lists the records of the linked database that belong to one record, found through its "
       "Link (or Relationship) field; the output is that of list.",
       "link Projects.PDB 2 Tasks --format csv"},
  };
}

}  // namespace qv::cli
