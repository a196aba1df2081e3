// qvdb sort, filter, calc, recalc.

#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/conditions.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/filter_dialog.h"
#include "processing/formula.h"
#include "processing/formula_builder.h"
#include "processing/numeric.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "security/enciphered.h"

namespace qv::cli {

namespace {

std::optional<int> FieldByName(CliContext& context, const Database& db, const QString& name) {
  auto slot = db.definition().FindField(Utf8ToCp1252(name.toStdString()));
  if (!slot) context.Error("no field named '" + name.toStdString() + "'");
  return slot;
}

std::string NameOf(const Database& db, int slot) {
  return Cp1252ToUtf8(db.definition().field(slot).name());
}

int Sort(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("FIELD[:reverse]", "Up to three sort keys, primary first.");
  const char* usage = "sort FILE FIELD[:reverse] [FIELD[:reverse] [FIELD[:reverse]]]";
  if (!context.Parse(parser, arguments, 2, usage, 1 + kSortKeys)) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.takeFirst().toStdString(), {}, false);  // nothing reads the list
  if (!db) return kFailed;
  SortKey keys[kSortKeys];
  for (int k = 0; k < args.size(); ++k) {
    QString name = args[k];
    bool forward = true;
    qsizetype colon = name.lastIndexOf(':');
    if (colon > 0) {
      QString direction = name.mid(colon + 1).toLower();
      if (direction == "reverse" || direction == "forward") {
        forward = direction == "forward";
        name = name.left(colon);
      }
    }
    auto slot = FieldByName(context, *db, name);
    if (!slot) return kFailed;
    if (!CanSortOnField(*db, *slot, true, context.prompter)) return kFailed;
    keys[k] = SortKey{*slot, forward};
  }
  for (int k = 0; k < kSortKeys; ++k) db->definition().set_sort_key(k, keys[k]);
  db->changed = true;
  ResortAndRecalculate(*db, context.prompter);
  return context.Save(*db) ? kOk : kFailed;
}

// --range takes two values, which may look like options ("-5"): they are taken out first.
bool TakeRange(QStringList& arguments, std::optional<std::pair<QString, QString>>& range) {
  qsizetype at = arguments.indexOf("--range");
  if (at < 0) return true;
  if (at + 2 >= arguments.size()) return false;
  range = std::make_pair(arguments[at + 1], arguments[at + 2]);
  if (range->first.startsWith("--") || range->second.startsWith("--")) return false;
  arguments.remove(at, 3);
  return arguments.indexOf("--range") < 0;
}

std::string Describe(const Database& db, int i, const FilterConditionControls& k,
                     const Condition& c) {
  if (!c.in_use) return "off";
  std::string out;
  if (c.group & 0x02) out += ") ";
  if (i > 0) out += (c.join & 0x02) ? "OR " : "AND ";
  if (c.join & 0x01) out += "NOT ";
  if (c.group & 0x01) out += "( ";
  if (c.field >= kFieldSlots || !db.definition().field(c.field).used())
    return out + "field " + std::to_string(c.field + 1) + " (not a field: never holds)";
  ConstFieldDefinition field = db.definition().field(c.field);
  out += NameOf(db, c.field) + " ";
  switch (WantedOption(field)) {
    case Want::Contains:
      return out + (k.must_contain.empty() ? std::string("is empty")
                                           : "contains \"" + Cp1252ToUtf8(k.must_contain) + "\"");
    case Want::Equals:
      return out + "equals \"" + Cp1252ToUtf8(std::string(CStringAt(c.first.data(), 14))) + "\"";
    case Want::Range:
      if (k.upper.empty()) return out + (k.lower.empty() ? "any value" : "from " + k.lower + " on");
      return out + (k.lower.empty() ? "up to " + k.upper : "from " + k.lower + " to " + k.upper);
    case Want::Checked:
      return out + (c.lower ? "is checked" : "is not checked");
    case Want::Nothing:
      return out + "(always holds)";
  }
  return out;
}

int FilterShow(CliContext& context, Database& db) {
  FilterDialogControls controls = FilterControlsFromDatabase(db, context.options());
  for (int i = 0; i < kConditions; ++i)
    std::cout << i + 1 << ": "
              << Describe(db, i, controls.conditions[i], db.definition().condition(i)) << '\n';
  std::cout << db.visible.size() << " of " << db.count() << " records pass\n";
  return kOk;
}

int FilterClear(CliContext& context, Database& db, const QStringList& rest) {
  int first = 0, last = kConditions - 1;
  if (!rest.isEmpty()) {
    bool ok = false;
    int n = rest.front().toInt(&ok);
    if (!ok || n < 1 || n > kConditions) {
      return context.UsageError("a condition number is 1 to 6");
    }
    first = last = n - 1;
  }
  for (int i = first; i <= last; ++i) db.definition().set_condition(i, BlankCondition());
  db.changed = true;
  RebuildFilteredList(db);
  return context.Save(db) ? kOk : kFailed;
}

int FilterSet(CliContext& context, Database& db, const QCommandLineParser& parser,
              const QStringList& rest, const std::optional<std::pair<QString, QString>>& range) {
  bool ok = false;
  int n = rest.isEmpty() ? 0 : rest.front().toInt(&ok);
  if (!ok || n < 1 || n > kConditions) {
    return context.UsageError("a condition number is 1 to 6");
  }
  if (!parser.isSet("field")) {
    return context.UsageError("filter set needs --field FIELD");
  }
  auto slot = FieldByName(context, db, parser.value("field"));
  if (!slot) return kFailed;
  ConstFieldDefinition field = db.definition().field(*slot);
  Want want = WantedOption(field);
  int given = int{parser.isSet("contains")} + int{parser.isSet("equals")} + int{range.has_value()} +
              int{parser.isSet("checked")};
  bool matches = (want == Want::Contains && parser.isSet("contains")) ||
                 (want == Want::Equals && parser.isSet("equals")) ||
                 (want == Want::Range && range) ||
                 (want == Want::Checked && parser.isSet("checked")) || want == Want::Nothing;
  if (given > 1 || !matches || (want == Want::Nothing && given > 0)) {
    return context.UsageError(NameOf(db, *slot) + " is a " +
                              std::string(FieldTypeName(field.type())) + " field: give " +
                              WantText(want));
  }
  FilterConditionControls controls;
  controls.enabled = true;
  controls.field = *slot;
  const TextPlace place{"condition", static_cast<std::size_t>(n), field.name()};
  controls.must_contain = context.Stored(
      parser.isSet("contains") ? parser.value("contains") : parser.value("equals"), place);
  if (range) {
    controls.lower = context.Stored(range->first, place);
    controls.upper = context.Stored(range->second, place);
  }
  if (parser.isSet("checked")) {
    QString state = parser.value("checked");
    if (state != "0" && state != "1") {
      return context.UsageError("--checked takes 0 or 1");
    }
    controls.checked = state == "1";
  }
  Condition c = db.definition().condition(n - 1);
  std::string problem;
  if (!ConditionFromTexts(db, controls, context.options(), c, problem)) {
    context.Error(Cp1252ToUtf8(problem));
    return kFailed;
  }
  c.in_use = 1;
  c.join =
      static_cast<std::uint8_t>((parser.isSet("not") ? 0x01 : 0) | (parser.isSet("or") ? 0x02 : 0));
  c.group = static_cast<std::uint8_t>((parser.isSet("open") ? 0x01 : 0) |
                                      (parser.isSet("close") ? 0x02 : 0));
  db.definition().set_condition(n - 1, c);
  db.changed = true;
  RebuildFilteredList(db);
  return context.Save(db) ? kOk : kFailed;
}

int Filter(CliContext& context, const QStringList& arguments) {
  const char* usage =
      "filter FILE set N --field F (--contains TEXT | --range LOW HIGH | --checked 0|1 | "
      "--equals TEXT) [--not] [--or] [--open] [--close] | filter FILE clear [N] | filter FILE show";
  QStringList args = arguments;
  std::optional<std::pair<QString, QString>> range;
  if (!TakeRange(args, range)) {
    context.usage = usage;
    return context.UsageError("--range needs LOW and HIGH, once");
  }
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("ACTION", "set, clear or show.");
  parser.addOption({"field", "The field the condition tests.", "field"});
  parser.addOption(
      {"contains", "Text the value must contain (empty: the value must be empty).", "text"});
  parser.addOption({"equals", "The Pop-Up value to match.", "text"});
  parser.addOption({"checked", "The Check-Box state wanted.", "state"});
  parser.addOption({"not", "Invert the condition."});
  parser.addOption({"or", "Join the condition to what precedes it by OR."});
  parser.addOption({"open", "A group \"(\" opens at this condition."});
  parser.addOption({"close", "A group \")\" closes before this condition."});
  if (!context.Parse(parser, args, 2, usage)) return kUsage;
  QStringList rest = parser.positionalArguments();
  std::string path = rest.takeFirst().toStdString();
  QString action = rest.takeFirst();
  const qsizetype most = action == "show" ? 0 : 1;  // clear [N], set N
  if ((action != "set" && action != "clear" && action != "show") || rest.size() > most ||
      (action == "set" && rest.isEmpty()))
    return context.UsageError(
        rest.size() > most ? "unexpected argument '" + rest.at(most).toStdString() + "'" : "");
  auto db = context.Open(path, {}, action == "show");  // set and clear filter again
  if (!db) return kFailed;
  if (action == "show") return FilterShow(context, *db);
  if (action == "clear") return FilterClear(context, *db, rest);
  return FilterSet(context, *db, parser, rest, range);
}

// Recalculation leaves enciphered records as they are.
void ReportUntouched(const Database& db) {
  if (std::size_t n = CountEnciphered(db))
    std::cerr << "Note: " << n << " enciphered record" << (n == 1 ? " was" : "s were")
              << " not recalculated (no password given deciphers " << (n == 1 ? "it" : "them")
              << ")\n";
}

std::optional<int> FreeSlot(const Database& db) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (!db.definition().field(slot).used()) return slot;
  return std::nullopt;
}

