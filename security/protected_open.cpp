#include "security/protected_open.h"

#include <string>

#include "security/database_crypt.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv {

namespace {

// Asks for an encryption password; when a verifier exists and refuses it, asks whether to go on
// with it anyway (No asks again). False on Cancel.
bool AskMatchingPassword(const DatabaseDefinition& definition, SecurityUi& ui) {
  for (int attempt = 0;; ++attempt) {
    if (AskPassword(ui, PasswordMode::kEncryption, attempt) != 1) return false;
    if (CheckVerifier(definition, ui.password_buffer)) return true;
    std::string question = std::string(kRecordPasswordMismatch) + kContinueAnyway;
    if (ui.prompter.ask(question, "Question", Buttons::YesNo, Icon::Question) == Answer::Yes)
      return true;
  }
}

}  // namespace

bool CheckOpenAccess(const DatabaseDefinition& definition, SecurityUi& ui) {
  switch (GetAccess(definition, kOpenDatabase)) {
    case kFullAccess:
      return true;
    case kPasswordRequired:
      ui.password_buffer = GetAccessPassword(definition);
      return AskPassword(ui, PasswordMode::kVerifyAccess) == 1;
    default:
      ui.prompter.message(kActionNotAllowed, kAccessDeniedCaption, Icon::Exclamation);
      return false;
  }
}

bool UnlockEncipheredDatabase(Database& db, SecurityUi& ui) {
  DatabaseDefinition& definition = db.definition();
  if (!IsDatabaseEnciphered(definition)) return true;
  for (int attempt = 0;; ++attempt) {
    if (AskPassword(ui, PasswordMode::kEncryption, attempt) != 1) return false;
    if (CheckVerifier(definition, ui.password_buffer)) break;
    ui.prompter.message(kWrongPasswordOnOpen, kAccessDeniedCaption, Icon::Exclamation);
  }
  if (GetEncryptionMode(definition) == kEncryptEntireDatabase) {
    ui.prompter.busy(true);
    ExpandedKey key = MakeKey(ui.password_buffer);
    for (std::uint32_t i = 0; i < db.count(); ++i) DecryptRecordBody(db, i, key);
    ui.prompter.busy(false);
  }
  // Memory only: closing in mode 0 enciphers again and writes a new verifier.
  SetDatabaseEnciphered(definition, false);
  SetVerifierPresent(definition, false);
  return true;
}

bool OpenProtectedDatabase(Database& db, const std::string& path, SecurityUi& ui, LoadParts parts) {
  Database loaded;
  if (!LoadDatabase(loaded, path, ui.prompter, parts)) return false;
  if (!CheckOpenAccess(loaded.definition(), ui)) return false;
  if (!UnlockEncipheredDatabase(loaded, ui)) return false;
  db = std::move(loaded);
  return true;
}

EncipherResult EncipherOnDatabaseClose(Database& db, SecurityUi& ui) {
  if (GetEncryptionMode(db.definition()) != kEncryptEntireDatabase)
    return EncipherResult::kNotNeeded;
  if (IsDatabaseEnciphered(db.definition()) || db.count() == 0) return EncipherResult::kNotNeeded;
  if (AskPassword(ui, PasswordMode::kEncryption) != 1) return EncipherResult::kCancelled;
  ui.prompter.busy(true);
  EncryptDatabase(db, ui.password_buffer);
  ui.prompter.busy(false);
  return EncipherResult::kEnciphered;
}

EncipherResult EncipherRecord(Database& db, std::uint32_t index, SecurityUi& ui) {
  if (index >= db.count() || !AnyFieldMarked(db.definition())) return EncipherResult::kNotNeeded;
  auto header = ReadRecordHeader(db.records[index].data);
  if (header && header->has(kRecordFieldsEnciphered)) return EncipherResult::kNotNeeded;
  if (!AskMatchingPassword(db.definition(), ui)) return EncipherResult::kCancelled;
  EnableRecordHeaders(db);
  EncryptRecordFields(db.definition(), db.records[index].data.edit(), ui.password_buffer);
  db.changed = true;
  return EncipherResult::kEnciphered;
}

EncipherResult EncipherOnRecordClose(Database& db, std::uint32_t index, SecurityUi& ui) {
  if (GetEncryptionMode(db.definition()) != kEncryptMarkedFields) return EncipherResult::kNotNeeded;
  return EncipherRecord(db, index, ui);
}

bool DecipherOnRecordOpen(Database& db, std::uint32_t index, SecurityUi& ui) {
  if (index >= db.count()) return false;
  auto header = ReadRecordHeader(db.records[index].data);
  if (!header || !header->has(kRecordFieldsEnciphered)) return true;
  if (AskPassword(ui, PasswordMode::kEncryption) != 1) return false;
  Bytes copy = db.records[index].data;
  if (DecryptRecordFields(db.definition(), copy, MakeKey(ui.password_buffer)) != 1) {
    ui.prompter.message(kRecordNotDecrypted, "Error", Icon::Error);
    return false;
  }
  db.records[index].data = std::move(copy);
  db.changed = true;
  return true;
}

int DecryptDatabaseWithPrompt(Database& db, bool include_manual, SecurityUi& ui) {
  if (GetEncryptionMode(db.definition()) == kEncryptionDisabled) return 0;
  for (int attempt = 0;; ++attempt) {
    if (AskPassword(ui, PasswordMode::kEncryption, attempt) != 1) return 0;
    ui.prompter.busy(true);
    int result = DecryptDatabase(db, ui.password_buffer, include_manual);
    ui.prompter.busy(false);
    if (result != -1) return result;
    ui.prompter.message(kWrongPasswordOnDecrypt, kAccessDeniedCaption, Icon::Exclamation);
  }
}

bool EncryptDatabaseWithPrompt(Database& db, SecurityUi& ui) {
  int mode = GetEncryptionMode(db.definition());
  if (mode == kEncryptionDisabled) return false;
  if (mode == kEncryptEntireDatabase) {
    if (AskPassword(ui, PasswordMode::kEncryption) != 1) return false;
  } else if (!AskMatchingPassword(db.definition(), ui)) {
    return false;
  }
  ui.prompter.busy(true);
  bool done = EncryptDatabase(db, ui.password_buffer);
  ui.prompter.busy(false);
  return done;
}

}  // namespace qv
