#include "cli/cli_context.h"

#include <iostream>

#include "cli/command_access.h"
#include "cli/standard_streams.h"
#include "cli/usage.h"
#include "engine/save_journal.h"
#include "engine/text.h"
#include "platform/pattern_check.h"
#include "platform/qt/qt_locale.h"
#include "processing/store.h"
#include "security/cipher_session.h"
#include "security/enciphered.h"
#include "security/protected_open.h"

namespace qv::cli {

CliContext::CliContext() = default;

FormatOptions& CliContext::options() {
  if (!options_) options_ = SystemFormatOptions();
  return *options_;
}

void CliContext::AddGlobalOptions(QCommandLineParser& parser) {
  parser.addOption({"date-format", "Short date pattern, for example dd/MM/yyyy.", "pattern"});
  parser.addOption({"time-format", "Time pattern, for example HH:mm:ss or h:mm:ss tt.", "pattern"});
  parser.addOption({"decimal-comma", "Show and read decimal numbers with a comma."});
  parser.addOption({"yes", "Answer yes to every question."});
  parser.addOption({"no", "Answer no to every question."});
  parser.addOption({"verbose", "Show progress texts."});
  parser.addOption({"strict",
                    "Write nothing when a text cannot be stored exactly in the database's "
                    "character set, or when an import refuses a row."});
  parser.addOption({"password-file",
                    "Read the database's password from the first line of a file "
                    "(or set QUORVANT_PASSWORD).",
                    "file"});
  parser.addOption(
      {"allow-empty-password", "Accept an empty password from a file or the environment."});
  parser.addOption({"new-password-file",
                    "Read a new access password from a file "
                    "(or set QUORVANT_NEW_PASSWORD).",
                    "file"});
}

namespace {
std::string SeparatorOf(const std::string& pattern, const char* fallback) {
  for (char c : pattern)
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == ' ')) return std::string(1, c);
  return fallback;
}
}  // namespace

bool CliContext::ApplyGlobalOptions(const QCommandLineParser& parser) {
  for (const char* name : {"date-format", "time-format"}) {
    if (!parser.isSet(name)) continue;
    std::string pattern = parser.value(name).toStdString();
    std::string problem =
        name[0] == 'd' ? DatePatternProblem(pattern) : TimePatternProblem(pattern);
    if (problem.empty()) continue;
    Error(problem);
    return false;
  }
  if (parser.isSet("date-format")) {
    options().locale.short_date = parser.value("date-format").toStdString();
    options().locale.date_separator = SeparatorOf(options().locale.short_date, "/");
  }
  if (parser.isSet("time-format")) {
    options().locale.time_format = parser.value("time-format").toStdString();
    options().locale.time_separator = SeparatorOf(options().locale.time_format, ":");
    bool twelve = options().locale.time_format.find("tt") != std::string::npos;
    options().time_code =
        options().locale.time_separator == "." ? (twelve ? 4 : 5) : (twelve ? 1 : 2);
  }
  if (parser.isSet("decimal-comma")) options().decimal_comma = true;
  if (parser.isSet("yes")) prompter.preset = CliPrompter::Preset::Yes;
  if (parser.isSet("no")) prompter.preset = CliPrompter::Preset::No;
  if (parser.isSet("verbose")) prompter.verbose = true;
  if (parser.isSet("strict")) strict = true;
  if (parser.isSet("password-file"))
    passwords.password_file = parser.value("password-file").toStdString();
  if (parser.isSet("allow-empty-password")) passwords.allow_empty = true;
  if (parser.isSet("new-password-file"))
    passwords.new_password_file = parser.value("new-password-file").toStdString();
  return true;
}

bool CliContext::Parse(QCommandLineParser& parser, const QStringList& arguments, int min_positional,
                       const char* usage_line, int max_positional) {
  usage = usage_line;
  AddGlobalOptions(parser);
  parser.addOption({{"h", "help"}, "Show what the command does, an example and its options."});
  bool parsed = parser.parse(arguments);
  if ((parsed && parser.isSet("help")) ||
      (!parsed && (arguments.contains("--help") || arguments.contains("-h")))) {
    Command shown = command ? *command : Command{};
    shown.synopsis = usage_line;
    PrintCommandHelp(shown, parser, std::cout);
    help_shown = true;
    return false;
  }
  if (!parsed) {
    UsageError(parser.errorText().toStdString());
    return false;
  }
  const QStringList positional = parser.positionalArguments();
  if (max_positional == kFromUsage) max_positional = MaxPositionalOf(usage_line);
  if (positional.size() < min_positional) {
    UsageError("too few arguments");
    return false;
  }
  if (max_positional != kAnyCount && positional.size() > max_positional) {
    UsageError("unexpected argument '" + positional.at(max_positional).toStdString() + "'");
    return false;
  }
  if (!ApplyGlobalOptions(parser)) {
    std::cerr << "usage: qvdb " << usage << '\n';
    return false;
  }
  return true;
}

