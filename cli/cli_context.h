#pragma once
// What every qvdb command shares: the prompter, the format options, the clock, and the
// checked open and save of a database.

#include <QCommandLineParser>
#include <memory>
#include <string>

#include "cli/cli_passwords.h"
#include "cli/cli_prompter.h"
#include "engine/database.h"
#include "platform/locale.h"
#include "platform/system_clock.h"
#include "security/access.h"

namespace qv::cli {

class CliContext {
 public:
  CliContext();
  CliPrompter prompter;
  FormatOptions options;  // the system locale's, until the global options override them
  SystemClock clock;
  CliPasswords passwords;
  std::string password_buffer;  // the text last given to a password prompt
  SecurityUi ui{prompter, passwords, password_buffer};

  // Adds --date-format, --time-format, --decimal-comma, --yes, --no, --verbose,
  // --password-file and --new-password-file; every
  // command's parser carries them so they may stand anywhere on the line.
  static void AddGlobalOptions(QCommandLineParser& parser);
  void ApplyGlobalOptions(const QCommandLineParser& parser);

  // Parses the command's arguments; prints the problem and returns false on bad usage.
  bool Parse(QCommandLineParser& parser, const QStringList& arguments, int min_positional,
             const char* usage);

  // Opens a database for a command, with the access and password checks of the program;
  // nothing (the reason already reported) when it cannot be opened.
  // `list_visible` false skips the filter pass, for commands that filter again before using it.
  std::unique_ptr<Database> Open(const std::string& path, bool list_visible = true);
  // The same checks, but only the header and the schema are read: for describing a database.
  std::unique_ptr<Database> OpenSchema(const std::string& path);
  // Saves through a sibling file; reports "ERROR:File could not be saved" on failure. A database
  // in encryption mode 0 is enciphered first, under a password asked for then; when that is
  // cancelled nothing is written.
  bool Save(Database& db);
  // The access check of a guarded action; anything short of full permission (view only
  // included) is refused with the system's message.
  bool Allowed(const Database& db, int action);

  void Error(const std::string& text);  // "Error: text" on standard error
};

}  // namespace qv::cli
