// The file flows and the close-with-save rule, with scripted answers.

#include "app/file_flows.h"

#include <QFile>
#include <QtTest>

#include "app/recent_files.h"
#include "app/security_gate.h"
#include "security/access.h"
#include "security/settings.h"
#include "tests/app/app_fakes.h"
#include "tests/support/scripted_passwords.h"

using namespace qv;
using namespace qv::app;

namespace {

struct Flows {
  test::TempPaths paths;
  test::MemorySettings settings;
  test::FixedClock clock;
  test::ScriptedPrompter prompter;
  test::ScriptedDialogs dialogs;
  test::ScriptedAccess access;
  NoFormatConverter converter;
  Workspace ws{prompter, settings, clock};
  FileFlows flows{FlowServices{ws, paths, dialogs, access, converter}};

  Flows() { QDir().mkpath(QString::fromStdString(paths.DataFolder())); }
  std::string Write(std::unique_ptr<Database> db, const std::string& file) {
    db->path = paths.DataFolder() + "/" + file;
    SaveDatabase(*db, clock);
    return db->path;
  }
  // A modified database that was never saved, in the current slot.
  void NewUnsaved() {
    auto db = test::SampleDatabase("Untitled");
    db->path = kUntitledPath;
    db->changed = true;
    ws.ReplaceCurrent(std::move(db));
  }
};

bool Exists(const std::string& path) {
  return QFile::exists(QString::fromStdString(path));
}

}  // namespace

class FileFlowsTest : public QObject {
  Q_OBJECT
 private slots:
  void unchangedDatabaseClosesWithoutQuestion() {
    Flows f;
    f.ws.ReplaceCurrent(test::SampleDatabase());
    QCOMPARE(f.flows.CloseCurrent(true, false), kCloseDone);
    QVERIFY(f.prompter.calls().empty());
  }

  void autoSaveOffAsksAndHonoursEachAnswer() {
    Flows f;
    f.ws.preferences.auto_save = false;
    std::string path = f.Write(test::SampleDatabase("Stock"), "Stock.PDB");
    QVERIFY(f.flows.OpenDatabaseFile(path));
    f.ws.current().changed = true;
    f.prompter.Queue(Answer::Cancel);
    QCOMPARE(f.flows.CloseCurrent(true, false), kCloseCancelled);
    QCOMPARE(f.prompter.Questions().back(), std::string("File (Stock) has changed. Save Changes?"));
    f.prompter.Queue(Answer::No);
    QCOMPARE(f.flows.CloseCurrent(true, false), kCloseDeclined);
    QVERIFY(f.ws.current().changed);
    f.prompter.Queue(Answer::Yes);
    QCOMPARE(f.flows.CloseCurrent(true, false), kCloseDone);
    QVERIFY(!f.ws.current().changed);
    QVERIFY(f.dialogs.proposed_paths.empty());  // a named database is saved where it is
  }

  void exitWithNeverSavedDatabaseAndAutoSaveOffAsks() {
    Flows f;
    f.ws.preferences.auto_save = false;
    f.NewUnsaved();
    // Yes, then a cancelled Save-as dialog: the question comes again; No ends it unsaved.
    f.prompter.Queue(Answer::Yes);
    f.dialogs.save_paths.push_back(std::nullopt);
    f.prompter.Queue(Answer::No);
    QVERIFY(f.flows.Exit());
    QCOMPARE(f.prompter.Questions().size(), std::size_t{2});
    QCOMPARE(f.prompter.Questions()[0], std::string("File (Untitled) has changed. Save Changes?"));
    QCOMPARE(f.dialogs.proposed_paths.at(0), f.paths.DataFolder() + "/Untitled.PDB");
    QCOMPARE(f.settings.values.at("LastFileUsed"), std::string("NONE"));
    QVERIFY(!Exists(f.paths.DataFolder() + "/Untitled1.PDB"));
    // The declined changes are gone, so the shut-down that follows saves nothing.
    QCOMPARE(f.flows.CloseAll(false, true), kCloseDone);
    QVERIFY(!Exists(f.paths.DataFolder() + "/Untitled1.PDB"));
  }

  void silentShutdownSavesUnderFirstFreeUntitledName() {
    Flows f;
    f.ws.preferences.auto_save = false;
    QFile existing(QString::fromStdString(f.paths.DataFolder() + "/Untitled1.PDB"));
    QVERIFY(existing.open(QIODevice::WriteOnly));
    existing.close();
    f.NewUnsaved();
    QCOMPARE(f.flows.CloseAll(false, true), kCloseDone);
    QVERIFY(f.prompter.Questions().empty());
    std::string saved = f.paths.DataFolder() + "/Untitled2.PDB";
    QVERIFY(Exists(saved));
    QCOMPARE(*GetRecentFile(f.settings, 0), saved);
    QVERIFY(!f.ws.has_open_database());
    Database back;
    QVERIFY(LoadDatabase(back, saved, f.prompter));
    QCOMPARE(back.count(), 4u);
  }