std::string CliContext::Stored(const QString& utf8, const TextPlace& place) {
  return text.Store(utf8.toStdString(), TextEncoding::Utf8, place);
}

int CliContext::UsageError(const std::string& text) {
  if (!text.empty()) Error(text);
  std::cerr << "usage: qvdb " << (usage.empty() && command ? command->synopsis : usage) << '\n';
  return kUsage;
}

std::unique_ptr<Database> CliContext::Open(const std::string& path, std::string_view verb,
                                           bool list_visible) {
  if (IsStandardStream(path)) return OpenStandardInput(*this);
  // Taken before reading, so the whole read-modify-write of a command is one step for every
  // other writer; the save refuses later if the lock could not be had.
  FileLock lock;
  // Holding it, a save cut short by a crash can be put back on disk before the file is read.
  if (LockForUpdate(lock, path, kLockPatience) == FileLock::Result::Locked)
    RecoverInterruptedSave(path);
  auto db = std::make_unique<Database>();
  if (!OpenProtectedDatabase(*db, path, ui)) return nullptr;
  db->lock = std::move(lock);
  if (auto action = CommandAction(command ? command->name : std::string_view{}, verb);
      action && !Allowed(*db, *action))
    return nullptr;
  // Readers get deciphered values when a password is at hand; the rest they leave out. Whether
  // one can be had is asked first: counting visits every record.
  if (passwords.CanAsk() && CountEnciphered(*db) > 0) DecipherForReading(*db, ui);
  PositionOpenedDatabase(*db, prompter, list_visible);
  return db;
}

std::unique_ptr<Database> CliContext::OpenSchema(const std::string& path) {
  if (IsStandardStream(path)) return OpenStandardInput(*this);
  // Nothing is written, so no lock; the records stay unread, so nothing to decipher.
  auto db = std::make_unique<Database>();
  if (!OpenProtectedDatabase(*db, path, ui, LoadParts::Schema)) return nullptr;
  if (auto action = CommandAction(command ? command->name : std::string_view{}, {});
      action && !Allowed(*db, *action))
    return nullptr;
  return db;
}

bool CliContext::ReportText() {
  if (text.exact()) return true;
  for (const std::string& line : text.Messages()) prompter.message(line, "Warning", Icon::Warning);
  if (text.any_invalid_utf8())
    prompter.message(
        "some text is not valid UTF-8; a file written in Windows-1252 (Latin-1) "
        "reads right with --encoding cp1252",
        "Warning", Icon::Warning);
  if (!strict) {
    text = TextReport{};  // said once
    return true;
  }
  Error(
      StringPrintf("nothing was saved: %zu %s cannot be stored exactly in the database's "
                   "character set (Windows-1252)",
                   text.losses().size(), text.losses().size() == 1 ? "text" : "texts"));
  return false;
}

bool CliContext::Save(Database& db) {
  if (!ReportText() || SaveRefused(*this, db)) return false;
  if (!EncipherBeforeSave(db, ui)) {
    Error("nothing was saved: records are enciphered as they are saved, and no password was given");
    return false;
  }
  SaveOutcome outcome;
  if (SaveDatabase(db, clock, &outcome)) return true;
  prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
  Error(SaveFailureText(outcome, db.path));
  return false;
}

bool CliContext::Allowed(const Database& db, int action) {
  int access = CheckAccess(db.definition(), action, true, ui);
  if (access == 1) return true;
  if (access == 2) prompter.message(kNoSecurityAccess, kAccessDeniedCaption, Icon::Exclamation);
  return false;
}

void CliContext::ReportLeftOut(std::size_t count) {
  if (count > 0) std::cerr << "Note: " << LeftOutText(count) << '\n';
}

void CliContext::Error(const std::string& text) {
  prompter.message(text, "Error", Icon::Error);
}

}  // namespace qv::cli
