#include "app/security_gate.h"

#include "processing/filter.h"
#include "security/access.h"
#include "security/cipher_session.h"
#include "security/enciphered.h"
#include "security/protected_open.h"
#include "security/settings.h"

namespace qv::app {

bool SecurityAccessGate::AllowOpen(Workspace& workspace, Database& db) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  return CheckOpenAccess(db.definition(), ui);
}

bool SecurityAccessGate::UnlockLoaded(Workspace& workspace, Database& db) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  return UnlockEncipheredDatabase(db, ui);
}

int SecurityAccessGate::CheckAccess(Workspace& workspace, Database& db, Guarded action,
                                    bool show_message) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  return qv::CheckAccess(db.definition(), static_cast<int>(action), show_message, ui);
}

void SecurityAccessGate::EncipherOnClose(Workspace& workspace, Database& db) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  // A cancelled prompt leaves the database plain, as the user chose.
  EncipherBeforeSave(db, ui);
}

bool SecurityAccessGate::DecipherRecord(Workspace& workspace, Database& db,
                                        std::uint32_t number) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  if (!IsRecordEnciphered(db, number)) return true;
  if (!DecipherOnRecordOpen(db, number, ui)) return false;
  // The password is asked once per session: every record it deciphers is readable from now on.
  DecipherForReading(db, ui);
  RebuildFilteredList(db);
  return true;
}

void SecurityAccessGate::EncipherRecord(Workspace& workspace, Database& db, std::uint32_t number,
                                        bool manual) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  // A cancelled prompt leaves the record plain, as the user chose.
  if (GetEncryptionMode(db.definition()) == kEncryptMarkedFields) {
    EncipherOnRecordClose(db, number, ui);
  } else if (manual && GetEncryptionMode(db.definition()) == kManualEncryption) {
    qv::EncipherRecord(db, number, ui);
  }
}

bool SecurityAccessGate::ChangeAccessPassword(Workspace& workspace, Database& db) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  return qv::ChangeAccessPassword(db.definition(), ui);
}

}  // namespace qv::app
