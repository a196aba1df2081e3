#include "security/access.h"

#include <array>

#include "engine/text.h"
#include "security/settings.h"

namespace qv {

namespace {

constexpr std::array<std::string_view, kAccessActions> kActionLabels = {
    "Open Database", "Add Records",     "Edit Records", "Delete Records",
    "DB Properties", "Delete Database", "Edit Popups",  "Beam Data"};
constexpr std::array<std::string_view, 4> kValueLabels = {"Full Access", "Password Required",
                                                          "No Access", "View Records Only"};

constexpr const char* kPasswordPrompt = "Please enter your Password";

}  // namespace

std::string_view AccessActionLabel(int action) {
  return action >= 0 && action < kAccessActions ? kActionLabels[action] : std::string_view();
}

std::string_view AccessValueLabel(int value) {
  return value >= 0 && value < 4 ? kValueLabels[value] : std::string_view();
}

std::optional<int> AccessActionByLabel(std::string_view label) {
  for (int i = 0; i < kAccessActions; ++i)
    if (EqualsNoCase(label, kActionLabels[i])) return i;
  return std::nullopt;
}

std::optional<int> AccessValueByLabel(std::string_view label) {
  for (int i = 0; i < 4; ++i)
    if (EqualsNoCase(label, kValueLabels[i])) return i;
  return std::nullopt;
}

int GetAccess(const DatabaseDefinition& definition, int action) {
  if (action < 0 || action >= kAccessActions) return kFullAccess;
  return static_cast<int>((GetAccessWord(definition) >> (2 * action)) & 3);
}

void SetAccess(DatabaseDefinition& definition, int action, int value) {
  if (action < 0 || action >= kAccessActions) return;
  std::uint32_t word = GetAccessWord(definition);
  word &= ~(std::uint32_t{3} << (2 * action));
  word |= (static_cast<std::uint32_t>(value) & 3) << (2 * action);
  SetAccessWord(definition, word);
}

std::string_view PasswordTitle(PasswordMode mode) {
  return mode == PasswordMode::kEncryption ? "Enter Encryption Password" : "Enter Access Password";
}

int AskPassword(SecurityUi& ui, PasswordMode mode, int attempt) {
  for (;; ++attempt) {
    auto typed = ui.passwords.AskPassword(mode, PasswordTitle(mode), kPasswordPrompt, attempt);
    if (!typed) return 0;
    if (mode != PasswordMode::kVerifyAccess) {
      ui.password_buffer = *typed;
      return 1;
    }
    if (*typed == ui.password_buffer) return 1;
    ui.prompter.message("Invalid Password", "ERROR", Icon::Error);
  }
}

int AskNewPassword(SecurityUi& ui, PasswordMode mode) {
  for (int attempt = 0;; ++attempt) {
    if (AskPassword(ui, mode, attempt) != 1) return 0;
    // The second entry is a first try of its own: a password given ahead gives it again.
    auto again = ui.passwords.AskPassword(mode, PasswordTitle(mode), kPasswordAgainPrompt, attempt);
    if (!again) return 0;
    if (*again == ui.password_buffer) return 1;
    ui.prompter.message(kPasswordsDiffer, "ERROR", Icon::Error);
  }
}

int CheckAccess(const DatabaseDefinition& definition, int action, bool show_message,
                SecurityUi& ui) {
  int value = GetAccess(definition, action);
  if (value == kFullAccess) return 1;
  // Any action set to "View Records Only" answers view only; callers that edit check for it.
  if (value == kViewRecordsOnly) return 2;
  if (value == kPasswordRequired) {
    ui.prompter.busy(true);
    ui.password_buffer = GetAccessPassword(definition);
    ui.prompter.busy(false);
    if (AskPassword(ui, PasswordMode::kVerifyAccess) == 1) return 1;
  }
  if (show_message) ui.prompter.message(kNoSecurityAccess, kAccessDeniedCaption, Icon::Exclamation);
  return 0;
}

bool ChangeAccessPassword(DatabaseDefinition& definition, SecurityUi& ui) {
  ui.password_buffer = GetAccessPassword(definition);
  if (AskNewPassword(ui, PasswordMode::kNewAccess) != 1) return false;
  SetAccessPassword(definition, ui.password_buffer);
  return true;
}

}  // namespace qv
