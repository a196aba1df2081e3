// qvdb views, report, find.

#include <algorithm>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/record_selection.h"
#include "engine/text.h"
#include "processing/find.h"
#include "processing/report.h"
#include "processing/views.h"
#include "security/enciphered.h"

namespace qv::cli {

namespace {

// A view number on the command line, counting from 1; -1 when it is not a number.
int ViewNumber(const QString& text) {
  bool ok = false;
  int n = text.toInt(&ok);
  return ok && n > 0 ? n - 1 : -1;
}

void ListViews(const Database& db) {
  auto current = CurrentView(db);
  auto names = ViewNames(db);
  for (std::size_t v = 0; v < names.size(); ++v) {
    std::cout << v + 1 << '\t' << Cp1252ToUtf8(names[v]);
    if (current && *current == static_cast<int>(v)) std::cout << "\tcurrent";
    std::cout << '\n';
  }
}

int Views(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("ACTION", "list, new, copy N, delete N or apply N.");
  const char* usage = "views FILE list|new|copy N|delete N|apply N";
  if (!context.Parse(parser, arguments, 2, usage, 3)) return kUsage;
  QStringList args = parser.positionalArguments();
  const QString action = args.at(1);
  const bool numbered = action == "copy" || action == "delete" || action == "apply";
  if ((action != "list" && action != "new" && !numbered) || args.size() != (numbered ? 3 : 2))
    return context.UsageError(args.size() > (numbered ? 3 : 2)
                                  ? "unexpected argument '" + args.last().toStdString() + "'"
                                  : "");
  auto db = context.Open(args.at(0).toStdString(), action.toStdString());
  if (!db) return kFailed;
  // Every action works on the views page, which gives a database without views its default.
  EnsureDefaultView(*db);
  if (action == "list") {
    ListViews(*db);
    return kOk;
  }
  const int v = numbered ? ViewNumber(args.at(2)) : -1;
  if (numbered && (v < 0 || v >= ViewCount(*db))) {
    context.Error("no view " + args.at(2).toStdString() + " (the database has " +
                  std::to_string(ViewCount(*db)) + ")");
    return kFailed;
  }
  if (action == "new") {
    auto made = NewView(*db, context.prompter);
    if (!made) return kFailed;
    std::cout << "added view " << *made + 1 << '\n';
  } else if (action == "copy") {
    auto made = CopyView(*db, v);
    if (!made) {  // the program itself says nothing here; the command line must
      context.Error("no copy made: the database holds 20 views already");
      return kFailed;
    }
    std::cout << "added view " << *made + 1 << '\n';
  } else if (action == "delete") {
    if (!DeleteView(*db, v, context.prompter)) return kFailed;
  } else {
    ApplyView(*db, v, context.prompter);
    std::cout << "applied view " << v + 1 << ": " << db->visible.size() << " of " << db->count()
              << " records shown\n";
  }
  return context.Save(*db) ? kOk : kFailed;
}

int Report(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("FIELD", "Name of the field to report on.");
  parser.addOption({"all", "Every record, not only those that pass the stored filter."});
  if (!context.Parse(parser, arguments, 2, "report FILE FIELD [--all]")) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.at(0).toStdString());
  if (!db) return kFailed;
  ApplyAllOption(*db, parser);
  std::string field = Utf8ToCp1252(args.at(1).toStdString());
  auto slot = db->definition().FindField(field);
  auto text = RunReport(*db, slot ? *slot : -1, context.options(), context.prompter);
  if (!text) return kFailed;
  context.ReportLeftOut(CountEnciphered(*db));
  std::string out = Cp1252ToUtf8(*text);
  out.erase(std::remove(out.begin(), out.end(), '\r'), out.end());  // the report's CR LF as LF
  std::cout << out;
  return kOk;
}

void PrintMatch(CliContext& context, const Database& db, int position, int slot) {
  std::cout << position + 1 << '\t' << Cp1252ToUtf8(db.definition().field(slot).name()) << '\t'
            << Cp1252ToUtf8(
                   RecordValueText(db, static_cast<std::uint32_t>(position), slot, context.options()))
            << '\n';
}

int FindFirst(CliContext& context, const Database& db, const FindSettings& settings, int from) {
  auto match = FindRecord(db, settings, from, 0, true, context.options(), context.prompter);
  if (!match) return kFailed;
  PrintMatch(context, db, match->position, match->slot);
  return kOk;
}

// Every match from `from` on, continuing as Find Again does; the not-found message only when
// there is no match at all.
int FindAll(CliContext& context, const Database& db, const FindSettings& settings, int from) {
  auto match = FindRecord(db, settings, from, 0, true, context.options(), context.prompter);
  if (!match) return kFailed;
  while (match) {
    PrintMatch(context, db, match->position, match->slot);
    match = FindAgain(db, settings, *match, false, context.options(), context.prompter);
  }
  return kOk;
}

int Find(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("TEXT", "Text to search for.");
  parser.addOption({"field", "Search only this field.", "name"});
  parser.addOption({"case", "Case sensitive."});
  parser.addOption({"begins", "The value must begin with the text."});
  parser.addOption({"from", "Start at this record (from 1).", "record", "1"});
  parser.addOption({"all",
                    "List every match, one line each, in every record (not only those that "
                    "pass the stored filter)."});
  const char* usage = "find FILE TEXT [--field NAME] [--case] [--begins] [--from N] [--all]";
  if (!context.Parse(parser, arguments, 2, usage)) return kUsage;
  QStringList args = parser.positionalArguments();
  bool ok = false;
  int from = parser.value("from").toInt(&ok);
  if (!ok || from < 1) {
    return context.UsageError("--from takes a record number from 1");
  }
  auto db = context.Open(args.at(0).toStdString());
  if (!db) return kFailed;
  FindSettings settings;
  // A letter the database cannot hold cannot be found in it either: said, not silently changed.
  settings.text = context.Stored(args.at(1), {nullptr, 0, "search text"});
  context.ReportText();
  settings.case_sensitive = parser.isSet("case");
  settings.begins_with = parser.isSet("begins");
  if (settings.text.size() > 34) {
    return context.UsageError("the search text holds at most 34 characters");
  }
  if (parser.isSet("field")) {
    auto slot = db->definition().FindField(Utf8ToCp1252(parser.value("field").toStdString()));
    if (!slot) {
      context.Error("no field named '" + parser.value("field").toStdString() + "'");
      return kFailed;
    }
    settings.field = *slot;
  }
  ApplyAllOption(*db, parser);
  context.ReportLeftOut(CountEnciphered(*db));
  return parser.isSet("all") ? FindAll(context, *db, settings, from - 1)
                             : FindFirst(context, *db, settings, from - 1);
}

}  // namespace

std::vector<Command> ViewCommands() {
  return {
      {"views", "views FILE list|new|copy N|delete N|apply N", Views,
       "Lists the database's views, adds, copies or deletes one, or applies one (its sort, "
       "filter and columns become the database's own).",
       "views Stock.PDB apply 2"},
      {"report", "report FILE FIELD [--all]", Report,
       "Prints the summary report on one field over the records that pass the stored filter "
       "(every record with --all).",
       "report Stock.PDB Qty"},
      {"find", "find FILE TEXT [--field NAME] [--case] [--begins] [--from N] [--all]", Find,
       "Finds the first record that passes the stored filter and holds the text, and prints "
       "its number, the field and the value; --all lists every match in every record. Exit 1 "
       "when there is none.",
       "find Stock.PDB bolt --all"},
  };
}

}  // namespace qv::cli
