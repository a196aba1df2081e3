#include "security/protected_open.h"

#include <string>

#include "engine/record_check.h"
#include "security/database_crypt.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv {

namespace {

// Decodes every record body under the key into `records`; false, with `records` as it was,
// when a record does not read as values (a wrong password that passed the 8-bit verifier).
bool DecipherBodies(Database& db, const ExpandedKey& key) {
  RecordTable kept = db.records;
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    if (!DecryptRecordBody(db, i, key)) continue;
    if (!RecordDecodes(db.definition(), db.records[i].data)) {
      db.records = std::move(kept);
      return false;
    }
  }
  return true;
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

bool AskEncipherPassword(Database& db, SecurityUi& ui) {
  if (db.session_password) {
    ui.password_buffer = *db.session_password;
    return true;
  }
  const DatabaseDefinition& definition = db.definition();
  if (!GetVerifier(definition).present) {
    if (AskNewPassword(ui, PasswordMode::kEncryption) != 1) return false;
    db.session_password = ui.password_buffer;
    return true;
  }
  for (int attempt = 0;; ++attempt) {
    if (AskPassword(ui, PasswordMode::kEncryption, attempt) != 1) return false;
    std::string question = std::string(kRecordPasswordMismatch) + kContinueAnyway;
    if (CheckVerifier(definition, ui.password_buffer) ||
        ui.passwords.ConfirmPassword(ui.prompter, question, "Question")) {
      db.session_password = ui.password_buffer;
      return true;
    }
  }
}

bool UnlockEncipheredDatabase(Database& db, SecurityUi& ui) {
  DatabaseDefinition& definition = db.definition();
  if (!IsDatabaseEnciphered(definition)) return true;
  const bool bodies = GetEncryptionMode(definition) == kEncryptEntireDatabase;
  for (int attempt = 0;; ++attempt) {
    if (AskPassword(ui, PasswordMode::kEncryption, attempt) != 1) return false;
    if (CheckVerifier(definition, ui.password_buffer)) {
      ui.prompter.busy(true);
      bool decoded = !bodies || DecipherBodies(db, MakeKey(ui.password_buffer));
      ui.prompter.busy(false);
      if (decoded) break;
    }
    ui.prompter.message(kWrongPasswordOnOpen, kAccessDeniedCaption, Icon::Exclamation);
  }
  db.session_password = ui.password_buffer;
  // Memory only: closing in mode 0 enciphers again and sets both once more.
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
  // The verifier the database opened with; the session's password still matches it.
  Verifier opened = GetVerifier(db.definition());
  opened.present = true;
  if (!AskEncipherPassword(db, ui)) return EncipherResult::kCancelled;
  ui.prompter.busy(true);
  EncryptDatabase(db, ui.password_buffer);
  if (VerifierAccepts(opened, ui.password_buffer)) SetVerifier(db.definition(), opened);
  ui.prompter.busy(false);
  return EncipherResult::kEnciphered;
}

EncipherResult EncipherRecord(Database& db, std::uint32_t index, SecurityUi& ui) {
  if (index >= db.count() || !AnyFieldMarked(db.definition())) return EncipherResult::kNotNeeded;
  auto header = ReadRecordHeader(db.records[index].data);
  if (header && header->has(kRecordFieldsEnciphered)) return EncipherResult::kNotNeeded;
  if (!AskEncipherPassword(db, ui)) return EncipherResult::kCancelled;
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
  if (db.session_password) {
    ui.password_buffer = *db.session_password;
  } else if (AskPassword(ui, PasswordMode::kEncryption) != 1) {
    return false;
  }
  Bytes copy = db.records[index].data;
  if (DecryptRecordFields(db.definition(), copy, MakeKey(ui.password_buffer)) != 1) {
    ui.prompter.message(kRecordNotDecrypted, "Error", Icon::Error);
    return false;
  }
  db.records[index].data = std::move(copy);
  db.session_password = ui.password_buffer;
  // Enciphered again before the file is written.
  db.encipher_on_save.push_back(db.records[index].uid);
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
  if (!AskEncipherPassword(db, ui)) return false;
  ui.prompter.busy(true);
  bool done = EncryptDatabase(db, ui.password_buffer);
  ui.prompter.busy(false);
  return done;
}

}  // namespace qv
