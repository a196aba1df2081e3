// A second launch that arrives while a dialog is open waits for it to close: the dialog's
// database is not replaced under it and the start chooser's list is not reordered under it.

#include <QtTest>

#include "app/commands.h"
#include "app/recent_files.h"
#include "tests/app/app_fakes.h"

using namespace qv;
using namespace qv::app;

namespace {

// Scripted dialogs during which a second launch arrives.
class DialogsWithArrival : public test::ScriptedDialogs {
 public:
  std::optional<DeleteScope> AskDeleteScope() override {
    WhileOpen();
    return delete_scope;
  }
  StartChoice ChooseStart(const std::vector<RecentEntry>& entries) override {
    StartChoice choice = test::ScriptedDialogs::ChooseStart(entries);
    WhileOpen();
    return choice;
  }
  std::function<void()> arrival;

 private:
  void WhileOpen() {
    if (arrival) arrival();
    QTest::qWait(250);  // the dialog's own event loop runs on
  }
};

struct Harness {
  test::TempPaths paths;
  test::MemorySettings settings;
  test::FixedClock clock;
  test::ScriptedPrompter prompter;
  DialogsWithArrival dialogs;
  test::ScriptedAccess access;
  NoFormatConverter converter;
  NoNotificationHandler alarms;
  Application application{
      ApplicationServices{settings, paths, clock, prompter, dialogs, access, converter, alarms}};

  std::string Write(const std::string& name, int rows) {
    test::DatabaseBuilder b(name);
    b.Field("Name", kText);
    for (int i = 0; i < rows; ++i) b.Row({name + std::to_string(i)});
    auto db = b.Build();
    QDir().mkpath(QString::fromStdString(paths.DataFolder()));
    db->path = paths.DataFolder() + "/" + name + ".PDB";
    SaveDatabase(*db, clock);
    return db->path;
  }
  std::uint32_t RecordsOnDisk(const std::string& path) {
    Database db;
    return LoadDatabase(db, path, prompter) ? db.count() : 0xFFFFFFFF;
  }
};

}  // namespace

class LaunchQueueTest : public QObject {
  Q_OBJECT
 private slots:
  void deleteRecordsDeletesFromTheDatabaseItWasOpenedOn() {
    Harness h;
    std::string small = h.Write("Small", 14), big = h.Write("Big", 40);
    h.settings.values["LastFileUsed"] = small;
    h.application.Start({});
    MainWindow& w = h.application.window();
    h.dialogs.delete_scope = DeleteScope::All;
    h.dialogs.arrival = [&] { w.HandleLaunchText(QString::fromStdString(big)); };
    w.RunCommand(command::kDeleteRecords);
    QCOMPARE(w.launches().pending(), 1);  // held while the command ran
    QTRY_COMPARE(h.application.workspace().current().name, std::string("Big"));
    QCOMPARE(h.application.workspace().current().count(), 40u);
    QCOMPARE(h.RecordsOnDisk(big), 40u);
    QCOMPARE(h.RecordsOnDisk(small), 0u);  // deleted there, then saved when Big was handed over
  }

  void startChooserOpensTheFileChosenInIt() {
    Harness h;
    std::string a = h.Write("A", 1), b = h.Write("B", 2), c = h.Write("C", 3);
    AddRecentFile(h.settings, b);
    AddRecentFile(h.settings, a);                       // the chooser lists A, B
    h.dialogs.start_choice = {StartChoice::Recent, 1};  // B
    h.dialogs.arrival = [&] { h.application.window().HandleLaunchText(QString::fromStdString(c)); };
    h.application.Start({});
    QCOMPARE(h.dialogs.chooser_entries.at(0).at(1).name, std::string("B"));
    QTRY_COMPARE(h.application.workspace().current().name, std::string("C"));
    // B was opened as chosen, then C as handed over.
    QCOMPARE(*GetRecentFile(h.settings, 0), c);
    QCOMPARE(*GetRecentFile(h.settings, 1), b);
    QCOMPARE(*GetRecentFile(h.settings, 2), a);
  }
};

QTEST_MAIN(LaunchQueueTest)
#include "launch_queue_test.moc"
