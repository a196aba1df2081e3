#include "security/cipher_session.h"

#include <algorithm>
#include <string>
#include <vector>

#include "security/database_crypt.h"
#include "security/enciphered.h"
#include "security/protected_open.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv {

namespace {

bool Noted(const Database& db, std::uint32_t uid) {
  return std::find(db.encipher_on_save.begin(), db.encipher_on_save.end(), uid) !=
         db.encipher_on_save.end();
}

// The records that must be enciphered before a save in modes 1 and 2: noted, and plain.
std::vector<std::uint32_t> PendingRecords(const Database& db) {
  std::vector<std::uint32_t> pending;
  if (db.encipher_on_save.empty() || !AnyFieldMarked(db.definition())) return pending;
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    if (!Noted(db, db.records[i].uid)) continue;
    auto header = ReadRecordHeader(db.records[i].data);
    if (!header || !header->has(kRecordFieldsEnciphered)) pending.push_back(i);
  }
  return pending;
}

void EncipherPending(Database& db, const std::vector<std::uint32_t>& pending,
                     const std::string& password) {
  EnableRecordHeaders(db);
  ExpandedKey key = MakeKey(password);
  for (std::uint32_t i : pending) EncipherMarkedFields(db.definition(), db.records[i].data.edit(), key);
  if (!CheckVerifier(db.definition(), password) || !GetVerifier(db.definition()).present)
    WriteVerifier(db.definition(), password);
}

}  // namespace

void NoteStoredRecord(Database& db, std::uint32_t number) {
  if (number >= db.count()) return;
  int mode = GetEncryptionMode(db.definition());
  auto header = ReadRecordHeader(db.records[number].data);
  bool manual = header && header->has(kRecordManualEncrypt);
  if (mode == kEncryptMarkedFields || (mode == kManualEncryption && manual))
    if (!Noted(db, db.records[number].uid)) db.encipher_on_save.push_back(db.records[number].uid);
}

std::size_t DecipherForReading(Database& db, SecurityUi& ui) {
  std::size_t enciphered = CountEnciphered(db);
  int mode = GetEncryptionMode(db.definition());
  if (enciphered == 0 || (mode != kEncryptMarkedFields && mode != kManualEncryption))
    return enciphered;
  if (db.session_password) {
    ui.password_buffer = *db.session_password;
  } else {
    for (int attempt = 0;; ++attempt) {
      if (AskPassword(ui, PasswordMode::kEncryption, attempt) != 1) return enciphered;
      if (CheckVerifier(db.definition(), ui.password_buffer)) break;
      ui.prompter.message(kWrongPasswordOnDecrypt, kAccessDeniedCaption, Icon::Exclamation);
    }
  }
  ExpandedKey key = MakeKey(ui.password_buffer);
  std::size_t left = 0;
  for (RecordSlot& slot : db.records) {
    auto header = ReadRecordHeader(slot.data);
    if (!header || !header->has(kRecordFieldsEnciphered)) {
      left += IsRecordEnciphered(slot.data) ? 1 : 0;
      continue;
    }
    Bytes copy = slot.data;
    if (DecryptRecordFields(db.definition(), copy, key) != 1) {
      ++left;
      continue;
    }
    slot.data = std::move(copy);
    if (!Noted(db, slot.uid)) db.encipher_on_save.push_back(slot.uid);
  }
  if (left < enciphered) db.session_password = ui.password_buffer;
  return left;
}

bool EncipherBeforeSave(Database& db, SecurityUi& ui) {
  int mode = GetEncryptionMode(db.definition());
  if (mode == kEncryptEntireDatabase)
    return EncipherOnDatabaseClose(db, ui) != EncipherResult::kCancelled;
  if (mode != kEncryptMarkedFields && mode != kManualEncryption) {
    db.encipher_on_save.clear();
    return true;
  }
  auto pending = PendingRecords(db);
  if (!pending.empty()) {
    if (!AskEncipherPassword(db, ui)) return false;
    EncipherPending(db, pending, ui.password_buffer);
  }
  db.encipher_on_save.clear();
  return true;
}

Bytes SavedImage(const Database& db) {
  if (!db.session_password) return SerializeDatabase(db);
  Database copy = db;
  const std::string& password = *db.session_password;
  int mode = GetEncryptionMode(copy.definition());
  if (mode == kEncryptEntireDatabase && !IsDatabaseEnciphered(copy.definition()) &&
      copy.count() > 0) {
    Verifier opened = GetVerifier(copy.definition());
    opened.present = true;
    EncryptDatabase(copy, password);
    if (VerifierAccepts(opened, password)) SetVerifier(copy.definition(), opened);
  } else if (mode == kEncryptMarkedFields || mode == kManualEncryption) {
    auto pending = PendingRecords(copy);
    if (!pending.empty()) EncipherPending(copy, pending, password);
  }
  copy.changed = db.changed;
  return SerializeDatabase(copy);
}

}  // namespace qv
