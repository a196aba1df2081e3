// qvdb field: list, add, set, move and delete the fields of a database.

#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/link_commands.h"
#include "cli/output.h"
#include "engine/field_settings.h"
#include "engine/text.h"
#include "processing/field_edit.h"
#include "processing/formula.h"
#include "processing/formula_builder.h"

namespace qv::cli {

namespace {

constexpr const char* kUsageLine =
    "field FILE list | add NAME:TYPE[:LENGTH] [--at N] [--popup ITEM ...] [--default VALUE] "
    "[--formula EXPR --result-kind K] [--link-to DBNAME [--link-field NAME] [--key-field NAME] "
    "[--pair N]] [--plugin NAME] | set FIELD [--name NEW] "
    "[--type TYPE] [--length N] [--popup ITEM ...] [--default VALUE] [--formula EXPR] [--force] | "
    "move FIELD N | delete FIELD [--force]";

constexpr const char* kResultKinds[] = {"decimal",  "integer",  "time",    "date",
                                        "decimal3", "decimal2", "decimal1"};

std::string Utf8(std::string_view cp1252) {
  return Cp1252ToUtf8(cp1252);
}

// A field named on the command line: its name, or its position in display order from 1.
std::optional<int> FindFieldArgument(const Database& db, const QString& text) {
  bool number = false;
  uint n = text.toUInt(&number);
  auto used = UsedFieldsInDisplayOrder(db.definition());
  if (number) {
    if (n >= 1 && n <= used.size()) return used[n - 1];
    return std::nullopt;
  }
  return db.definition().FindField(Utf8ToCp1252(text.toStdString()));
}

std::optional<int> ResultKind(const QString& text) {
  bool number = false;
  int n = text.toInt(&number);
  if (number) return n >= 0 && n <= 6 ? std::optional<int>(n) : std::nullopt;
  for (int k = 0; k < 7; ++k)
    if (text.compare(kResultKinds[k], Qt::CaseInsensitive) == 0) return k;
  return std::nullopt;
}

std::string SettingsText(const Database& db, int slot, const FormatOptions& options) {
  ConstFieldDefinition f = db.definition().field(slot);
  std::vector<std::string> parts;
  const FieldRecord& items = db.schema.fields[static_cast<std::size_t>(slot)];
  if (f.type() == kPopUp) {
    std::string list;
    for (const std::string& t : items.texts)
      if (!t.empty()) list += (list.empty() ? "" : ", ") + Utf8(t);
    parts.push_back("items: " + list);
  }
  std::string preset = DefaultText(db, slot, options);
  if (!preset.empty()) parts.push_back("default: " + Utf8(preset));
  if (f.type() == kUnique && UniqueStart(f) > 0)
    parts.push_back("from " + std::to_string(UniqueStart(f)));
  if (f.type() == kCalculated) {
    int kind = static_cast<std::int8_t>(f.bytes()[formula::kResultKind]);
    parts.push_back("formula: " + Utf8(FormulaDisplayText(db.definition(), slot)) + " (" +
                    (kind >= 0 && kind <= 6 ? kResultKinds[kind] : "?") + ")");
  }
  if (f.type() == kLink || f.type() == kLinked || f.type() == kDbPopup ||
      f.type() == kRelationship)
    parts.push_back("link to: " + Utf8(LinkTarget(f)));
  if (f.type() == kExternal) parts.push_back("plug-in: " + Utf8(PluginName(f)));
  if (f.encrypted()) parts.push_back("encrypted");
  std::string out;
  for (const std::string& p : parts) out += (out.empty() ? "" : "; ") + p;
  return out;
}

int ListFields(CliContext& context, Database& db) {
  Table table;
  table.headers = {"Position", "Name", "Type", "Length", "Width", "Settings"};
  int position = 0;
  for (int slot : UsedFieldsInDisplayOrder(db.definition())) {
    ConstFieldDefinition f = db.definition().field(slot);
    table.rows.push_back({std::to_string(++position), Utf8(f.name()),
                          std::string(FieldTypeName(f.type())), std::to_string(f.length()),
                          std::to_string(f.width()), SettingsText(db, slot, context.options())});
  }
  WriteTable(table, TableFormat::Text, std::cout);
  return kOk;
}

// The per-type settings shared by add and set; false with the problem reported.
bool ApplySettings(CliContext& context, Database& db, int slot, const QCommandLineParser& parser) {
  FieldDefinition f = db.definition().field(slot);
  const unsigned type = f.type();
  auto refuse = [&](const std::string& text) {
    context.Error(text);
    return false;
  };
  if (parser.isSet("popup")) {
    if (type != kPopUp) return refuse("--popup is for Pop-Up fields");
    std::vector<std::string> items;
    for (const QString& item : parser.values("popup")) {
      std::string text = Utf8ToCp1252(item.toStdString());
      if (text.empty() || text.size() > 13)
        return refuse("a pop-up item has 1 to 13 characters: '" + item.toStdString() + "'");
      items.push_back(text);
    }
    SetPopupItems(db, slot, items);
  }
  if (parser.isSet("link-to")) {
    if (type != kLink && type != kLinked && type != kDbPopup && type != kRelationship)
      return refuse("--link-to is for Link, Linked, DB Popup and Relationship fields");
    SetLinkTarget(f, Utf8ToCp1252(parser.value("link-to").toStdString()));
  }
  if (!ApplyLinkFieldOptions(context, db, slot, parser)) return false;
  if (parser.isSet("plugin")) {
    std::string name = Utf8ToCp1252(parser.value("plugin").toStdString());
    if (type != kExternal) return refuse("--plugin is for External fields");
    if (name.empty() || name.size() >= field_settings::kPluginNameSize ||
        name.find_first_of("/\\") != std::string::npos)
      return refuse("a plug-in name has 1 to 19 characters and no path separator");
    SetPluginName(f, name);
  }
  if (parser.isSet("result-kind")) {
    auto kind = ResultKind(parser.value("result-kind"));
    if (type != kCalculated) return refuse("--result-kind is for Calculated fields");
    if (!kind)
      return refuse(
          "a result kind is decimal, integer, time, date, decimal3, decimal2 or decimal1");
    f.bytes()[formula::kResultKind] = static_cast<std::uint8_t>(*kind);
  }
  if (parser.isSet("formula")) {
    if (type != kCalculated) return refuse("--formula is for Calculated fields");
    if (!BuildFormula(db.definition(), slot, Utf8ToCp1252(parser.value("formula").toStdString()),
                      context.prompter))
      return false;
  }
  if (parser.isSet("default")) {
    std::string problem = SetDefaultText(
        db, slot, Utf8ToCp1252(parser.value("default").toStdString()), context.options());
    if (!problem.empty()) return refuse(Utf8(problem));
  }
  return true;
}

// Reports what a change would cost; true when it may go ahead.
bool Consented(CliContext& context, const FieldChangeImpact& impact, const std::string& name,
               bool force) {
  if (!impact.refusal.empty()) {
    context.Error(Utf8(impact.refusal));
    return false;
  }
  std::string text = Utf8(impact.Describe(name));
  if (!text.empty()) std::cerr << text;
  if (!impact.NeedsConsent() || force) return true;
  context.Error("nothing was changed (use --force to make the change anyway)");
  return false;
}

int AddCommand(CliContext& context, Database& db, const QCommandLineParser& parser,
               const QString& spec) {
  QStringList parts = spec.split(':');
  if (parts.size() < 2 || parts.size() > 3) {
    context.Error("a field is NAME:TYPE[:LENGTH], not '" + spec.toStdString() + "'");
    return kUsage;
  }
  auto type = FieldTypeByName(parts[1].toStdString());
  if (!type || *type == kNotUsed) {
    context.Error("unknown field type '" + parts[1].toStdString() + "'");
    return kUsage;
  }
  unsigned length = 40;
  if (parts.size() == 3) {
    bool ok = false;
    length = parts[2].toUInt(&ok);
    if (!ok) length = 0;
  }
  int position = kFieldSlots;
  if (parser.isSet("at")) {
    bool ok = false;
    position = parser.value("at").toInt(&ok) - 1;
    if (!ok || position < 0) {
      context.Error("--at takes a position from 1");
      return kUsage;
    }
  }
  std::string problem;
  auto slot = AddField(db, Utf8ToCp1252(parts[0].toStdString()), *type, length, position, problem);
  if (!slot) {
    context.Error(Utf8(problem));
    return kFailed;
  }
  if (!ApplySettings(context, db, *slot, parser)) return kFailed;
  RecalculateAll(db, context.prompter);
  return kOk;
}

int SetCommand(CliContext& context, Database& db, const QCommandLineParser& parser, int slot) {
  FieldDefinition f = db.definition().field(slot);
  const std::string old_name = f.name();
  if (parser.isSet("name")) {
    std::string problem = RenameField(db, slot, Utf8ToCp1252(parser.value("name").toStdString()));
    if (!problem.empty()) {
      context.Error(Utf8(problem));
      return kFailed;
    }
  }
  if (parser.isSet("type") || parser.isSet("length")) {
    FieldType type = static_cast<FieldType>(f.type());
    if (parser.isSet("type")) {
      auto named = FieldTypeByName(parser.value("type").toStdString());
      if (!named || *named == kNotUsed) {
        context.Error("unknown field type '" + parser.value("type").toStdString() + "'");
        return kUsage;
      }
      type = *named;
    }
    unsigned length = 0;
    if (parser.isSet("length")) {
      bool ok = false;
      length = parser.value("length").toUInt(&ok);
      if (!ok || length == 0 || length > 2000) {
        context.Error("--length is 1 to 2000");
        return kUsage;
      }
    }
    auto impact = AssessTypeChange(db, slot, type, length, context.options());
    if (!Consented(context, impact, old_name, parser.isSet("force"))) return kFailed;
    ChangeFieldType(db, slot, type, length, context.options(), context.prompter);
  }
  if (!ApplySettings(context, db, slot, parser)) return kFailed;
  RecalculateAll(db, context.prompter);
  return kOk;
}

int Field(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("ACTION", "list, add, set, move or delete.");
  parser.addOption({"at", "Position of the new field, from 1.", "N"});
  parser.addOption({"popup", "A pop-up item; repeat for more.", "item"});
  parser.addOption({"default", "Default value of new records.", "value"});
  parser.addOption({"formula", "Formula of a Calculated field.", "expr"});
  parser.addOption(
      {"result-kind", "decimal, integer, time, date, decimal3, decimal2, decimal1.", "kind"});
  parser.addOption(
      {"link-to", "Database a Link, Linked, DB Popup or Relationship field reaches.", "name"});
  AddLinkFieldOptions(parser);
  parser.addOption({"plugin", "Plug-in of an External field.", "name"});
  parser.addOption({"name", "New name.", "name"});
  parser.addOption({"type", "New type.", "type"});
  parser.addOption({"length", "New length.", "n"});
  parser.addOption({"force", "Make a change that loses values."});
  if (!context.Parse(parser, arguments, 2, kUsageLine)) return kUsage;
  QStringList args = parser.positionalArguments();
  const std::string path = args.takeFirst().toStdString();
  const QString action = args.takeFirst();
  const int wanted = action == "list"                                           ? 0
                     : action == "add" || action == "set" || action == "delete" ? 1
                     : action == "move"                                         ? 2
                                                                                : -1;
  if (wanted < 0 || args.size() != wanted) {
    return context.UsageError("");
  }
  auto db = context.Open(path, action.toStdString());
  if (!db) return kFailed;
  if (action == "list") return ListFields(context, *db);
  int result = kOk;
  if (action == "add") {
    result = AddCommand(context, *db, parser, args[0]);
  } else {
    auto slot = FindFieldArgument(*db, args[0]);
    if (!slot) {
      context.Error("no field '" + args[0].toStdString() + "'");
      return kFailed;
    }
    if (action == "set") {
      result = SetCommand(context, *db, parser, *slot);
    } else if (action == "move") {
      bool ok = false;
      int position = args[1].toInt(&ok);
      if (!ok || position < 1) {
        context.Error("a position counts from 1");
        return kUsage;
      }
      MoveField(*db, *slot, position - 1);
    } else {
      auto impact = AssessDelete(*db, *slot);
      if (!Consented(context, impact, db->definition().field(*slot).name(), parser.isSet("force")))
        return kFailed;
      DeleteField(*db, *slot, context.prompter);
    }
  }
  if (result != kOk) return result;
  return context.Save(*db) ? kOk : kFailed;
}

}  // namespace

std::vector<Command> FieldCommands() {
  return {{"field", kUsageLine, Field,
           "Lists, adds, changes, moves or deletes fields; a change that would lose values is "
           "refused unless --force is given. Positions count from 1.",
           "field Stock.PDB add Colour:Pop-Up --at 2 --popup red --popup blue"}};
}

}  // namespace qv::cli
