// Ended by a signal (logout, a closed terminal, Ctrl+C) the program closes as Exit would: a
// modified database is saved when AutoSave allows it without a question, otherwise its changes
// are kept and offered at the next start; the preferences are written either way.

#include <signal.h>
#include <unistd.h>

#include <QtTest>

#include "app/signal_watcher.h"
#include "tests/app/app_fakes.h"

using namespace qv;
using namespace qv::app;

namespace {

std::unique_ptr<test::AppHarness> StartedOnFruit() {
  auto h = std::make_unique<test::AppHarness>();
  h->settings.values["LastFileUsed"] = h->WriteDatabase(test::SampleDatabase("Fruit"), "Db.PDB");
  h->application.Start({});
  return h;
}

// Sends the signal to this process and lets the event loop end the session.
void EndBySignal(test::AppHarness& h, int number) {
  SignalWatcher watcher;
  bool ended = false;
  QObject::connect(&watcher, &SignalWatcher::received, [&] {
    h.application.EndSession(true);
    ended = true;
  });
  ::kill(::getpid(), number);
  QTRY_VERIFY(ended);
}

std::string DoneOnDisk(test::AppHarness& h, const std::string& path) {
  Database db;
  return LoadDatabase(db, path, h.prompter) ? RecordValueText(db, 0, 2, {}) : "unreadable";
}

}  // namespace

class SignalExitTest : public QObject {
  Q_OBJECT
 private slots:
  void sigtermSavesTheChangeAndWritesPreferences() {
    auto h = StartedOnFruit();
    const std::string path = h->settings.values.at("LastFileUsed");
    h->application.workspace().preferences.allow_popups = true;
    h->application.window().panel()->Tap(0, 2);  // checks "Done" of the first record
    // While it holds unsaved changes the program holds the file's lock.
    h->application.changes_lock().Sync();
    auto holder = FindLockHolder(path);
    QVERIFY(holder && holder->pid == ::getpid());

    EndBySignal(*h, SIGTERM);
    QCOMPARE(DoneOnDisk(*h, path), std::string("1"));
    QVERIFY(!FindLockHolder(path));
    h->application.Shutdown();
    QVERIFY(h->prompter.Questions().empty());
    QCOMPARE(h->settings.values.at("AllowPopups"), std::string("1"));
    QCOMPARE(h->settings.values.at("LastFileUsed"), path);
  }

  void withoutAutoSaveTheChangesAreOfferedAtTheNextStart() {
    auto h = StartedOnFruit();
    const std::string path = h->settings.values.at("LastFileUsed");
    h->application.workspace().preferences.auto_save = false;
    h->application.window().panel()->Tap(0, 2);
    EndBySignal(*h, SIGHUP);
    h->application.Shutdown();
    QVERIFY(h->prompter.Questions().empty());  // nobody was there to answer
    QCOMPARE(DoneOnDisk(*h, path), std::string("0"));
    QVERIFY(QFile::exists(QString::fromStdString(path + ".recovery")));
    QCOMPARE(h->settings.values.at("AutoSave"), std::string("0"));

    Application next(ApplicationServices{h->settings, h->paths, h->clock, h->prompter, h->dialogs,
                                         h->access, h->converter, h->alarms});
    h->prompter.Queue(Answer::Yes);
    next.Start({});
    QVERIFY(h->prompter.Questions().back().find("Restore them?") != std::string::npos);
    Database& restored = next.workspace().current();
    QCOMPARE(restored.path, path);
    QVERIFY(restored.changed);
    QCOMPARE(RecordValueText(restored, 0, 2, {}), std::string("1"));
    QVERIFY(!QFile::exists(QString::fromStdString(path + ".recovery")));
    next.Shutdown();  // the shut-down saves it, as any modified database
    QCOMPARE(DoneOnDisk(*h, path), std::string("1"));
  }

  void commitDataRequestKeepsTheChangesAndTheSession() {
    auto h = StartedOnFruit();
    const std::string path = h->settings.values.at("LastFileUsed");
    h->application.workspace().preferences.auto_save = false;
    h->application.window().panel()->Tap(0, 2);
    h->application.EndSession(false);  // the session manager asks; the program runs on
    QVERIFY(h->prompter.Questions().empty());
    QVERIFY(QFile::exists(QString::fromStdString(path + ".recovery")));
    QVERIFY(h->application.workspace().current().changed);  // still to be saved or declined
    QCOMPARE(DoneOnDisk(*h, path), std::string("0"));
    // The logout was cancelled and the program closed normally later: nothing stale is offered.
    h->application.Shutdown();
    QVERIFY(!QFile::exists(QString::fromStdString(path + ".recovery")));
    QCOMPARE(h->settings.values.at("RecoveryFile"), std::string());
  }
};

QTEST_MAIN(SignalExitTest)
#include "signal_exit_test.moc"
