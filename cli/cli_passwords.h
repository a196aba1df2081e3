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

  // A question about a password just given: asked on the terminal where it was typed; a
  // password given ahead is never confirmed (--yes does not answer this question).
  bool ConfirmPassword(Prompter& prompter, std::string_view text,
                       std::string_view caption) override;
  // Whether a password can be had without failing: one given ahead, or a terminal.
  bool CanAsk() const;

  std::optional<std::string> password_file;
  std::optional<std::string> new_password_file;
  bool allow_empty = false;  // --allow-empty-password

 private:
  // The password given ahead (file, then environment); nothing when none was given, or when
  // it cannot be read (reported).
  std::optional<std::string> Given(bool new_access, bool& given);
  // The text, unless it is empty and empty passwords were not allowed (reported).
  std::optional<std::string> NonEmpty(const std::string& text, const std::string& source);
  std::optional<std::string> FromTerminal(std::string_view title, std::string_view prompt);
  bool typed_last_ = false;  // the last password came from the terminal

  // The lines taken from standard input for a password file of "-".
  std::optional<std::string> from_input_;
  std::optional<std::string> new_from_input_;
};

}  // namespace qv::cli
