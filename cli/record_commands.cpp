// qvdb add, set, delete.

#include <algorithm>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/record_edit.h"
#include "engine/format.h"
#include "engine/text.h"
#include "security/protected_open.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv::cli {

namespace {

// Record numbers on the command line count from 1, as `qvdb list --numbers` shows them.
std::optional<std::uint32_t> RecordNumber(const Database& db, const QString& text) {
  bool ok = false;
  uint n = text.toUInt(&ok);
  if (!ok || n == 0 || n > db.count()) return std::nullopt;
  return n - 1;
}

int Add(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("FIELD=VALUE", "Values of the new record.");
  if (!context.Parse(parser, arguments, 1, "add FILE FIELD=VALUE ...")) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.takeFirst().toStdString());
  if (!db) return kFailed;
  RecordValues values = DefaultValues(*db);
  if (db->definition().record_header_on()) {
    RandomBytes random;
    RecordHeader header = NewRecordHeader(random);
    values.prefix.assign(header.bytes.begin(), header.bytes.end());
  }
  if (!ApplyAssignments(context, *db, args, kNewRecord, values)) return kFailed;
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
  if (!context.Parse(parser, arguments, 2, "set FILE RECORD FIELD=VALUE ...")) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.takeFirst().toStdString());
  if (!db) return kFailed;
  auto number = RecordNumber(*db, args.front());
  if (!number) {
    context.Error("no record " + args.front().toStdString() + " (the database holds " +
                  std::to_string(db->count()) + ")");
    return kFailed;
  }
  args.removeFirst();
  if (!DecipherOnRecordOpen(*db, *number, context.ui)) return kFailed;
  RecordValues values = DecodeRecord(db->records[*number].data);
  if (!ApplyAssignments(context, *db, args, *number, values)) return kFailed;
  if (!StoreEditedRecord(context, *db, values, *number)) return kFailed;
  return context.Save(*db) ? kOk : kFailed;
}

int Delete(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("RECORD", "Record numbers, from 1.");
  if (!context.Parse(parser, arguments, 2, "delete FILE RECORD ...")) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.takeFirst().toStdString());
  if (!db) return kFailed;
  std::vector<std::uint32_t> numbers;
  for (const QString& arg : args) {
    auto number = RecordNumber(*db, arg);
    if (!number) {
      context.Error("no record " + arg.toStdString());
      return kFailed;
    }
    numbers.push_back(*number);
  }
  if (!DeleteEditedRecords(context, *db, numbers)) return kFailed;
  return context.Save(*db) ? kOk : kFailed;
}

}  // namespace

std::vector<Command> RecordCommands() {
  return {
      {"add", "add FILE FIELD=VALUE ...", Add},
      {"set", "set FILE RECORD FIELD=VALUE ...", Set},
      {"delete", "delete FILE RECORD ...", Delete},
  };
}

}  // namespace qv::cli
