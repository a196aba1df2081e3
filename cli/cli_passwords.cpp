#include "cli/cli_passwords.h"

#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "engine/text.h"
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
  std::string text = Utf8ToCp1252(utf8);
  if (text.size() > kMaxPasswordLength) {
    std::cerr << "Error: a password has at most " << kMaxPasswordLength << " characters\n";
    return std::nullopt;
  }
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
    std::ifstream in(*file, std::ios::binary);
    std::string line;
    if (!in || (!std::getline(in, line) && !in.eof())) {
      std::cerr << "Error: cannot read the password file '" << *file << "'\n";
      return std::nullopt;
    }
    StripLineEnd(line);
    return Checked(line);
  }
  if (const char* env = std::getenv(new_access ? "QUORVANT_NEW_PASSWORD" : "QUORVANT_PASSWORD"))
    return Checked(env);
  given = false;
  return std::nullopt;
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
  auto typed = FromTerminal(title, prompt);
  if (!typed || !new_access) return typed;
  auto again = FromTerminal(title, "Type it again");
  if (!again || *again != *typed) {
    std::cerr << "Error: the two passwords differ\n";
    return std::nullopt;
  }
  return typed;
}

}  // namespace qv::cli
