#pragma once
// The access permissions, passwords and database encryption of each database, asked through
// the program's prompters.

#include "app/open_hooks.h"
#include "platform/password_prompter.h"

namespace qv::app {

class SecurityAccessGate : public AccessGate {
 public:
  explicit SecurityAccessGate(PasswordPrompter& passwords) : passwords_(passwords) {}
  bool AllowOpen(Workspace& workspace, Database& db) override;
  bool UnlockLoaded(Workspace& workspace, Database& db) override;
  int CheckAccess(Workspace& workspace, Database& db, Guarded action, bool show_message) override;
  void EncipherOnClose(Workspace& workspace, Database& db) override;
  bool DecipherRecord(Workspace& workspace, Database& db, std::uint32_t number) override;
  void EncipherRecord(Workspace& workspace, Database& db, std::uint32_t number, bool manual) override;
  bool ChangeAccessPassword(Workspace& workspace, Database& db) override;

 private:
  PasswordPrompter& passwords_;
};

}  // namespace qv::app
