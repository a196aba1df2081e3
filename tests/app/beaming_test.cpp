// Beaming between two running programs over loopback: a record, the view's records and a
// database file sent from one window arrive in the other; the access check, a peer that never
// answers and Cancel; the prompter the beaming threads ask through; and the screens of beaming
// and of the preferences.

#include "app/beaming.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>
#include <atomic>
#include <fstream>
#include <thread>

#include "app/beam_dialogs.h"
#include "app/cross_thread_prompter.h"
#include "app/preferences_dialog.h"
#include "exchange/obex_socket.h"
#include "tests/app/app_fakes.h"
#include "tests/app/screenshot.h"

using namespace qv;
using namespace qv::app;

namespace {

// A port nothing listens on at the moment of asking.
std::uint16_t FreePort() {
  int error = 0;
  Socket probe = ListenOn({"127.0.0.1", 0}, error);
  return BoundPort(probe);
}

std::unique_ptr<test::AppHarness> StartedOn(std::unique_ptr<Database> db) {
  auto h = std::make_unique<test::AppHarness>();
  h->settings.values["LastFileUsed"] = h->WriteDatabase(std::move(db), "Db.PDB");
  h->application.Start({});
  return h;
}

std::vector<std::string> Names(test::AppHarness& h) {
  return test::Column(h.application.workspace().current(), 0);
}

Beaming& BeamingOf(test::AppHarness& h) {
  return h.application.window().beaming();
}

QByteArray FileContents(const std::string& path) {
  QFile file(QString::fromStdString(path));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class BeamingTest : public QObject {
  Q_OBJECT

  // A receiving program listening on a free loopback port and a sending program beaming to it.
  std::unique_ptr<test::AppHarness> receiver_, sender_;

  void Pair() {
    const std::uint16_t port = FreePort();
    receiver_ = StartedOn(test::SampleDatabase("Sample"));
    receiver_->settings.values["Comm/IrDA/Port"] = std::to_string(port);
    receiver_->prompter.default_answer = Answer::Yes;
    sender_ = StartedOn(test::SampleDatabase("Sample"));
    sender_->settings.values["Comm/IrDA/Peer"] = "127.0.0.1:" + std::to_string(port);
    BeamingOf(*receiver_).Receive();
    QVERIFY(BeamingOf(*receiver_).listening());
    QTRY_COMPARE(BeamingOf(*receiver_).listenPort(), port);
  }

  // Beams with the records choice given and waits for the receiver to deal with the object.
  int BeamAndWait(std::optional<bool> view, bool database = false) {
    Beaming& out = BeamingOf(*sender_);
    out.setRecordsChoice([view](bool, int) { return view; });
    QSignalSpy sent(&out, &Beaming::sendEnded);
    QSignalSpy handled(&BeamingOf(*receiver_), &Beaming::objectHandled);
    database ? out.BeamDatabase() : out.BeamRecords();
    if (!sent.wait(10000) || sent.at(0).at(0).toInt() != 1) return -1;
    if (handled.isEmpty() && !handled.wait(10000)) return -1;
    return handled.at(0).at(0).toInt();
  }

 private slots:
  void cleanup() {
    receiver_.reset();
    sender_.reset();
  }

  void aRecordAndTheViewArriveInTheOpenDatabase() {
    Pair();
    sender_->application.workspace().current().current = 1;  // banana
    QCOMPARE(BeamAndWait(false), 1);
    QCOMPARE(receiver_->prompter.Questions().back(),
             std::string("Do you want to accept the data: Sample: Record 2"));
    auto names = Names(*receiver_);
    QCOMPARE(names.size(), std::size_t{5});
    QCOMPARE(names.back(), std::string("banana"));
    // The list shows the new record without being asked.
    QCOMPARE(receiver_->application.window().panel()->model()->rowCount(), 5);
    // Listening went on after the object, and the sender's port was free again for the next.
    QVERIFY(BeamingOf(*receiver_).listening());
    QVERIFY(!BeamingOf(*sender_).sending());

    QCOMPARE(BeamAndWait(true), 1);
    QCOMPARE(receiver_->prompter.Questions().back(),
             std::string("Do you want to accept the data: Sample: Filtered Records"));
    QCOMPARE(Names(*receiver_).size(), std::size_t{9});
    QCOMPARE(receiver_->application.window().panel()->model()->rowCount(), 9);
    QVERIFY(receiver_->prompter.Messages().empty());
  }

  void aDeclinedObjectLeavesNothingAndTheFileIsGone() {
    Pair();
    receiver_->prompter.default_answer = Answer::No;
    QCOMPARE(BeamAndWait(true), 0);
    QCOMPARE(Names(*receiver_).size(), std::size_t{4});
    QDir temp(QString::fromStdString(receiver_->paths.TempFolder()));
    QVERIFY(temp.entryList({"IrData*"}, QDir::Files).isEmpty());
  }

  void aDatabaseFileIsStoredByteForByte() {
    Pair();
    QCOMPARE(BeamAndWait(std::nullopt, true), 1);
    const std::string stored = receiver_->paths.DataFolder() + "/Sample.PDB";
    QCOMPARE(FileContents(stored), FileContents(sender_->application.workspace().current().path));
    QCOMPARE(receiver_->prompter.Questions().back(),
             std::string("Do you want to accept the file: Sample"));
  }

  void refusedBeamDataSendsNothing() {
    Pair();
    sender_->access.beam_access = kAccessRefused;
    QSignalSpy sent(&BeamingOf(*sender_), &Beaming::sendEnded);
    BeamingOf(*sender_).setRecordsChoice([](bool, int) { return true; });
    BeamingOf(*sender_).BeamRecords();
    BeamingOf(*sender_).BeamDatabase();
    QVERIFY(!BeamingOf(*sender_).sending());
    QVERIFY(!sent.wait(300));
    QVERIFY(BeamingOf(*receiver_).listening());
  }

  void aPeerThatNeverAnswersIsCancelledFromTheKeyboard() {
    auto h = StartedOn(test::SampleDatabase("Sample"));
    h->settings.values["Comm/IrDA/Peer"] = "127.0.0.1:" + std::to_string(FreePort());
    Beaming& out = BeamingOf(*h);
    out.setRecordsChoice([](bool, int) { return true; });
    QSignalSpy sent(&out, &Beaming::sendEnded);
    out.BeamRecords();
    QVERIFY(out.sending());
    BeamProgressDialog* dialog = out.progressDialog();
    QVERIFY(dialog);
    QTRY_VERIFY(dialog->findChild<QLabel*>() &&
                dialog->findChild<QLabel*>()->text() == "Looking for Sending Device....");
    QCOMPARE(dialog->windowTitle(), QString("Beam Data"));
    test::Shoot(*dialog, "beam_looking");
    // Still looking a while later: nobody answers, nothing is shown.
    QVERIFY(!sent.wait(400));
    QTest::keyClick(dialog, Qt::Key_Escape);
    QVERIFY(sent.wait(3000));
    QCOMPARE(sent.at(0).at(0).toInt(), 0);
    QVERIFY(!out.sending());
    // A cancelled send is no failure: no message.
    QVERIFY(h->prompter.Messages().empty());
  }

  void receivingIsCancelledFromItsDialog() {
    auto h = StartedOn(test::SampleDatabase("Sample"));
    h->settings.values["Comm/IrDA/Port"] = std::to_string(FreePort());
    Beaming& in = BeamingOf(*h);
    in.Receive();
    QVERIFY(in.listening());
    ReceiveDialog* dialog = in.receiveDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->status(), QString("Looking for sending device...    (Align infrared ports)"));
    test::Shoot(*dialog, "beam_receive");
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!in.listening());
  }

