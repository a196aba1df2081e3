#pragma once
// Scripted screens, a temporary data folder and a ready-made environment for the application
// tests: nothing here opens a window that waits for a user.

#include <QTemporaryDir>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/application.h"
#include "app/dialogs.h"
#include "app/security_gate.h"
#include "engine/database.h"
#include "platform/paths.h"
#include "tests/support/builders.h"
#include "tests/support/fakes.h"
#include "tests/support/scripted_passwords.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {

class TempPaths : public Paths {
 public:
  TempPaths() : folder_(dir_.path().toStdString()) {}
  std::string DocumentsFolder() const override { return folder_; }
  std::string DataFolder() const override { return folder_ + "/Quorvant3"; }
  std::string TempFolder() const override { return folder_; }

 private:
  QTemporaryDir dir_;
  std::string folder_;
};

// Records what was asked and answers from what the test set up.
class ScriptedDialogs : public app::Dialogs {
 public:
  std::optional<std::string> AskOpenPath(const std::string&) override {
    ++open_asked;
    return open_path;
  }
  std::optional<std::string> AskSavePath(const std::string& proposed) override {
    proposed_paths.push_back(proposed);
    if (save_paths.empty()) return std::nullopt;
    auto next = save_paths.front();
    save_paths.pop_front();
    return next;
  }
  app::StartChoice ChooseStart(const std::vector<app::RecentEntry>& entries) override {
    chooser_entries.push_back(entries);
    if (on_choose_start) on_choose_start();
    return start_choice;
  }
  bool DefineNewDatabase(Database& db) override {
    ++define_asked;
    if (!define_accepts) return false;
    FieldDefinition f = db.definition().field(0);
    f.set_type(kText);
    f.set_name("Name");
    return true;
  }
  bool OpenRecord(Database&, std::uint32_t number, bool view_only) override {
    opened_records.push_back(number);
    last_view_only = view_only;
    return false;
  }
  bool EditPreferences(Preferences& p) override {
    if (!preferences) return false;
    p = *preferences;
    return true;
  }
  std::optional<app::DeleteScope> AskDeleteScope() override { return delete_scope; }
  std::optional<std::string> ChoosePopupItem(const std::vector<std::string>& items,
                                             const std::string&, const QRect&) override {
    popup_items = items;
    return popup_choice;
  }
  std::optional<Dmy> ChooseDate(const Dmy&, const QRect&) override { return date_choice; }
  std::optional<app::TimeOfDay> ChooseTime(const app::TimeOfDay&, const QRect&) override {
    return time_choice;
  }
  void ShowAbout() override { ++about_shown; }
  void ShowReport(const std::string& text) override { reports.push_back(text); }
  void EditViews(Database& db, Prompter&) override {
    ++views_edited;
    if (edit_views) edit_views(db);
  }
  bool IsRecordOpen() const override { return record_open; }
  std::optional<FindSettings> AskFind(const Database&, const FindSettings&) override {
    ++find_asked;
    return find_settings;
  }
  bool EditSort(Database& db, int view, Prompter&) override {
    return edit_sort ? edit_sort(db, view) : false;
  }
  bool EditFilter(Database& db, int view, const FormatOptions&, Prompter&) override {
    return edit_filter ? edit_filter(db, view) : false;
  }
  std::optional<app::ExportRequest> AskExport(const Database&, const Preferences&) override {
    return export_request;
  }
  std::optional<app::ImportRequest> AskImport(const Database&, const Preferences&) override {
    return import_request;
  }
  std::optional<Bytes> AskSetValue(const Database&, int slot, const FormatOptions&,
                                   Prompter&) override {
    set_value_slots.push_back(slot);
    return set_value;
  }
  // Runs the work at once; with `cancel_long_work` it is run and then reported cancelled, as a
  // Cancel pressed just before the work ends.
  bool RunLong(const std::string& title, app::LongWork work, Prompter& shown) override {
    long_titles.push_back(title);
    work(shown);
    return !cancel_long_work;
  }

