#pragma once
// Access permissions: two bits per guarded action in the access permission word, the checks
// each guarded command makes, and the password dialog in its three uses.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/schema.h"
#include "platform/password_prompter.h"
#include "platform/prompter.h"

namespace qv {

enum AccessAction : int {
  kOpenDatabase = 0,
  kAddRecords = 1,
  kEditRecords = 2,
  kDeleteRecords = 3,
  kDbProperties = 4,
  kDeleteDatabase = 5,
  kEditPopups = 6,
  kBeamData = 7,
};
inline constexpr int kAccessActions = 8;

enum AccessValue : int {
  kFullAccess = 0,
  kPasswordRequired = 1,
  kNoAccess = 2,
  kViewRecordsOnly = 3,  // offered for Edit Records only
};

// The row labels of the "Security Access" dialog and the labels of its drop-down lists.
std::string_view AccessActionLabel(int action);
std::string_view AccessValueLabel(int value);
// Label to number, case ignored.
std::optional<int> AccessActionByLabel(std::string_view label);
std::optional<int> AccessValueByLabel(std::string_view label);

inline constexpr const char* kAccessDeniedCaption = "ACCESS DENIED";
inline constexpr const char* kNoSecurityAccess =
    "Sorry, You do Not have Security Access to Perform this Operation!";
inline constexpr const char* kActionNotAllowed = "Action Not Allowed for this Database!";
inline constexpr const char* kPasswordAgainPrompt = "Please enter the same Password again";
inline constexpr const char* kPasswordsDiffer = "The two passwords differ. Please try again.";

// The two bits of an action (0 for an action outside 0..7).
int GetAccess(const DatabaseDefinition& definition, int action);
// Replaces the two bits of one action; every other action keeps its value.
void SetAccess(DatabaseDefinition& definition, int action, int value);

// What a password prompt needs: the message boxes, the dialog, and the shared password buffer
// (the text last typed; Workspace::password_buffer in the application).
struct SecurityUi {
  Prompter& prompter;
  PasswordPrompter& passwords;
  std::string& password_buffer;
};

// The dialog's title for a mode.
std::string_view PasswordTitle(PasswordMode mode);

// Shows the password dialog. Verifying (mode 0) compares each entry with the shared buffer and
// says "Invalid Password" until one matches; the other modes put the entry into the buffer.
// 1 on OK, 0 on Cancel. `attempt` is the number of entries a caller's own retry loop has
// refused already.
int AskPassword(SecurityUi& ui, PasswordMode mode, int attempt = 0);

// A new password (an access password, or an encryption password where the database has none
// yet): asked twice, and again while the two entries differ ("The two passwords differ."). 1 on
// OK with the password in the shared buffer, 0 on Cancel.
int AskNewPassword(SecurityUi& ui, PasswordMode mode);

// Whether the action may go ahead: 1 yes, 2 view only (value 3), 0 refused. Value 1 asks for
// the access password. A refusal says so when `show_message` is set.
int CheckAccess(const DatabaseDefinition& definition, int action, bool show_message,
                SecurityUi& ui);

// "Set Access Password": asks for a new access password and stores it. False on Cancel.
bool ChangeAccessPassword(DatabaseDefinition& definition, SecurityUi& ui);

}  // namespace qv