  void aPortThatCannotBeBoundSaysWhichSetting() {
    int error = 0;
    Socket taken = ListenOn({"127.0.0.1", 0}, error);
    auto h = StartedOn(test::SampleDatabase("Sample"));
    h->settings.values["Comm/IrDA/Port"] = std::to_string(BoundPort(taken));
    QSignalSpy ended(&BeamingOf(*h), &Beaming::listenerEnded);
    BeamingOf(*h).Receive();
    QVERIFY(ended.wait(5000));
    QCOMPARE(ended.at(0).at(0).toBool(), false);
    QVERIFY(!h->prompter.Messages().empty());
    const std::string text = h->prompter.Messages().back();
    QVERIFY(text.find("Could not take control of the IR port") != std::string::npos);
    QVERIFY(text.find("Comm/IrDA/Port (Port under Beaming in Preferences)") != std::string::npos);
    QVERIFY(!BeamingOf(*h).receiveDialog());
  }

  void aClosedPrompterReleasesTheThreadWaitingOnIt() {
    test::ScriptedPrompter inner;
    inner.default_answer = Answer::Yes;
    QObject context;
    CrossThreadPrompter prompter(&context, inner);
    std::atomic<int> answer{-1};
    auto ask = [&] {
      answer = static_cast<int>(prompter.ask("Keep?", "Accept?", Buttons::YesNo, Icon::Question));
    };
    std::thread waiting(ask);
    // This thread is busy (no events): the question waits for it.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    QCOMPARE(answer.load(), -1);
    prompter.Close();
    waiting.join();
    QCOMPARE(answer.load(), static_cast<int>(Answer::No));
    QCoreApplication::processEvents();
    QVERIFY(inner.Questions().empty());  // dropped, not shown late
    prompter.Open();
    std::thread asked(ask);
    QTRY_COMPARE(answer.load(), static_cast<int>(Answer::Yes));
    asked.join();
    QCOMPARE(inner.Questions(), std::vector<std::string>{"Keep?"});
  }

