#pragma once
// The password dialog: a title over the prompt "Please enter your Password" and one edit field.
// The GUI shows a dialog, the command line reads a file, the environment or the terminal, and
// tests answer from a script. Checking what was typed is the caller's business.

#include <optional>
#include <string>
#include <string_view>

#include "platform/prompter.h"

namespace qv {

// Why the password is asked; the caller words the title from it.
enum class PasswordMode {
  kVerifyAccess = 0,  // the access password, compared with the stored one
  kEncryption = 1,    // the password records are enciphered under
  kNewAccess = 2,     // a new access password
};

class PasswordPrompter {
 public:
  virtual ~PasswordPrompter() = default;
  // Shows the dialog once. Returns the typed text (8-bit characters), or nothing on Cancel.
  // `attempt` counts the entries already refused in this prompt (0 the first time), so a
  // prompter that has no way to take another entry can give up.
  virtual std::optional<std::string> AskPassword(PasswordMode mode, std::string_view title,
                                                 std::string_view prompt, int attempt) = 0;
  // A yes/no question about the password just given ("... Continue anyway?"). It is asked here,
  // not through the Prompter, so that an answer preset for other questions never takes a
  // password nobody confirmed. The default asks through `prompter`.
  virtual bool ConfirmPassword(Prompter& prompter, std::string_view text,
                               std::string_view caption) {
    return prompter.ask(text, caption, Buttons::YesNo, Icon::Question) == Answer::Yes;
  }
};

}  // namespace qv