int Calc(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption({"field", "The Calculated field to define or redefine.", "name"});
  parser.addOption({"formula", "The formula, for example \"(F1 + F2) * 2\".", "expr"});
  parser.addOption({"result-kind",
                    "0 decimal (4 places), 1 integer, 2 time, 3 date, "
                    "4 to 6: 3 to 1 decimal places.",
                    "kind"});
  const char* usage = "calc FILE --field NAME --formula \"EXPR\" [--result-kind K]";
  if (!context.Parse(parser, arguments, 1, usage)) return kUsage;
  if (!parser.isSet("field") || !parser.isSet("formula")) {
    return context.UsageError("");
  }
  int kind = -1;
  if (parser.isSet("result-kind")) {
    bool ok = false;
    kind = parser.value("result-kind").toInt(&ok);
    if (!ok || kind < 0 || kind > 6) {
      return context.UsageError("the result kind is 0 to 6");
    }
  }
  std::string name = context.Stored(parser.value("field"), {nullptr, 0, "field name"});
  if (name.empty() || name.size() > 19) {
    return context.UsageError("a field name is 1 to 19 characters");
  }
  auto db = context.Open(parser.positionalArguments().at(0).toStdString(), {}, false);
  if (!db) return kFailed;
  DatabaseDefinition& definition = db->definition();
  auto slot = definition.FindField(name);
  if (slot && definition.field(*slot).type() != kCalculated) {
    context.Error(NameOf(*db, *slot) + " is a " +
                  std::string(FieldTypeName(definition.field(*slot).type())) +
                  " field, not a Calculated one");
    return kFailed;
  }
  if (!slot) {
    slot = FreeSlot(*db);
    if (!slot) {
      context.Error("the database holds 100 fields already");
      return kFailed;
    }
    FieldDefinition f = definition.field(*slot);
    f.set_type(kCalculated);
    f.set_name(name);
    if (kind < 0) kind = 0;
  }
  std::string formula = Utf8ToCp1252(parser.value("formula").toStdString());
  if (!BuildFormula(definition, *slot, formula, context.prompter)) return kFailed;
  if (kind >= 0)
    definition.field(*slot).bytes()[formula::kResultKind] = static_cast<std::uint8_t>(kind);
  db->changed = true;
  int pass = RecalculateFrom(*db, 0, context.prompter);
  RebuildFilteredList(*db);
  ReportUntouched(*db);
  std::cout << NameOf(*db, *slot) << " = " << Cp1252ToUtf8(FormulaDisplayText(definition, *slot))
            << '\n';
  if (!context.Save(*db)) return kFailed;
  if (pass != 0) context.Error("a record could not be read; the recalculation stopped there");
  return pass == 0 ? kOk : kFailed;
}

