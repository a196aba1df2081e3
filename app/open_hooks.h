#pragma once
// What the application asks of the security and conversion code when it opens a database or
// guards a command. Kept behind small interfaces so the flows can be tested with any answer.

#include <optional>
#include <string>

#include "engine/database.h"
#include "engine/workspace.h"

namespace qv::app {

// The guarded actions, numbered as the access permission word numbers them.
enum class Guarded { OpenDatabase = 0, AddRecords = 1, EditRecords = 2, DeleteRecords = 3,
                     DbProperties = 4, DeleteDatabase = 5, EditPopups = 6, BeamData = 7 };

// 1 go ahead, 2 view only, 0 refused.
inline constexpr int kAccessRefused = 0;
inline constexpr int kAccessFull = 1;
inline constexpr int kAccessViewOnly = 2;

class AccessGate {
 public:
  virtual ~AccessGate() = default;
  // Before a loaded file is put into its slot: whether its settings let it be opened (asking
  // for the access password where they say so).
  virtual bool AllowOpen(Workspace& workspace, Database& db) = 0;
  // After loading: the encryption password of an enciphered database; false fails the open.
  virtual bool UnlockLoaded(Workspace& workspace, Database& db) = 0;
  // The check every guarded command makes.
  virtual int CheckAccess(Workspace& workspace, Database& db, Guarded action, bool show_message) = 0;
  // Just before a database is saved and closed: enciphers it when its settings say so.
  virtual void EncipherOnClose(Workspace&, Database&) {}
  // Before a record is opened or edited in the list: a record whose fields are enciphered is
  // deciphered under the encryption password; false keeps it closed.
  virtual bool DecipherRecord(Workspace&, Database&, std::uint32_t) { return true; }
  // As the record editor closes a record: its marked fields are enciphered in mode 1, and in
  // mode 2 when its "Encrypt" box is ticked (`manual`).
  virtual void EncipherRecord(Workspace&, Database&, std::uint32_t, bool) {}
  // "Set Access Password" of the security page; false when cancelled.
  virtual bool ChangeAccessPassword(Workspace&, Database&) { return false; }
};

// Every action open to everyone (batch work and tests; the program uses SecurityAccessGate).
class OpenAccessGate : public AccessGate {
 public:
  bool AllowOpen(Workspace&, Database&) override { return true; }
  bool UnlockLoaded(Workspace&, Database&) override { return true; }
  int CheckAccess(Workspace&, Database&, Guarded, bool) override { return kAccessFull; }
};

// Databases of the older 2.x layout, converted when they are opened.
class FormatConverter {
 public:
  virtual ~FormatConverter() = default;
  virtual bool IsOlderFormat(const std::string& path) = 0;
  // The parent database that must be converted before this one, if any.
  virtual std::optional<std::string> ParentToConvertFirst(const std::string& path) = 0;
  virtual bool Convert(const std::string& path, Workspace& workspace) = 0;
};

// Recognises no file as a 2.x database; in force until the conversion exists.
class NoFormatConverter : public FormatConverter {
 public:
  bool IsOlderFormat(const std::string&) override { return false; }
  std::optional<std::string> ParentToConvertFirst(const std::string&) override { return std::nullopt; }
  bool Convert(const std::string&, Workspace&) override { return false; }
};

// The alarm code a notification launch is handed to. Its answer: -1 nothing loaded, 2 show the
// record that AlarmDatabase and LastRecord name, anything else handled.
class NotificationHandler {
 public:
  virtual ~NotificationHandler() = default;
  virtual int HandleNotification(int alarm_number, Workspace& workspace) = 0;
};

// Loads no alarm: for work that must not raise any (tests, benchmarks).
class NoNotificationHandler : public NotificationHandler {
 public:
  int HandleNotification(int, Workspace&) override { return -1; }
};

}  // namespace qv::app
