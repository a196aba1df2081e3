// The main window over scripted screens: start-up, the record list, its columns, typing, taps,
// the column menu and the command table.

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QtTest>

#include "app/commands.h"
#include "app/preferences_dialog.h"
#include "app/single_instance.h"
#include "app/start_chooser_dialog.h"
#include "engine/format.h"
#include "processing/views.h"
#include "tests/app/app_fakes.h"

using namespace qv;
using namespace qv::app;

namespace {

// An application started on `db` (written to the data folder and named by LastFileUsed).
std::unique_ptr<test::AppHarness> StartedOn(std::unique_ptr<Database> db) {
  auto h = std::make_unique<test::AppHarness>();
  if (db) h->settings.values["LastFileUsed"] = h->WriteDatabase(std::move(db), "Db.PDB");
  h->application.Start({});
  return h;
}

void TypeText(QWidget* w, const QString& text) {
  for (QChar c : text) QTest::keyClick(w, c.toLatin1());
}

std::string CellText(test::AppHarness& h, int row, int column) {
  auto* model = h.application.window().panel()->model();
  return model->data(model->index(row, column), Qt::DisplayRole).toString().toStdString();
}

}  // namespace

class MainWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void freshStartShowsChooserWithOnlyMoreFiles() {
    auto h = StartedOn(nullptr);
    QCOMPARE(h->dialogs.chooser_entries.size(), std::size_t{1});
    QVERIFY(h->dialogs.chooser_entries[0].empty());
    QCOMPARE(h->settings.values.at("Version"), std::string("3.0"));
    QVERIFY(QDir(QString::fromStdString(h->paths.DataFolder())).exists());
    QCOMPARE(h->application.window().windowTitle(), QString("Quorvant"));
    // The real chooser shows "More files..." and nothing else for those entries.
    StartChooserDialog chooser(h->dialogs.chooser_entries[0]);
    QCOMPARE(chooser.list()->count(), 1);
    QCOMPARE(chooser.list()->item(0)->text(), QString("More files..."));
    QCOMPARE(chooser.windowTitle(), QString("Quorvant"));
    // Defaults are written at shut-down.
    h->application.Shutdown();
    for (const char* key : {"AutoSave", "AutoSIP", "AllowChecks"})
      QCOMPARE(h->settings.values.at(key), std::string("1"));
    for (const char* key : {"AllowPopups", "AllowDateTime"})
      QCOMPARE(h->settings.values.at(key), std::string("0"));
  }

  void lastFileUsedReopensWithTitleAndCounts() {
    auto h = StartedOn(test::SampleDatabase("Fruit"));
    MainWindow& w = h->application.window();
    QVERIFY(h->dialogs.chooser_entries.empty());
    QCOMPARE(w.windowTitle(), QString("Fruit (4/4)"));
    QCOMPARE(w.panel()->countLabel()->text(), QString("4 records"));
    QCOMPARE(w.panel()->model()->rowCount(), 4);
    QCOMPARE(w.panel()->model()->columnCount(), 5);
    QCOMPARE(w.panel()->model()->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(),
             QString("Qty"));
    QCOMPARE(CellText(*h, 1, 0), std::string("banana"));
    // Check boxes are drawn checked or not, with no "0"/"1" text.
    auto* model = w.panel()->model();
    QCOMPARE(model->data(model->index(1, 2), Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QCOMPARE(model->data(model->index(0, 2), Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    QVERIFY(CellText(*h, 1, 2).empty());
  }

  void commandTableCarriesItsNumbers() {
    auto h = StartedOn(test::SampleDatabase());
    MainWindow& w = h->application.window();
    const int numbers[] = {32804, 32785, 32888, 32786, 32787, 32803, 32805, 32806,
                           32788, 32798, 32799, 32800, 32890, 32892, 32894, 32895,
                           32801, 32802, 1011,  32797, 32796, 32795, 32784};
    for (int n : numbers) {
      QAction* a = w.action(n);
      QVERIFY2(a, QByteArray::number(n));
      QCOMPARE(a->data().toInt(), n);
    }
    for (int k = 0; k < 10; ++k) QCOMPARE(w.action(32878 + k)->data().toInt(), 32878 + k);
    QCOMPARE(w.action(command::kNew)->text().remove('&'), QString("New"));
    QCOMPARE(w.action(command::kReceive)->text(), QString("Receive Via Infrared..."));
    QVERIFY(w.action(command::kSave)->isEnabled());
    w.RunCommand(command::kAbout);
    QCOMPARE(h->dialogs.about_shown, 1);
  }

  void modifiedMarkerInTitle() {
    auto h = StartedOn(test::SampleDatabase("Fruit"));
    h->application.workspace().current().changed = true;
    h->application.window().panel()->Refresh();
    QCOMPARE(h->application.window().windowTitle(), QString("Fruit* (4/4)"));
  }

  void draggedColumnStoresTwoThirdsAndShowsOneAndAHalf() {
    auto h = StartedOn(test::SampleDatabase("Fruit"));
    RecordListPanel* panel = h->application.window().panel();
    QHeaderView* header = panel->view()->horizontalHeader();
    QCOMPARE(header->sectionSize(0), 87);  // a new field's 58 stored units
    header->resizeSection(0, 100);
    Database& db = h->application.workspace().current();
    QCOMPARE(db.definition().field(0).width(), 66u);
    QVERIFY(db.changed);
    QCOMPARE(h->application.window().windowTitle(), QString("Fruit* (4/4)"));
    panel->Refresh();
    QCOMPARE(header->sectionSize(0), 99);
  }

  void allFieldsHiddenShowsRowsWithoutColumns() {
    auto db = test::SampleDatabase("Fruit");
    for (int slot = 0; slot < 5; ++slot) db->definition().field(slot).set_width(0);
    auto h = StartedOn(std::move(db));
    QCOMPARE(h->application.window().panel()->model()->columnCount(), 0);
    QCOMPARE(h->application.window().panel()->model()->rowCount(), 4);
    QCOMPARE(h->application.window().windowTitle(), QString("Fruit (4/4)"));
  }

  void typingSelectsByLookupFieldAndIgnoresThirtiethCharacter() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    Database& db = h->application.workspace().current();
    TypeText(panel->view(), "BA");
    QCOMPARE(db.current, 1u);
    QCOMPARE(panel->view()->currentIndex().row(), 1);
    // A character that matches nothing leaves the previous match selected and is dropped.
    TypeText(panel->view(), "q");
    QCOMPARE(db.current, 1u);
    QCOMPARE(panel->typeAhead().text(), std::string("BA"));
    QTest::keyClick(panel->view(), Qt::Key_Backspace);
    QTest::keyClick(panel->view(), Qt::Key_Backspace);
    // A record whose look-up value holds 29 characters: the 30th typed one is ignored.
    std::string long_name(29, 'k');
    RecordValues values = DefaultValues(db);
    values.Set(0, TextValue(long_name + "kkk"));
    StoreRecord(db, values, kNewRecord);
    ShowAllRecords(db);
    panel->Refresh();
    TypeText(panel->view(), QString(30, 'k'));
    QCOMPARE(panel->typeAhead().text(), long_name);
    QCOMPARE(db.current, 4u);
  }

  void checkBoxTapTogglesOrOpensTheRecordView() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    Database& db = h->application.workspace().current();
    panel->Tap(0, 2);  // "Done" of apple, 0
    QCOMPARE(RecordValueText(db, 0, 2, {}), std::string("1"));
    QVERIFY(h->dialogs.opened_records.empty());
    QCOMPARE(h->application.window().windowTitle(), QString("Sample* (4/4)"));
    h->application.workspace().preferences.allow_checks = false;
    panel->Tap(0, 2);
    QCOMPARE(RecordValueText(db, 0, 2, {}), std::string("1"));
    QCOMPARE(h->dialogs.opened_records, std::vector<std::uint32_t>{0});
  }

  void tapsFollowPreferencesAndAccess() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    Database& db = h->application.workspace().current();
    Preferences& prefs = h->application.workspace().preferences;
    // Pop-ups are off by default: the record opens.
    panel->Tap(1, 3);
    QCOMPARE(h->dialogs.opened_records.size(), std::size_t{1});
    prefs.allow_popups = true;
    h->dialogs.popup_choice = "Tool";
    panel->Tap(1, 3);
    QCOMPARE(h->dialogs.popup_items, (std::vector<std::string>{"Tool", "Part"}));
    QCOMPARE(RecordValueText(db, 1, 3, {}), std::string("Tool"));
    prefs.allow_date_time = true;
    h->dialogs.date_choice = Dmy{24, 12, 2023};
    panel->Tap(1, 4);
    QCOMPARE(RecordValueText(db, 1, 4, test::EuropeanOptions()), std::string("24/12/2023"));
    // View-only access opens the record read-only instead of editing in the list.
    h->access.edit_access = kAccessViewOnly;
    panel->Tap(2, 2);
    QCOMPARE(RecordValueText(db, 2, 2, {}), std::string("0"));
    QVERIFY(h->dialogs.last_view_only);
    h->access.edit_access = kAccessRefused;
    std::size_t opened = h->dialogs.opened_records.size();
    panel->Tap(2, 0);
    QCOMPARE(h->dialogs.opened_records.size(), opened);
    QCOMPARE(db.current, 2u);
  }

  void columnMenuSortsForwardAndReverse() {
    auto h = StartedOn(test::SampleDatabase("Fruit"));
    RecordListPanel* panel = h->application.window().panel();
    panel->RunColumnCommand(0, command::kSortReverse);
    QCOMPARE(CellText(*h, 0, 0), std::string("cherry"));
    QCOMPARE(CellText(*h, 3, 0), std::string("apple"));
    Database& db = h->application.workspace().current();
    QCOMPARE(db.definition().sort_key(0).field, 0);
    QVERIFY(!db.definition().sort_key(0).forward);
    QCOMPARE(db.definition().sort_key(1).field, -1);
    QCOMPARE(h->application.window().windowTitle(), QString("Fruit* (4/4)"));
    panel->RunColumnCommand(1, command::kSortForward);  // Qty 3, 5, 7, 9
    QCOMPARE(CellText(*h, 0, 0), std::string("apple"));
    QCOMPARE(CellText(*h, 3, 0), std::string("apricot"));
    // An edit in the list keeps the sort: apple's Qty stays, its check box toggles in place.
    panel->Tap(0, 2);
    QCOMPARE(CellText(*h, 0, 0), std::string("apple"));
    QCOMPARE(db.current, 0u);
  }

  void runReportRefusesOtherFieldTypes() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    panel->RunColumnCommand(0, command::kColumnReport);  // a Text field
    QCOMPARE(h->prompter.Messages().back(),
             std::string("Can only run reports on the following field types:\nInteger, Float, "
                         "Checkbox, Time, Date, and Calculated."));
    QCOMPARE(h->prompter.calls().back().caption, std::string("ERROR"));
    QCOMPARE(h->prompter.calls().back().icon, Icon::Exclamation);
    std::size_t shown = h->prompter.Messages().size();
    panel->RunColumnCommand(1, command::kColumnReport);  // Integer: the report window
    QCOMPARE(h->prompter.Messages().size(), shown);
    QCOMPARE(h->dialogs.reports.size(), std::size_t{1});
    QVERIFY(h->dialogs.reports[0].rfind("Report for Qty\r\nNumber of Entries:\t4\r\n", 0) == 0);
    QVERIFY(h->dialogs.reports[0].find("Sum:\t\t24\r\n") != std::string::npos);
    // The Actions menu's Run Report without a chosen field.
    panel->RunFieldReport(-1);
    QCOMPARE(h->prompter.Messages().back(),
             std::string("You must first select a field to run the report on!"));
    panel->RunColumnCommand(1, command::kHideField);
    QCOMPARE(panel->model()->columnCount(), 4);
    QCOMPARE(h->application.workspace().current().definition().field(1).width(), 0u);
  }

  void viewsDropDownAppliesViewsAndEditsThem() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    Database& db = h->application.workspace().current();
    QCOMPARE(panel->viewsBox()->count(), 1);  // only "Edit Views.."
    // The views page makes "Default View" from the current settings; then a view sorted reverse.
    h->dialogs.edit_views = [](Database& d) {
      EnsureDefaultView(d);
      SortKey reverse{0, false};
      d.definition().set_sort_key(0, reverse);
      test::ScriptedPrompter quiet;
      NewView(d, quiet);
      d.definition().set_sort_key(0, SortKey{});
    };
    panel->ViewChosen(0);
    QCOMPARE(h->dialogs.views_edited, 1);
    QCOMPARE(panel->viewsBox()->count(), 3);
    QCOMPARE(panel->viewsBox()->itemText(0), QString("Default View"));
    panel->ViewChosen(1);  // "New View": Name sorted reverse
    QCOMPARE(CellText(*h, 0, 0), std::string("cherry"));
    QVERIFY(db.changed);
    panel->ViewChosen(0);
    QCOMPARE(db.definition().sort_key(0).field, -1);
  }

  void deleteRecordsAsksAboutLinkedRecordsOnlyWhenThereAreLinks() {
    auto h = StartedOn(test::SampleDatabase());
    MainWindow& w = h->application.window();
    h->dialogs.delete_scope = DeleteScope::All;
    w.RunCommand(command::kDeleteRecords);
    QVERIFY(h->prompter.Questions().empty());
    QCOMPARE(w.windowTitle(), QString("Sample* (0/0)"));
    QCOMPARE(w.panel()->model()->rowCount(), 0);

    auto linked = test::DatabaseBuilder("L").Field("Name", kText).Field("Parts", kLink).Build();
    auto h2 = StartedOn(std::move(linked));
    h2->dialogs.delete_scope = DeleteScope::All;
    h2->application.window().RunCommand(command::kDeleteRecords);
    QCOMPARE(h2->prompter.Questions().back(),
             std::string("Would you like to delete the linked records also? (Y/N)"));
  }

  void preferencesDialogShowsAndReturnsTheFiveSwitches() {
    Preferences p;
    p.allow_popups = true;
    PreferencesDialog dialog(p);
    QCOMPARE(dialog.windowTitle(), QString("Preferences"));
    QCOMPARE(dialog.box(3)->text(), QString("Allow Popup selection in List View"));
    QVERIFY(dialog.box(3)->isChecked());
    QVERIFY(!dialog.box(4)->isChecked());
    dialog.box(0)->setChecked(false);
    Preferences out = dialog.values(p);
    QVERIFY(!out.auto_save && out.allow_popups && out.allow_checks);
  }

  void shutdownSavesModifiedDatabaseSilently() {
    auto h = StartedOn(test::SampleDatabase("Fruit"));
    h->application.workspace().preferences.auto_save = false;
    h->application.window().panel()->Tap(0, 2);
    h->application.Shutdown();
    QVERIFY(h->prompter.Questions().empty());
    Database back;
    QVERIFY(LoadDatabase(back, h->settings.values.at("LastFileUsed"), h->prompter));
    QCOMPARE(RecordValueText(back, 0, 2, {}), std::string("1"));
    QCOMPARE(h->settings.values.at("AutoSave"), std::string("0"));
  }

  void secondLaunchIsHandedToTheRunningProgram() {
    QString name = SingleInstance::ServerName(QDir::tempPath() + "/quorvant-test-" +
                                              QString::number(QCoreApplication::applicationPid()));
    SingleInstance running(name);
    QVERIFY(running.Listen());
    QSignalSpy spy(&running, &SingleInstance::received);
    SingleInstance second(name);
    QVERIFY(second.HandOff("/tmp/Some File.PDB"));
    QVERIFY(spy.wait(3000));
    QCOMPARE(spy.at(0).at(0).toString(), QString("/tmp/Some File.PDB"));
    // A sender that claims an absurd length is cut off without a message.
    QLocalSocket rogue;
    rogue.connectToServer(name);
    QVERIFY(rogue.waitForConnected(2000));
    rogue.write(
        QByteArray("\xff\xff\xff\xff"
                   "abc",
                   7));
    QVERIFY(rogue.waitForBytesWritten(2000));
    QTRY_COMPARE_WITH_TIMEOUT(rogue.state(), QLocalSocket::UnconnectedState, 3000);
    QCOMPARE(spy.count(), 1);
  }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