int Recalc(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  if (!context.Parse(parser, arguments, 1, "recalc FILE")) return kUsage;
  auto db = context.Open(parser.positionalArguments().at(0).toStdString(), {}, false);
  if (!db) return kFailed;
  int pass = RecalculateFrom(*db, 0, context.prompter);
  RebuildFilteredList(*db);
  ReportUntouched(*db);
  if (!context.Save(*db)) return kFailed;
  if (pass != 0) context.Error("a record could not be read; the recalculation stopped there");
  return pass == 0 ? kOk : kFailed;
}

}  // namespace

std::vector<Command> ProcessingCommands() {
  return {
      {"sort", "sort FILE FIELD[:reverse] [FIELD[:reverse] [FIELD[:reverse]]]", Sort,
       "Stores up to three sort keys in the database and sorts its records by them. To look at "
       "the records in another order without changing the file, use list --sort.",
       "sort Stock.PDB Place Qty:reverse"},
      {"filter",
       "filter FILE set N --field F (--contains TEXT | --range LOW HIGH | --checked 0|1 | "
       "--equals TEXT) [--not] [--or] [--open] [--close] | filter FILE clear [N] | "
       "filter FILE show",
       Filter,
       "Shows, sets or clears the six conditions of the database's stored filter. Reading "
       "commands cover the records that pass it unless given --all; to look at other records "
       "without changing the file, use list --where.",
       "filter Stock.PDB set 1 --field Qty --range 10 100"},
      {"calc", "calc FILE --field NAME --formula \"EXPR\" [--result-kind K]", Calc,
       "Defines or redefines a Calculated field by its formula and recalculates every record.",
       "calc Stock.PDB --field Value --formula \"Qty * Price\""},
      {"recalc", "recalc FILE", Recalc,
       "Recalculates the Calculated fields of every record and saves the database.",
       "recalc Stock.PDB"},
  };
}

}  // namespace qv::cli
