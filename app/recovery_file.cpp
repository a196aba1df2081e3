#include "app/recovery_file.h"

#include <sys/stat.h>

#include <cstdio>

#include "app/core_calls.h"
#include "app/recent_files.h"
#include "engine/text.h"
#include "platform/password_prompter.h"
#include "security/cipher_session.h"
#include "security/settings.h"

namespace qv::app {

namespace {
constexpr const char* kFileKey = "RecoveryFile";
constexpr const char* kForKey = "RecoveryFor";
constexpr const char* kStampKey = "RecoveryStamp";

// Shut-down cannot ask for a password: every prompt is cancelled.
class NoPasswordToAsk : public PasswordPrompter {
 public:
  std::optional<std::string> AskPassword(PasswordMode, std::string_view, std::string_view,
                                         int) override {
    return std::nullopt;
  }
};

// A database enciphered on close needs its password to be saved: that is a question.
bool NeedsQuestionToSave(const Database& db) {
  return GetEncryptionMode(db.definition()) == kEncryptEntireDatabase &&
         !IsDatabaseEnciphered(db.definition()) && db.count() > 0;
}
}  // namespace

std::string RecoveryPath(const Database& db, const std::string& data_folder) {
  return (db.unsaved() ? data_folder + "/Untitled.PDB" : db.path) + ".recovery";
}

bool KeepForRecovery(Settings& settings, const Database& db, const std::string& data_folder) {
  std::string path = RecoveryPath(db, data_folder);
  Bytes image = SerializeDatabase(db);
  if (SaveFileAtomically(path, image).result != WriteResult::Written) return false;
  ::chmod(path.c_str(), 0600);  // unsaved work, possibly of a protected database
  settings.write(kFileKey, path);
  settings.write(kForKey, db.unsaved() ? std::string() : db.path);
  settings.write(kStampKey, db.unsaved() ? std::string() : db.disk.ToText());
  return true;
}

std::unique_ptr<Database> TakeRecovery(Settings& settings, Prompter& prompter,
                                       const std::function<bool(Database&)>& accept) {
  auto path = settings.read(kFileKey);
  if (!path || path->empty()) return nullptr;
  std::string original = settings.read(kForKey).value_or("");
  auto image = ReadWholeFile(*path);
  if (!image) {
    settings.write(kFileKey, "");
    return nullptr;
  }
  std::string shown = original.empty() ? std::string("Untitled") : original;
  Answer answer = prompter.ask(
      StringPrintf("Quorvant was ended while %s had changes that were not saved. They were kept "
                   "in %s. Restore them?",
                   shown.c_str(), path->c_str()),
      "QUESTION", Buttons::YesNo, Icon::Question);
  auto db = std::make_unique<Database>();
  std::uint32_t bad_record = 0;
  if (answer == Answer::Yes && ParseDatabase(*image, *db, bad_record) == ReadError::None) {
    db->path = original.empty() ? std::string(kUntitledPath) : original;
    // A file changed since the changes were made is still not overwritten by them.
    if (!original.empty())
      db->disk = FileStamp::FromText(original, settings.read(kStampKey).value_or(""));
    db->loaded = true;
    db->changed = true;
    if (!accept(*db)) return nullptr;  // kept for another start
  } else {
    db.reset();
  }
  settings.write(kFileKey, "");
  std::remove(path->c_str());
  return db;
}

void DropRecovery(Settings& settings) {
  auto path = settings.read(kFileKey);
  if (!path || path->empty()) return;
  std::remove(path->c_str());
  settings.write(kFileKey, "");
}

void CloseUnattended(Workspace& workspace, const Paths& paths, bool quitting) {
  for (int i = 0; i <= workspace.index(); ++i) {
    Database* db = workspace.slot(i);
    if (!db || !db->loaded || !db->changed) continue;
    bool saved = false;
    if (workspace.preferences.auto_save && !db->unsaved() && !NeedsQuestionToSave(*db)) {
      if (db->current < db->count())  // reopening puts the user back on this record
        db->definition().set_return_record(
            static_cast<std::uint16_t>(db->current + kSchemaRecords));
      // Records held plain in memory go back enciphered under the session's password; without
      // one nobody can be asked now, so the work goes to the recovery file instead.
      NoPasswordToAsk nobody;
      SecurityUi ui{workspace.prompter, nobody, workspace.password_buffer};
      saved = EncipherBeforeSave(*db, ui) && SaveDatabase(*db, workspace.clock);
      if (saved) AddRecentFile(workspace.settings, db->path);
    }
    if (!saved && KeepForRecovery(workspace.settings, *db, paths.DataFolder()) && quitting)
      db->changed = false;
  }
}

}  // namespace qv::app
