#pragma once
// The password dialog of qvdb. Passwords never come from a plain argument: a password file
// (--password-file; "-" reads a line of standard input), the environment (QUORVANT_PASSWORD), or a
// terminal prompt with echo off. A new access password comes from --new-password-file,
// QUORVANT_NEW_PASSWORD or the terminal.

#include <optional>
#include <string>

#include "platform/password_prompter.h"

namespace qv::cli {

class CliPasswords : public PasswordPrompter {
 public:
  std::optional<std::string> AskPassword(PasswordMode mode, std::string_view title,
                                         std::string_view prompt, int attempt) override;

  std::optional<std::string> password_file;
  std::optional<std::string> new_password_file;

 private:
  // The password given ahead (file, then environment); nothing when none was given, or when
  // it cannot be read (reported).
  std::optional<std::string> Given(bool new_access, bool& given);
  std::optional<std::string> FromTerminal(std::string_view title, std::string_view prompt);

  // The lines taken from standard input for a password file of "-".
  std::optional<std::string> from_input_;
  std::optional<std::string> new_from_input_;
};

}  // namespace qv::cli
