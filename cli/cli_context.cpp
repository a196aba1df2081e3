#include "cli/cli_context.h"

#include <iostream>

#include "platform/qt/qt_locale.h"
#include "security/protected_open.h"
#include "processing/store.h"

namespace qv::cli {

CliContext::CliContext() : options(SystemFormatOptions()) {}

void CliContext::AddGlobalOptions(QCommandLineParser& parser) {
  parser.addOption({"date-format", "Short date pattern, for example dd/MM/yyyy.", "pattern"});
  parser.addOption({"time-format", "Time pattern, for example HH:mm:ss or h:mm tt.", "pattern"});
  parser.addOption({"decimal-comma", "Show and read decimal numbers with a comma."});
  parser.addOption({"yes", "Answer yes to every question."});
  parser.addOption({"no", "Answer no to every question."});
  parser.addOption({"verbose", "Show progress texts."});
  parser.addOption({"password-file",
                    "Read the database's password from the first line of a file "
                    "(or set QUORVANT_PASSWORD).",
                    "file"});
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

void CliContext::ApplyGlobalOptions(const QCommandLineParser& parser) {
  if (parser.isSet("date-format")) {
    options.locale.short_date = parser.value("date-format").toStdString();
    options.locale.date_separator = SeparatorOf(options.locale.short_date, "/");
  }
  if (parser.isSet("time-format")) {
    options.locale.time_format = parser.value("time-format").toStdString();
    options.locale.time_separator = SeparatorOf(options.locale.time_format, ":");
    bool twelve = options.locale.time_format.find("tt") != std::string::npos;
    options.time_code = options.locale.time_separator == "." ? (twelve ? 4 : 5) : (twelve ? 1 : 2);
  }
  if (parser.isSet("decimal-comma")) options.decimal_comma = true;
  if (parser.isSet("yes")) prompter.preset = CliPrompter::Preset::Yes;
  if (parser.isSet("no")) prompter.preset = CliPrompter::Preset::No;
  if (parser.isSet("verbose")) prompter.verbose = true;
  if (parser.isSet("password-file"))
    passwords.password_file = parser.value("password-file").toStdString();
  if (parser.isSet("new-password-file"))
    passwords.new_password_file = parser.value("new-password-file").toStdString();
}

bool CliContext::Parse(QCommandLineParser& parser, const QStringList& arguments,
                       int min_positional, const char* usage) {
  AddGlobalOptions(parser);
  if (!parser.parse(arguments)) {
    std::cerr << "qvdb: " << parser.errorText().toStdString() << "\nusage: qvdb " << usage << '\n';
    return false;
  }
  if (parser.positionalArguments().size() < min_positional) {
    std::cerr << "usage: qvdb " << usage << '\n';
    return false;
  }
  ApplyGlobalOptions(parser);
  return true;
}

std::unique_ptr<Database> CliContext::Open(const std::string& path, bool list_visible) {
  auto db = std::make_unique<Database>();
  if (!OpenProtectedDatabase(*db, path, ui)) return nullptr;
  PositionOpenedDatabase(*db, prompter, list_visible);
  return db;
}

std::unique_ptr<Database> CliContext::OpenSchema(const std::string& path) {
  auto db = std::make_unique<Database>();
  if (!OpenProtectedDatabase(*db, path, ui, LoadParts::Schema)) return nullptr;
  return db;
}

bool CliContext::Save(Database& db) {
  if (EncipherOnDatabaseClose(db, ui) == EncipherResult::kCancelled) {
    Error("nothing was saved: the database is enciphered on close and no password was given");
    return false;
  }
  if (SaveDatabase(db, clock)) return true;
  prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
  return false;
}

bool CliContext::Allowed(const Database& db, int action) {
  int access = CheckAccess(db.definition(), action, true, ui);
  if (access == 1) return true;
  if (access == 2) prompter.message(kNoSecurityAccess, kAccessDeniedCaption, Icon::Exclamation);
  return false;
}

void CliContext::Error(const std::string& text) { std::cerr << "Error: " << text << '\n'; }

}  // namespace qv::cli
