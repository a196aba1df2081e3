#include "cli/cli_passwords.h"

#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "engine/container.h"
#include "engine/text.h"
#include "security/password_text.h"
#include "security/settings.h"

namespace qv::cli {

namespace {

constexpr int kTerminalTries = 3;

void StripLineEnd(std::string& line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
}

// Reads one line from the terminal with echo switched off.
std::optional<std::string> ReadHidden() {
  termios saved{};
  bool restore = tcgetattr(STDIN_FILENO, &saved) == 0;
  if (restore) {
    termios quiet = saved;
    quiet.c_lflag &= static_cast<tcflag_t>(~ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  std::string line;
  bool ok = static_cast<bool>(std::getline(std::cin, line));
  if (restore) tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
  std::cerr << '\n';
  if (!ok) return std::nullopt;
  StripLineEnd(line);
  return line;
}

// Typed text is UTF-8; files keep 8-bit text.
std::optional<std::string> Checked(const std::string& utf8) {
  std::string problem;
  auto text = PasswordFromUtf8(utf8, problem);
  if (!text) std::cerr << "Error: " << problem << '\n';
  return text;
}

}  // namespace

std::optional<std::string> CliPasswords::Given(bool new_access, bool& given) {
  const std::optional<std::string>& file = new_access ? new_password_file : password_file;
  given = true;
  if (file && *file == "-") {  // a line of standard input, read once however often asked
    std::optional<std::string>& line = new_access ? new_from_input_ : from_input_;
    if (!line) {
      line.emplace();
      std::getline(std::cin, *line);
      StripLineEnd(*line);
    }
    return Checked(*line);
  }
  if (file) {
    auto bytes = ReadWholeFile(*file);
    if (!bytes) {
      std::cerr << "Error: cannot read the password file '" << *file << "'\n";
      return std::nullopt;
    }
    std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    return NonEmpty(std::string(FirstLine(text)), "the password file '" + *file + "'");
  }
  const char* variable = new_access ? "QUORVANT_NEW_PASSWORD" : "QUORVANT_PASSWORD";
  if (const char* env = std::getenv(variable)) return NonEmpty(env, variable);
  given = false;
  return std::nullopt;
}

std::optional<std::string> CliPasswords::NonEmpty(const std::string& text,
                                                  const std::string& source) {
  // An empty first line is far more often a mistake than a password.
  if (text.empty() && !allow_empty) {
    std::cerr << "Error: " << source
              << " gives an empty password (use --allow-empty-password to accept it)\n";
    return std::nullopt;
  }
  return Checked(text);
}

bool CliPasswords::CanAsk() const {
  return password_file || std::getenv("QUORVANT_PASSWORD") || isatty(STDIN_FILENO);
}

bool CliPasswords::ConfirmPassword(Prompter&, std::string_view text, std::string_view caption) {
  std::cerr << caption << ": " << text;
  if (!typed_last_ || !isatty(STDIN_FILENO)) {
    std::cerr << " [a password given ahead is never confirmed: answered no]\n";
    return false;
  }
  std::cerr << " [y/n] " << std::flush;
  std::string line;
  return std::getline(std::cin, line) && !line.empty() && (line[0] == 'y' || line[0] == 'Y');
}

std::optional<std::string> CliPasswords::FromTerminal(std::string_view title,
                                                      std::string_view prompt) {
  std::cerr << title << ": " << prompt << ": " << std::flush;
  auto typed = ReadHidden();
  if (!typed) return std::nullopt;
  return Checked(*typed);
}

std::optional<std::string> CliPasswords::AskPassword(PasswordMode mode, std::string_view title,
                                                     std::string_view prompt, int attempt) {
  bool new_access = mode == PasswordMode::kNewAccess;
  bool given = false;
  auto password = Given(new_access, given);
  typed_last_ = !given;
  // A password given ahead cannot be typed again: a refused one ends the prompt.
  if (given) return attempt == 0 ? password : std::nullopt;
  if (!isatty(STDIN_FILENO)) {
    std::cerr << "Error: a password is needed: give it in a file with "
              << (new_access ? "--new-password-file FILE or in QUORVANT_NEW_PASSWORD"
                             : "--password-file FILE or in QUORVANT_PASSWORD")
              << '\n';
    return std::nullopt;
  }
  if (attempt >= kTerminalTries) return std::nullopt;
  return FromTerminal(title, prompt);
}

}  // namespace qv::cli