  void autoSaveOnAsksOnlyForNeverSavedDatabases() {
    Flows f;
    f.NewUnsaved();
    f.prompter.Queue(Answer::Yes);
    // After Yes the Save-as dialog comes back until a name is given.
    f.dialogs.save_paths = {std::nullopt, std::nullopt, f.paths.DataFolder() + "/Fruit.PDB"};
    QCOMPARE(f.flows.CloseCurrent(true, false), kCloseDone);
    QCOMPARE(f.prompter.Questions().at(0),
             std::string("Database (Untitled) has never been saved. Save Changes?"));
    QCOMPARE(f.dialogs.proposed_paths.size(), std::size_t{3});
    QVERIFY(Exists(f.paths.DataFolder() + "/Fruit.PDB"));
  }

  void closeRemembersTheCurrentRecord() {
    Flows f;
    std::string path = f.Write(test::SampleDatabase(), "S.PDB");
    QVERIFY(f.flows.OpenDatabaseFile(path));
    f.ws.current().current = 2;
    f.ws.current().changed = true;
    QCOMPARE(f.flows.CloseAll(false, true), kCloseDone);
    QVERIFY(f.flows.OpenDatabaseFile(path));
    QCOMPARE(f.ws.current().current, 2u);
  }

  void openRefusesForeignFilesAndKeepsSlotEmpty() {
    Flows f;
    std::string path = f.paths.DataFolder() + "/notes.txt";
    QFile file(QString::fromStdString(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(200, 'x'));
    file.close();
    QVERIFY(!f.flows.OpenDatabaseFile(path));
    QCOMPARE(f.prompter.Messages().back(),
             std::string("ERROR: File selected is not a Quorvant Database!"));
    QCOMPARE(f.prompter.calls().back().caption, std::string("Error"));
    QVERIFY(!f.ws.has_open_database());
    QVERIFY(!GetRecentFile(f.settings, 0));
  }

  void openRefusedByAccessLeavesNothingOpen() {
    Flows f;
    std::string path = f.Write(test::SampleDatabase(), "S.PDB");
    f.access.allow_open = false;
    QVERIFY(!f.flows.OpenDatabaseFile(path));
    QVERIFY(!f.ws.has_open_database());
  }

  void passwordGuardedDatabaseOpensOnlyWithThePassword() {
    Flows f;
    auto db = test::SampleDatabase("Locked");
    SetAccess(db->definition(), kOpenDatabase, kPasswordRequired);
    SetAccessPassword(db->definition(), "pw");
    std::string path = f.Write(std::move(db), "L.PDB");
    test::ScriptedPasswords passwords;
    SecurityAccessGate gate(passwords);
    FileFlows flows{FlowServices{f.ws, f.paths, f.dialogs, gate, f.converter}};
    passwords.Type(std::nullopt);
    QVERIFY(!flows.OpenDatabaseFile(path));
    QVERIFY(!f.ws.has_open_database());
    passwords.Type("wrong").Type("pw");
    QVERIFY(flows.OpenDatabaseFile(path));
    QCOMPARE(f.prompter.Messages().back(), std::string("Invalid Password"));
    QCOMPARE(f.ws.current().name, std::string("Locked"));
    // Refused outright: the access message and nothing opened.
    SetAccess(f.ws.current().definition(), kOpenDatabase, kNoAccess);
    f.ws.current().changed = true;
    QCOMPARE(flows.CloseAll(false, true), kCloseDone);
    QVERIFY(!flows.OpenDatabaseFile(path));
    QCOMPARE(f.prompter.Messages().back(), std::string("Action Not Allowed for this Database!"));
    QCOMPARE(f.prompter.calls().back().caption, std::string("ACCESS DENIED"));
  }

  void firstDatabaseFromLastFileUsed() {
    Flows f;
    std::string path = f.Write(test::SampleDatabase("Fruit"), "Fruit.PDB");
    f.settings.values["LastFileUsed"] = path;
    f.flows.OpenFirstDatabase();
    QVERIFY(f.ws.has_open_database());
    QCOMPARE(f.ws.current().name, std::string("Fruit"));
    QVERIFY(f.dialogs.chooser_entries.empty());
    QCOMPARE(*GetRecentFile(f.settings, 0), path);
  }

  void lastFileNoneOrMissingShowsChooser() {
    for (const char* value : {"NONE", "/nowhere/Gone.PDB"}) {
      Flows f;
      f.settings.values["LastFileUsed"] = value;
      f.flows.OpenFirstDatabase();
      QVERIFY(!f.ws.has_open_database());
      QCOMPARE(f.dialogs.chooser_entries.size(), std::size_t{1});
      QVERIFY(f.prompter.Messages().empty());  // a vanished file is skipped quietly at start
    }
  }

  void alarmDatabaseOpensItsRecordOnce() {
    Flows f;
    std::string path = f.Write(test::SampleDatabase(), "S.PDB");
    f.settings.values["AlarmDatabase"] = path;
    f.settings.values["LastRecord"] = "3";
    f.flows.OpenFirstDatabase();
    QCOMPARE(f.settings.values.at("AlarmDatabase"), std::string());
    QCOMPARE(f.dialogs.opened_records, std::vector<std::uint32_t>{3});
    QCOMPARE(f.ws.current().current, 3u);
  }

  void chooserListsReadableRecentDatabasesWithTheirIndex() {
    Flows f;
    std::string a = f.Write(test::SampleDatabase("Alpha"), "A.PDB");
    std::string b = f.Write(test::SampleDatabase("Beta"), "B.PDB");
    AddRecentFile(f.settings, a);
    AddRecentFile(f.settings, "/nowhere/Gone.PDB");
    AddRecentFile(f.settings, b);
    auto entries = f.flows.StartChooserEntries();
    QCOMPARE(entries.size(), std::size_t{2});
    QCOMPARE(entries[0].name, std::string("Beta"));
    QCOMPARE(entries[1].name, std::string("Alpha"));
    QCOMPARE(entries[1].index, 2);  // the unreadable entry between them keeps its place
    f.dialogs.start_choice = {StartChoice::Recent, 2};
    f.flows.RunStartChooser();
    QCOMPARE(f.ws.current().name, std::string("Alpha"));
  }

  void newDatabaseIsUntitledAndModified() {
    Flows f;
    QVERIFY(f.flows.New());
    QCOMPARE(f.dialogs.define_asked, 1);
    QCOMPARE(f.ws.current().path, std::string(kUntitledPath));
    QVERIFY(f.ws.current().changed);
    // Cancel in the new database's definition leaves the open one open, without a question.
    f.dialogs.define_accepts = false;
    QVERIFY(!f.flows.New());
    QVERIFY(f.ws.has_open_database());
    QVERIFY(f.ws.current().changed);
    QVERIFY(f.prompter.Questions().empty());
  }

  void saveReportsAndRecordsTheFile() {
    Flows f;
    f.NewUnsaved();
    f.dialogs.save_paths.push_back(f.paths.DataFolder() + "/Kept.PDB");
    QVERIFY(f.flows.Save());
    QCOMPARE(f.prompter.Messages().back(), std::string("File Saved"));
    QCOMPARE(f.prompter.calls().back().caption, std::string("Update"));
    QVERIFY(!f.ws.current().changed);
    QCOMPARE(*GetRecentFile(f.settings, 0), f.paths.DataFolder() + "/Kept.PDB");
    // Save As into a folder that does not exist fails and keeps the old path.
    f.dialogs.save_paths.push_back(std::string("/nonexistent-dir/x/Other.PDB"));
    QVERIFY(f.flows.SaveAs());
    auto messages = f.prompter.Messages();
    QCOMPARE(messages.at(messages.size() - 2), std::string("ERROR:File could not be saved"));
    QVERIFY(messages.back().find("for writing") != std::string::npos);  // and why
    QCOMPARE(f.ws.current().path, f.paths.DataFolder() + "/Kept.PDB");
  }

  void secondLaunchOpensItsFile() {
    Flows f;
    std::string path = f.Write(test::SampleDatabase("Other"), "O.PDB");
    NoNotificationHandler alarms;
    QVERIFY(f.flows.HandOff(path, alarms, false));
    QCOMPARE(f.ws.current().name, std::string("Other"));
    // An alarm nobody loads changes nothing.
    QVERIFY(!f.flows.HandOff("AppRunToHandleNotification 4", alarms, false));
    QCOMPARE(f.ws.current().name, std::string("Other"));
  }

  void alarmDuringAnEditIsRefused() {
    struct ShowRecord : NotificationHandler {
      int HandleNotification(int, Workspace&) override { return 2; }
    } alarms;
    Flows f;
    std::string path = f.Write(test::SampleDatabase(), "S.PDB");
    f.settings.values["AlarmDatabase"] = path;
    f.settings.values["LastRecord"] = "1";
    QVERIFY(!f.flows.HandOff("AppRunToHandleNotification 4", alarms, true));
    QVERIFY(f.prompter.Messages().back().rfind("Cannot open this record, as you are in the midst",
                                               0) == 0);
    QCOMPARE(f.settings.values.at("AlarmDatabase"), path);  // left set for later
    QVERIFY(f.flows.HandOff("AppRunToHandleNotification 4", alarms, false));
    QCOMPARE(f.dialogs.opened_records, std::vector<std::uint32_t>{1});
    QCOMPARE(f.settings.values.at("AlarmDatabase"), std::string());
  }
};

QTEST_GUILESS_MAIN(FileFlowsTest)
#include "file_flows_test.moc"
