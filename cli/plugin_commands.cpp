// qvdb plugin: runs an External field's plug-in from scripts, as the field editor's Configure...
// and the record editor do.

#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "engine/field_settings.h"
#include "engine/text.h"
#include "exchange/external.h"
#include "platform/qt/qt_paths.h"
#include "processing/store.h"
#include "security/protected_open.h"

namespace qv::cli {

namespace {

constexpr const char* kPluginUsage =
    "plugin FILE FIELD configure | plugin FILE FIELD call EVENT RECORD";

// init, save and select, or their codes 32001 to 32003.
std::optional<int> EventCode(const QString& text) {
  const QStringList names = {"init", "save", "select"};
  if (qsizetype i = names.indexOf(text.toLower()); i >= 0)
    return kInitExternal + static_cast<int>(i);
  bool number = false;
  int code = text.toInt(&number);
  if (number && code >= kInitExternal && code <= kSelectExternal) return code;
  return std::nullopt;
}

// The External field named on the command line (by name, or by position from 1).
std::optional<int> ExternalField(CliContext& context, const Database& db, const QString& text) {
  bool number = false;
  uint n = text.toUInt(&number);
  auto used = UsedFieldsInDisplayOrder(db.definition());
  std::optional<int> slot =
      number ? (n >= 1 && n <= used.size() ? std::optional<int>(used[n - 1]) : std::nullopt)
             : db.definition().FindField(Utf8ToCp1252(text.toStdString()));
  if (!slot) {
    context.Error("no field named '" + text.toStdString() + "'");
  } else if (db.definition().field_type(*slot) != kExternal) {
    context.Error("'" + text.toStdString() + "' is not an External field");
    slot.reset();
  }
  return slot;
}

int Configure(CliContext& context, Database& db, int slot) {
  FieldDefinition field = db.definition().field(slot);
  const std::string name = PluginName(field);
  PluginSettings settings = GetPluginSettings(field);
  if (!ConfigureExternal({QtPaths().DataFolder()}, slot, name, db, settings, context.prompter))
    return kFailed;
  if (settings == GetPluginSettings(field)) {
    std::cout << "plug-in " << Cp1252ToUtf8(name) << " kept the settings of "
              << Cp1252ToUtf8(field.name()) << '\n';
    return kOk;
  }
  SetPluginSettings(field, settings);
  db.changed = true;
  if (!context.Save(db)) return kFailed;
  std::cout << "plug-in " << Cp1252ToUtf8(name) << " configured " << Cp1252ToUtf8(field.name())
            << '\n';
  return kOk;
}

int Call(CliContext& context, Database& db, int slot, int event, const QString& record) {
  bool ok = false;
  uint n = record.toUInt(&ok);
  if (!ok || n == 0)
    return context.UsageError("a record number counts from 1, not '" + record.toStdString() + "'");
  if (n > db.count()) {
    context.Error("no record " + record.toStdString() + " (the database holds " +
                  std::to_string(db.count()) + ")");
    return kFailed;
  }
  const std::uint32_t number = n - 1;
  if (!DecipherOnRecordOpen(db, number, context.ui)) return kFailed;
  RecordValues values = DecodeRecord(db.records[number].data);
  const std::string name = Cp1252ToUtf8(PluginName(db.definition().field(slot)));
  if (!CallExternal({QtPaths().DataFolder()}, slot, event, db, static_cast<std::uint16_t>(number),
                    values)) {
    std::cout << "plug-in " << name << " changed nothing in record " << n << '\n';
    return kOk;
  }
  auto stored = StoreRecordSorted(db, values, number, true, context.prompter);
  if (!stored || !context.Save(db)) return kFailed;
  std::cout << "plug-in " << name << " changed record " << n;
  if (*stored != number) std::cout << " (now record " << *stored + 1 << ")";
  std::cout << '\n';
  return kOk;
}

int Plugin(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("FIELD", "The External field, by name or position from 1.");
  parser.addPositionalArgument("configure|call", "What to do.");
  parser.addPositionalArgument("EVENT", "init, save or select (32001 to 32003).");
  parser.addPositionalArgument("RECORD", "Record number, from 1.");
  if (!context.Parse(parser, arguments, 3, kPluginUsage, 5)) return kUsage;
  const QStringList args = parser.positionalArguments();
  const QString verb = args.at(2);
  std::optional<int> event;
  if (verb == "configure") {
    if (args.size() != 3) return context.UsageError("configure takes no further arguments");
  } else if (verb == "call") {
    if (args.size() != 5) return context.UsageError("call needs an EVENT and a RECORD");
    event = EventCode(args.at(3));
    if (!event)
      return context.UsageError("the event is init, save or select, not '" +
                                args.at(3).toStdString() + "'");
  } else {
    return context.UsageError("choose configure or call");
  }
  auto db = context.Open(args.at(0).toStdString(), verb.toStdString());
  if (!db) return kFailed;
  auto slot = ExternalField(context, *db, args.at(1));
  if (!slot) return kFailed;
  return event ? Call(context, *db, *slot, *event, args.at(4)) : Configure(context, *db, *slot);
}

}  // namespace

std::vector<Command> PluginCommands() {
  return {{"plugin", kPluginUsage, Plugin,
           "Runs an External field's plug-in: configure lets it edit the field's plug-in "
           "settings, as Configure... in the field editor does; call runs it on one record for "
           "the event init, save or select, as the record editor does, and stores what it "
           "changed. Plug-ins are lib<NAME>.so in the data folder's plugins/ or on the library "
           "path.",
           "plugin Stock.PDB Age call init 3"}};
}

}  // namespace qv::cli
