// Print Records, Move and Copy Records To and the 2.x conversion offer, through the main window
// and the open flow, with scripted screens and a stand-in print command.

#include <QMessageBox>
#include <QtTest>
#include <fstream>

#include "app/commands.h"
#include "app/file_flows.h"
#include "app/older_format_converter.h"
#include "app/print_dialog.h"
#include "exchange/conversion.h"
#include "exchange/print_records.h"
#include "tests/app/app_fakes.h"
#include "tests/app/screenshot.h"
#include "tests/support/old_database_builder.h"

using namespace qv;
using namespace qv::app;

namespace {

class ScriptedTransferDialogs : public TransferDialogs {
 public:
  std::optional<PrintChoice> AskPrint(const std::string& command) override {
    shown_command = command;
    return print_choice;
  }
  std::optional<std::string> AskTargetPath(const std::string& folder, bool) override {
    start_folder = folder;
    return target;
  }
  std::optional<PrintChoice> print_choice;
  std::optional<std::string> target;
  std::string shown_command, start_folder;
};

// Keeps the arguments and the file it was given instead of printing.
class RecordingRunner : public ProcessRunner {
 public:
  ProcessResult Run(const std::vector<std::string>& arguments) override {
    this->arguments = arguments;
    std::ifstream in(arguments.back(), std::ios::binary);
    printed.assign(std::istreambuf_iterator<char>(in), {});
    return {true, 0, 0};
  }
  std::vector<std::string> arguments;
  std::string printed;
};

using qv::test::Shoot;

}  // namespace

class RecordTransferTest : public QObject {
  Q_OBJECT
 private slots:
  void printAsksAndKeepsTheCommandInThePreferences() {
    test::AppHarness h;
    h.settings.values["LastFileUsed"] = h.WriteDatabase(test::SampleDatabase(), "Db.PDB");
    h.application.Start({});
    MainWindow& window = h.application.window();
    QVERIFY(window.action(command::kPrintRecords)->isEnabled());
    ScriptedTransferDialogs dialogs;
    RecordingRunner runner;
    window.transfer().setDialogs(&dialogs);
    window.transfer().setRunner(&runner);
    dialogs.print_choice = PrintChoice{false, "lp -d office"};
    window.RunCommand(command::kPrintRecords);
    QCOMPARE(dialogs.shown_command, std::string("lp"));
    QCOMPARE(h.application.workspace().preferences.print_command, std::string("lp -d office"));
    const std::string temp = h.paths.DocumentsFolder() + "/qvprnttemp.txt";
    QCOMPARE(runner.arguments, (std::vector<std::string>{"lp", "-d", "office", temp}));
    QCOMPARE(runner.printed.substr(0, 20), std::string("Name: apple\nQty: 3\nD"));
    QCOMPARE(h.prompter.Messages().back(), std::string("Data Printed OK"));
    QVERIFY(!QFile::exists(QString::fromStdString(temp)));

    dialogs.print_choice.reset();
    runner.arguments.clear();
    window.RunCommand(command::kPrintRecords);
    QCOMPARE(dialogs.shown_command, std::string("lp -d office"));
    QVERIFY(runner.arguments.empty());
    h.application.Shutdown();
    QCOMPARE(h.settings.values["PrintCommand"], std::string("lp -d office"));
  }

  void copyAndMoveRecordsToAnotherFile() {
    test::AppHarness h;
    h.settings.values["LastFileUsed"] = h.WriteDatabase(test::SampleDatabase(), "Db.PDB");
    const std::string target = h.WriteDatabase(test::SampleDatabase("Other"), "Other.PDB");
    h.application.Start({});
    MainWindow& window = h.application.window();
    ScriptedTransferDialogs dialogs;
    window.transfer().setDialogs(&dialogs);
    dialogs.target = target;
    window.RunCommand(command::kCopyRecords);
    QCOMPARE(dialogs.start_folder, h.paths.DataFolder());
    Database copy;
    QVERIFY(LoadDatabase(copy, target, h.prompter));
    QCOMPARE(copy.count(), 8u);
    window.RunCommand(command::kMoveRecords);
    QCOMPARE(h.application.workspace().current().count(), 0u);
    QVERIFY(h.application.workspace().current().changed);
    QVERIFY(window.windowTitle().contains("*"));
    QVERIFY(LoadDatabase(copy, target, h.prompter));
    QCOMPARE(copy.count(), 12u);
  }

  void olderFilesAreOfferedConversionOnOpen() {
    test::AppHarness h;
    QDir().mkpath(QString::fromStdString(h.paths.DataFolder()));
    const std::string old = h.paths.DataFolder() + "/Garden.PDB";
    test::OldDatabaseBuilder("Garden")
        .Field(test::OldFieldSpec(1, "Plant"))
        .Row({test::OldDatabaseBuilder::Text("rose")})
        .Write(old);
    Workspace ws{h.prompter, h.settings, h.clock};
    OlderFormatConverter converter;
    FileFlows flows{FlowServices{ws, h.paths, h.dialogs, h.access, converter}};
    h.prompter.Queue(Answer::No);
    QVERIFY(!flows.OpenDatabaseFile(old));
    QCOMPARE(h.prompter.Questions(), std::vector<std::string>{kConversionOffer});
    QCOMPARE(h.prompter.calls().back().caption, std::string("QUESTION"));
    QVERIFY(IsOlderFormatFile(old));

    h.prompter.Clear();
    h.prompter.Queue(Answer::Yes);
    QVERIFY(flows.OpenDatabaseFile(old));
    QCOMPARE(ws.current().name, std::string("Garden"));
    QCOMPARE(ws.current().count(), 1u);
    QVERIFY(QFile::exists(QString::fromStdString(h.paths.DataFolder() + "/Garden-Old.PDB")));
    // Now current: opening it again asks nothing.
    h.prompter.Clear();
    QVERIFY(flows.OpenDatabaseFile(old));
    QVERIFY(h.prompter.Questions().empty());
  }

  void screenshots() {
    PrintDialog print("lp -d office");
    Shoot(print, "print_records");
    QMessageBox question(QMessageBox::Question, "QUESTION", kConversionOffer,
                         QMessageBox::Yes | QMessageBox::No);
    Shoot(question, "conversion_question");
  }
};

QTEST_MAIN(RecordTransferTest)
#include "record_transfer_test.moc"
