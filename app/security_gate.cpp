#include "app/security_gate.h"

#include "security/access.h"
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
  EncipherOnDatabaseClose(db, ui);
}

bool SecurityAccessGate::DecipherRecord(Workspace& workspace, Database& db, std::uint32_t number) {
  SecurityUi ui{workspace.prompter, passwords_, workspace.password_buffer};
  return DecipherOnRecordOpen(db, number, ui);
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
