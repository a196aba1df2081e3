#pragma once
// What every qvdb command shares: the prompter, the format options, the clock, and the
// checked open and save of a database.

#include <QCommandLineParser>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/cli_passwords.h"
#include "cli/cli_prompter.h"
#include "cli/command.h"
#include "engine/database.h"
#include "platform/locale.h"
#include "platform/system_clock.h"
#include "processing/text_report.h"
#include "security/access.h"

namespace qv::cli {

// How long a command waits for another qvdb command to finish with the same database.
inline constexpr std::chrono::seconds kLockPatience{30};

class CliContext {
 public:
  CliContext();
  CliPrompter prompter;
  // The system locale's, until the global options override them; asked of the system only when
  // a command first needs them (a tenth of a millisecond that most commands never use).
  FormatOptions& options();
  SystemClock clock;
  CliPasswords passwords;
  std::string password_buffer;  // the text last given to a password prompt
  SecurityUi ui{prompter, passwords, password_buffer};
  // Every text the command stores goes through it; Save shows what could not be stored exactly.
  TextReport text;
  bool strict = false;  // --strict: refuse such text, and an import that refuses a row

  // A text from the command line as the database stores it.
  std::string Stored(const QString& utf8, const TextPlace& place);

  // Adds --date-format, --time-format, --decimal-comma, --yes, --no, --verbose, --strict,
  // --password-file and --new-password-file; every
  // command's parser carries them so they may stand anywhere on the line.
  static void AddGlobalOptions(QCommandLineParser& parser);
  // False (the problem reported) for a date or time pattern the formatter cannot read.
  bool ApplyGlobalOptions(const QCommandLineParser& parser);

  // The command being run (set by main) and, once Parse has run, its usage line.
  const Command* command = nullptr;
  std::string usage;
  bool help_shown = false;  // --help was answered: the command's result is success

  // Parses the command's arguments: answers --help (and returns false), checks the count of
  // positional arguments (at most what the usage line allows unless `max_positional` says
  // otherwise), and prints the problem with the usage line and returns false on bad usage.
  bool Parse(QCommandLineParser& parser, const QStringList& arguments, int min_positional,
             const char* usage, int max_positional = kFromUsage);
  static constexpr int kFromUsage = -2;
  // "Error: text" (unless empty) and the usage line on standard error; returns kUsage.
  int UsageError(const std::string& text);

  // Opens a database for the command (sub-command `verb`), with the program's checks: Open
  // Database and the action the command table names for it, the encryption password of an
  // enciphered database, and enciphered records deciphered in memory when a password is at
  // hand (the rest stay enciphered, and readers leave them out). Nothing (the reason already
  // reported) when it cannot be opened. The database's lock is taken first and held until it is
  // saved or dropped.
  // `list_visible` false skips the filter pass, for commands that filter again before using it.
  std::unique_ptr<Database> Open(const std::string& path, std::string_view verb = {},
                                 bool list_visible = true);
  // The same checks, but only the header and the schema are read: for describing a database.
  std::unique_ptr<Database> OpenSchema(const std::string& path);
  // Saves through a sibling file; reports "ERROR:File could not be saved" and why on failure
  // (another program holds the file, it changed on disk, it is not writable). What the
  // encryption mode enciphers is enciphered first, under the password this command was given;
  // when none can be had nothing is written. Text that could not be stored exactly is listed
  // first, and under --strict nothing is written.
  bool Save(Database& db);
  // Says how many records a reader left out as enciphered (nothing for none).
  void ReportLeftOut(std::size_t count);
  // Lists the texts not stored exactly; false under --strict when there are any.
  bool ReportText();
  // The access check of a guarded action; anything short of full permission (view only
  // included) is refused with the system's message.
  bool Allowed(const Database& db, int action);

  void Error(const std::string& text);  // "Error: text" on standard error

 private:
  std::optional<FormatOptions> options_;
};

}  // namespace qv::cli