  void theScreensAndTheBeamingPreferences() {
    BeamRecordsDialog records(true, 0);
    QVERIFY(!records.findChildren<QRadioButton*>().at(1)->isEnabled());
    QVERIFY(!records.allRecords());
    test::Shoot(records, "beam_records");
    BeamProgressDialog sending("192.168.1.20:650");
    sending.showProgress("Sending Data...");
    QCOMPARE(sending.windowTitle(), QString("Sending Data"));
    test::Shoot(sending, "beam_sending");

    PreferencesDialog dialog(Preferences{});
    BeamPreferences shown;
    shown.peer = "pda.local:6500";
    shown.port = 6500;
    shown.bind = "192.168.1.5";  // set outside the dialog: kept while the box is left alone
    dialog.setBeaming(shown);
    auto* allow = dialog.findChild<QCheckBox*>("allowNetwork");
    QVERIFY(allow->isChecked());
    QCOMPARE(dialog.beaming().bind, std::string("192.168.1.5"));
    allow->setChecked(false);
    QCOMPARE(dialog.beaming().bind, std::string("127.0.0.1"));
    allow->setChecked(true);
    QCOMPARE(dialog.beaming().bind, std::string("192.168.1.5"));
    dialog.findChild<QLineEdit*>("beamPeer")->setText(" ");
    QCOMPARE(dialog.beaming().peer, std::string("127.0.0.1"));
    QCOMPARE(dialog.beaming().port, 6500);
    test::Shoot(dialog, "preferences_beaming");

    test::MemorySettings settings;
    WriteBeamPreferences(settings, dialog.beaming());
    QCOMPARE(settings.values.at("Comm/IrDA/Port"), std::string("6500"));
    QCOMPARE(ReadBeamPreferences(settings).bind, std::string("192.168.1.5"));
  }
};

QTEST_MAIN(BeamingTest)
#include "beaming_test.moc"
