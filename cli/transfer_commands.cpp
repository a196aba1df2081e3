// qvdb print, copy, move, convert.

#include <filesystem>
#include <fstream>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/link_commands.h"
#include "engine/text.h"
#include "exchange/conversion.h"
#include "exchange/print_records.h"
#include "exchange/spawn_process.h"
#include "exchange/transfer.h"
#include "platform/qt/qt_paths.h"
#include "platform/qt/qt_settings.h"
#include "processing/linked_text.h"

namespace qv::cli {

namespace {

void AddSelectionOptions(QCommandLineParser& parser) {
  parser.addOption({"record", "Only record N (counting from 1).", "N"});
  parser.addOption({"view", "Every record the current filter shows (the default)."});
}

// The record the options name, or kAllViewRecords; nothing (reported) for a bad number.
std::optional<std::uint32_t> Selection(CliContext& context, const QCommandLineParser& parser,
                                       const Database& db) {
  if (!parser.isSet("record")) return kAllViewRecords;
  bool ok = false;
  uint n = parser.value("record").toUInt(&ok);
  if (!ok || n == 0 || n > db.count()) {
    context.Error("there is no record " + parser.value("record").toStdString());
    return std::nullopt;
  }
  return n - 1;
}

int Print(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  AddSelectionOptions(parser);
  parser.addOption({"command", "Print command, the file added as its last argument.", "CMD"});
  parser.addOption({"to-file", "Write the printed text to a file instead of printing.", "OUT"});
  const char* usage = "print FILE [--record N | --view] [--command CMD] [--to-file OUT.txt]";
  if (!context.Parse(parser, arguments, 1, usage)) return kUsage;
  if (parser.isSet("record") && parser.isSet("view")) {
    context.Error("choose one of --record and --view");
    return kUsage;
  }
  auto db = context.Open(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  auto selection = Selection(context, parser, *db);
  if (!selection) return kFailed;
  const bool all = *selection == kAllViewRecords;
  if (!all) db->current = *selection;
  LinkedTextWriter linked({db.get()}, context.prompter, LinkedAccess(context), context.options());
  if (parser.isSet("to-file")) {
    const std::string out = parser.value("to-file").toStdString();
    const std::string text = PrintText(*db, all, context.options(), linked.writer());
    std::ofstream file(out, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    if (file) return kOk;
    context.Error("cannot write '" + out + "'");
    return kFailed;
  }
  QtSettings settings;
  const std::string command =
      parser.isSet("command") ? parser.value("command").toStdString() : PrintCommand(settings);
  const std::string documents = QtPaths().DocumentsFolder();
  std::error_code ignored;
  std::filesystem::create_directories(documents, ignored);
  SpawnProcessRunner runner;
  PrintResult result = PrintRecords(*db, all, {documents + "/" + kPrintTempFileName, command},
                                    context.options(), context.prompter, runner, linked.writer());
  return result == PrintResult::kPrinted ? kOk : kFailed;
}

int Transfer(CliContext& context, const QStringList& arguments, bool move) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database the records come from.");
  parser.addPositionalArgument("TARGET", "Database they go to (the same types of fields).");
  AddSelectionOptions(parser);
  const char* usage =
      move ? "move FILE TARGET [--record N | --view]" : "copy FILE TARGET [--record N | --view]";
  if (!context.Parse(parser, arguments, 2, usage)) return kUsage;
  if (parser.isSet("record") && parser.isSet("view")) {
    context.Error("choose one of --record and --view");
    return kUsage;
  }
  QStringList args = parser.positionalArguments();
  auto source = context.Open(args.at(0).toStdString());
  if (!source) return kFailed;
  auto selection = Selection(context, parser, *source);
  if (!selection) return kFailed;
  if (*selection != kAllViewRecords) source->current = *selection;
  TransferServices services = SecurityTransferServices(context.ui, context.clock);
  services.allowed = [&context](Database& db, int action) { return context.Allowed(db, action); };
  services.open = [&context](const std::string& path) { return context.Open(path); };
  services.save = [&context](Database& db) { return context.Save(db); };
  TransferOutcome outcome =
      TransferRecords(move, *selection, *source, args.at(1).toStdString(), services);
  if (!outcome.ok) return kFailed;
  // A copy into the database itself, or the records moved out of it.
  if (source->changed && !context.Save(*source)) return kFailed;
  std::cout << (move ? "moved " : "copied ") << (move ? outcome.deleted : outcome.copied)
            << " records";
  if (move && outcome.copied > outcome.deleted)
    std::cout << ", copied " << outcome.copied - outcome.deleted << " that stay in the source";
  std::cout << '\n';
  return kOk;
}

int Copy(CliContext& context, const QStringList& arguments) {
  return Transfer(context, arguments, false);
}
int Move(CliContext& context, const QStringList& arguments) {
  return Transfer(context, arguments, true);
}

// Answers the keep-the-data questions of a conversion from the command's flags and hands every
// other prompt to qvdb's own prompter.
class ConversionAnswers : public Prompter {
 public:
  ConversionAnswers(Prompter& inner, bool unique, bool link, bool linked)
      : inner_(inner), unique_(unique), link_(link), linked_(linked) {}
  void message(std::string_view text, std::string_view caption, Icon icon) override {
    inner_.message(text, caption, icon);
  }
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override {
    for (auto [question, yes] :
         {std::pair{kKeepUniqueData, unique_}, std::pair{kKeepLinkData, link_},
          std::pair{kKeepLinkedData, linked_}})
      if (text.starts_with(question)) return yes ? Answer::Yes : Answer::No;
    return inner_.ask(text, caption, buttons, icon);
  }
  void progress(std::string_view text) override { inner_.progress(text); }
  void busy(bool on) override { inner_.busy(on); }

 private:
  Prompter& inner_;
  bool unique_, link_, linked_;
};

int Convert(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "A database of the 2.x layout.");
  parser.addOption({"yes-unique", "Unique fields keep their values."});
  parser.addOption({"yes-link", "Link fields keep their values."});
  parser.addOption({"yes-linked", "Linked fields keep their values."});
  const char* usage = "convert FILE [--yes-unique] [--yes-link] [--yes-linked]";
  if (!context.Parse(parser, arguments, 1, usage)) return kUsage;
  const std::string path = parser.positionalArguments().at(0).toStdString();
  if (auto parent = ParentToConvertFirst(path)) {
    context.prompter.message(StringPrintf(kConvertParentFirst, parent->c_str()), "Error",
                             Icon::Error);
    return kFailed;
  }
  ConversionAnswers answers(context.prompter, parser.isSet("yes-unique"), parser.isSet("yes-link"),
                            parser.isSet("yes-linked"));
  bool complete = false;
  if (!ConvertOldDatabase(path, answers, context.clock, &complete)) return kFailed;
  Header header;
  ReadHeader(path, header);
  std::cout << "converted; the old file is kept as " << OldCopyPath(path, header.Name()) << '\n';
  return complete ? kOk : kFailed;
}

}  // namespace

std::vector<Command> TransferCommands() {
  return {
      {"print", "print FILE [--record N | --view] [--command CMD] [--to-file OUT.txt]", Print,
       "Prints the current record or the records of the view through the print command (lp "
       "unless the preferences or --command say otherwise); --to-file keeps the text instead.",
       "print Stock.PDB --record 3 --to-file record3.txt"},
      {"copy", "copy FILE TARGET [--record N | --view]", Copy,
       "Copies a record or the view's records into another database whose field types match; "
       "needs Add Records on the target.",
       "copy Stock.PDB Shop.PDB --view"},
      {"move", "move FILE TARGET [--record N | --view]", Move,
       "Moves records into another database whose field types match: copied, then deleted here "
       "once the target is saved; needs Delete Records here.",
       "move Stock.PDB Archive.PDB --record 7"},
      {"convert", "convert FILE [--yes-unique] [--yes-link] [--yes-linked]", Convert,
       "Converts a 2.x database to the current layout, keeping the old file as NAME-Old.PDB; the "
       "--yes options keep the data of Unique, Link and Linked fields.",
       "convert Old.PDB --yes-unique"},
  };
}

}  // namespace qv::cli
