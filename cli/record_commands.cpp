// qvdb add, set, delete.

#include <algorithm>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/link_commands.h"
#include "cli/record_edit.h"
#include "engine/format.h"
#include "engine/text.h"
#include "security/protected_open.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv::cli {

namespace {

// Malformed arguments are bad usage, told before the database is opened (and a password asked).
int CheckArguments(CliContext& context, const QStringList& numbers,
                   const QStringList& assignments) {
  for (const QString& text : numbers) {
    bool ok = false;
    if (text.toUInt(&ok) == 0 || !ok)
      return context.UsageError("a record number counts from 1, not '" + text.toStdString() + "'");
  }
  for (const QString& assignment : assignments)
    if (assignment.indexOf('=') <= 0)
      return context.UsageError("expected FIELD=VALUE, not '" + assignment.left(40).toStdString() +
                                "'");
  return kOk;
}

constexpr const char* kAddUsage = "add FILE FIELD=VALUE ... [--linked-to PARENT.PDB:RECORD:FIELD]";

int Add(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("FIELD=VALUE", "Values of the new record.");
  parser.addOption({"linked-to", "Add the record under this record of the parent database.",
                    "PARENT.PDB:RECORD:FIELD"});
  if (!context.Parse(parser, arguments, 1, kAddUsage)) return kUsage;
  QStringList args = parser.positionalArguments();
  if (int bad = CheckArguments(context, {}, args.mid(1))) return bad;
  auto db = context.Open(args.takeFirst().toStdString());
  if (!db) return kFailed;
  std::unique_ptr<LinkedParent> parent;
  if (parser.isSet("linked-to")) {
    int code = kFailed;
    parent = LinkedParent::Open(context, parser.value("linked-to"), *db, code);
    if (!parent) return code;
  }
  RecordValues values = DefaultValues(*db);
  if (db->definition().record_header_on()) {
    RandomBytes random;
    RecordHeader header = NewRecordHeader(random);
    values.prefix.assign(header.bytes.begin(), header.bytes.end());
  }
  if (int code = ApplyAssignments(context, *db, args, kNewRecord, values)) return code;
  if (parent && !parent->Attach(context, *db, values)) return kFailed;
  // Stored as the record editor stores it: the encryption mode applies before the save.
  auto number = StoreEditedRecord(context, *db, values, kNewRecord);
  if (!number) return kFailed;
  if (!context.Save(*db)) return kFailed;
  std::cout << "added record " << *number + 1 << '\n';
  return kOk;
}

int Set(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("RECORD", "Record number, from 1.");
  parser.addPositionalArgument("FIELD=VALUE", "New values.");
  if (!context.Parse(parser, arguments, 3, "set FILE RECORD FIELD=VALUE ...")) return kUsage;
  QStringList args = parser.positionalArguments();
  if (int bad = CheckArguments(context, {args.at(1)}, args.mid(2))) return bad;
  auto db = context.Open(args.takeFirst().toStdString());
  if (!db) return kFailed;
  int code = kFailed;
  auto number = RecordNumber(context, *db, args.takeFirst(), code);
  if (!number) return code;
  if (!DecipherOnRecordOpen(*db, *number, context.ui)) return kFailed;
  RecordValues values = DecodeRecord(db->records[*number].data);
  if (int bad = ApplyAssignments(context, *db, args, *number, values)) return bad;
  if (!StoreEditedRecord(context, *db, values, *number)) return kFailed;
  return context.Save(*db) ? kOk : kFailed;
}

int Delete(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("RECORD", "Record numbers, from 1.");
  parser.addOption({"linked", "Delete the records of linked databases that belong to them too."});
  if (!context.Parse(parser, arguments, 2, "delete FILE RECORD ... [--linked]")) return kUsage;
  QStringList args = parser.positionalArguments();
  if (int bad = CheckArguments(context, args.mid(1), {})) return bad;
  auto db = context.Open(args.takeFirst().toStdString());
  if (!db) return kFailed;
  std::vector<std::uint32_t> numbers;
  for (const QString& arg : args) {
    int code = kFailed;
    auto number = RecordNumber(context, *db, arg, code);
    if (!number) return code;
    numbers.push_back(*number);
  }
  // Taken before the records go; the parent is saved first, so a failure further on can leave
  // records without a parent but never a parent without its records.
  std::vector<LinkKeys> linked;
  if (parser.isSet("linked")) linked = LinkKeysOf(*db, numbers);
  if (!DeleteEditedRecords(context, *db, numbers)) return kFailed;
  if (!context.Save(*db)) return kFailed;
  return DeleteLinkedRecordsOf(context, *db, linked) ? kOk : kFailed;
}

}  // namespace

std::vector<Command> RecordCommands() {
  return {
      {"add", kAddUsage, Add,
       "Adds a record; fields not named keep their defaults. Values are typed as in the record "
       "editor (dates and times in --date-format and --time-format). With --linked-to the record "
       "belongs to that record of the parent database, as one added through its Link field.",
       "add Stock.PDB \"Item=Bolt, M4\" Qty=250 Bought=05/03/2024"},
      {"set", "set FILE RECORD FIELD=VALUE ...", Set,
       "Changes values of one record, numbered from 1 as list --numbers shows them.",
       "set Stock.PDB 3 Qty=240"},
      {"delete", "delete FILE RECORD ... [--linked]", Delete,
       "Deletes records, numbered from 1 as list --numbers shows them; with --linked also the "
       "records of linked databases that belong to them.",
       "delete Stock.PDB 3 7"},
  };
}

}  // namespace qv::cli