  std::optional<std::string> open_path;
  std::deque<std::optional<std::string>> save_paths;
  app::StartChoice start_choice;
  bool define_accepts = true;
  std::optional<Preferences> preferences;
  std::optional<app::DeleteScope> delete_scope;
  std::optional<std::string> popup_choice;
  std::optional<Dmy> date_choice;
  std::optional<app::TimeOfDay> time_choice;
  bool record_open = false;
  std::optional<FindSettings> find_settings;
  std::function<bool(Database&, int)> edit_sort, edit_filter;
  std::optional<app::ExportRequest> export_request;
  std::optional<app::ImportRequest> import_request;
  std::optional<Bytes> set_value;
  bool cancel_long_work = false;
  std::function<void()> on_choose_start;

  int open_asked = 0;
  int find_asked = 0;
  std::vector<int> set_value_slots;
  std::vector<std::string> long_titles;
  int define_asked = 0;
  int about_shown = 0;
  int views_edited = 0;
  std::vector<std::string> reports;
  std::function<void(Database&)> edit_views;
  std::vector<std::string> proposed_paths;
  std::vector<std::vector<app::RecentEntry>> chooser_entries;
  std::vector<std::uint32_t> opened_records;
  std::vector<std::string> popup_items;
  bool last_view_only = false;
};

// An access gate that refuses chosen actions.
class ScriptedAccess : public app::AccessGate {
 public:
  bool AllowOpen(Workspace&, Database&) override { return allow_open; }
  bool UnlockLoaded(Workspace&, Database&) override { return true; }
  int CheckAccess(Workspace&, Database&, app::Guarded action, bool) override {
    ++checks;
    if (action == app::Guarded::BeamData) return beam_access;
    return action == app::Guarded::EditRecords ? edit_access : app::kAccessFull;
  }
  // The program's own deciphering and enciphering, with passwords from a script.
  bool DecipherRecord(Workspace& workspace, Database& db, std::uint32_t number) override {
    return app::SecurityAccessGate(passwords).DecipherRecord(workspace, db, number);
  }
  void EncipherOnClose(Workspace& workspace, Database& db) override {
    app::SecurityAccessGate(passwords).EncipherOnClose(workspace, db);
  }
  bool allow_open = true;
  int edit_access = app::kAccessFull;
  int beam_access = app::kAccessFull;
  int checks = 0;
  ScriptedPasswords passwords;
};

// Everything an Application needs, in memory and in a temporary folder.
struct AppHarness {
  TempPaths paths;
  MemorySettings settings;
  FixedClock clock;
  ScriptedPrompter prompter;
  ScriptedDialogs dialogs;
  ScriptedAccess access;
  app::NoFormatConverter converter;
  app::NoNotificationHandler alarms;
  app::Application application{app::ApplicationServices{settings, paths, clock, prompter, dialogs,
                                                        access, converter, alarms}};

  // Writes a database file into the data folder and returns its path.
  std::string WriteDatabase(std::unique_ptr<Database> db, const std::string& file) {
    QDir().mkpath(QString::fromStdString(paths.DataFolder()));
    db->path = paths.DataFolder() + "/" + file;
    SaveDatabase(*db, clock);
    return db->path;
  }
};

// A small database: Name (Text), Qty (Integer), Done (Check-Box), Kind (Pop-Up), When (Date).
inline std::unique_ptr<Database> SampleDatabase(const std::string& name = "Sample") {
  DatabaseBuilder b(name);
  b.Field("Name", kText).Field("Qty", kInteger).Field("Done", kCheckBox);
  b.Field("Kind", kPopUp).Items({"Tool", "Part"}).Field("When", kDate);
  b.Row({"apple", "3", "0", "Tool", "NO DATE"});
  b.Row({"banana", "5", "1", "Part", "NO DATE"});
  b.Row({"cherry", "7", "0", "Tool", "NO DATE"});
  b.Row({"apricot", "9", "1", "Part", "NO DATE"});
  return b.Build();
}

}  // namespace qv::test
