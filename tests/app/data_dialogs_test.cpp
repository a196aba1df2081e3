// The data dialogs driven through their controls, and the commands of the main window that
// open them: find, sorting, filters, views, reports, export, import and set values.

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QtTest>
#include <atomic>
#include <thread>

#include "app/commands.h"
#include "app/filters_dialog.h"
#include "app/find_dialog.h"
#include "app/list_font.h"
#include "app/report_dialog.h"
#include "app/set_values_dialog.h"
#include "app/sort_dialog.h"
#include "app/status_text.h"
#include "app/view_editor_dialog.h"
#include "app/views_dialog.h"
#include "engine/format.h"
#include "engine/record.h"
#include "processing/filter.h"
#include "processing/report.h"
#include "processing/views.h"
#include "tests/app/app_fakes.h"

using namespace qv;
using namespace qv::app;

namespace {

std::unique_ptr<test::AppHarness> StartedOn(std::unique_ptr<Database> db) {
  auto h = std::make_unique<test::AppHarness>();
  h->settings.values["LastFileUsed"] = h->WriteDatabase(std::move(db), "Db.PDB");
  h->application.Start({});
  return h;
}

void PressOk(QDialog& dialog) {
  auto* buttons = dialog.findChild<QDialogButtonBox*>();
  QVERIFY(buttons);
  buttons->button(QDialogButtonBox::Ok)->click();
}

void Choose(QComboBox* box, const QString& text) {
  int at = box->findText(text);
  QVERIFY2(at >= 0, qPrintable(text));
  box->setCurrentIndex(at);
  emit box->activated(at);
}

QPushButton* ButtonNamed(QWidget& parent, const QString& text) {
  for (QPushButton* b : parent.findChildren<QPushButton*>())
    if (b->text().remove('&') == text) return b;
  return nullptr;
}

QByteArray FileContents(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

std::string Cell(const Database& db, std::uint32_t n, int slot) {
  return RecordValueText(db, n, slot, FormatOptions{});
}

}  // namespace

class DataDialogsTest : public QObject {
  Q_OBJECT
 private slots:
  void sortingDialogStoresKeysWithTheTertiaryQuirk() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    SortDialog dialog(*db, -1, prompter);
    QCOMPARE(dialog.keyBox(0)->itemText(0), QString("No Field"));
    Choose(dialog.keyBox(0), "Name");
    dialog.forwardButton(0)->setChecked(true);
    Choose(dialog.keyBox(1), "Qty");
    dialog.reverseButton(1)->setChecked(true);
    Choose(dialog.keyBox(2), "Done");
    dialog.reverseButton(2)->setChecked(true);
    PressOk(dialog);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(db->definition().sort_key(0).field, 0);
    QCOMPARE(db->definition().sort_key(1).field, 1);
    QVERIFY(!db->definition().sort_key(1).forward);
    // The tertiary "Reverse" is shown but the primary "Forward" is what is stored.
    QCOMPARE(db->definition().sort_key(2).field, 2);
    QVERIFY(db->definition().sort_key(2).forward);
  }

  void sortingDialogRefusalKeepsItOpenAndWritesViews() {
    auto db = test::DatabaseBuilder().Field("Name", kText).Field("Photo", kImage).Build();
    test::ScriptedPrompter prompter;
    {
      SortDialog dialog(*db, -1, prompter);
      dialog.show();
      Choose(dialog.keyBox(0), "Photo");
      PressOk(dialog);
      QVERIFY(dialog.isVisible());
      QCOMPARE(prompter.Messages().back(),
               std::string("This type of field (Photo) cannot currently be sorted!"));
      QCOMPARE(db->definition().sort_key(0).field, -1);
    }
    EnsureDefaultView(*db);
    SortDialog dialog(*db, 0, prompter);
    Choose(dialog.keyBox(0), "Name");
    dialog.reverseButton(0)->setChecked(true);
    PressOk(dialog);
    QCOMPARE(ViewSortKey(*db, 0, 0).field, 0);
    QVERIFY(!ViewSortKey(*db, 0, 0).forward);
    QCOMPARE(db->definition().sort_key(0).field, -1);  // the current settings stay
  }

  void filterDialogKeepsTheOrBetweenTwoAndThreeOutOfTheFilter() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    FiltersDialog dialog(*db, -1, FormatOptions{}, prompter);
    auto set_row = [&](int i, const QString& field) {
      dialog.row(i).enabled->setChecked(true);
      Choose(dialog.row(i).field, field);
    };
    set_row(0, "Name");
    dialog.row(0).contains->setText("a");
    set_row(1, "Qty");
    // Choosing an Integer field fills the limits with their defaults.
    QCOMPARE(dialog.row(1).lower->text(), QString("0"));
    QCOMPARE(dialog.row(1).upper->text(), QString("65535"));
    QCOMPARE(dialog.row(1).lower->maxLength(), 11);
    dialog.row(1).upper->setText("4");
    set_row(2, "Qty");
    dialog.row(2).lower->setText("8");
    dialog.row(2).upper->setText("9");
    set_row(3, "Kind");
    QCOMPARE(dialog.row(3).popup->currentText(), QString("No Value"));
    dialog.row(3).enabled->setChecked(false);
    dialog.andButton(0)->setChecked(true);
    dialog.orButton(1)->setChecked(true);  // shown between conditions 2 and 3
    PressOk(dialog);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!(db->definition().condition(2).join & 0x02));
    // Shown: (a AND Qty<=4) OR Qty 8-9 = apple, apricot. Stored: all three joined by AND.
    QVERIFY(db->visible.empty());
    dialog.deleteLater();
  }

  void filterDialogRefusesBadLimitsAndStaysOpen() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    FiltersDialog dialog(*db, -1, FormatOptions{}, prompter);
    dialog.show();
    dialog.row(0).enabled->setChecked(true);
    Choose(dialog.row(0).field, "Qty");
    dialog.row(0).lower->setText("seven");
    PressOk(dialog);
    QVERIFY(dialog.isVisible());
    QCOMPARE(prompter.Messages().size(), std::size_t{1});
    QVERIFY(!FilterActive(*db));
  }

  void viewsPageGivesTheLimitMessageAtTheTwentyFirstView() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    EnsureDefaultView(*db);
    while (ViewCount(*db) < kMaxViews) NewView(*db, prompter);
    ViewsDialog page(*db, FormatOptions{}, prompter);
    QCOMPARE(page.list()->count(), kMaxViews);
    ButtonNamed(page, "New View")->click();
    QCOMPARE(prompter.Messages().back(),
             std::string("Sorry, you have reached the maximum number of Views for this database."));
    QCOMPARE(prompter.calls().back().caption, std::string("ERROR"));
    std::size_t said = prompter.calls().size();
    ButtonNamed(page, "Copy View")->click();  // silent at the limit
    QCOMPARE(prompter.calls().size(), said);
    QCOMPARE(ViewCount(*db), kMaxViews);
    // Delete View asks first.
    prompter.Queue(Answer::Yes);
    page.list()->setCurrentRow(0);
    ButtonNamed(page, "Delete View")->click();
    QCOMPARE(prompter.Questions().back(),
             std::string("Are you sure you want to delete this view?"));
    QCOMPARE(page.list()->count(), kMaxViews - 1);
  }

  void viewEditorNamesOrdersHidesAndShowsFieldsAgain() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    EnsureDefaultView(*db);
    SetViewFieldWidth(*db, 0, 2, 0);  // Done hidden in the view
    ViewEditorDialog editor(*db, 0, FormatOptions{}, prompter);
    QListWidget* list = editor.fieldList();
    QCOMPARE(list->count(), 5);
    QCOMPARE(list->item(2)->checkState(), Qt::Unchecked);
    list->item(2)->setCheckState(Qt::Checked);    // shown again
    list->item(0)->setCheckState(Qt::Unchecked);  // Name hidden
    list->setCurrentRow(1);
    editor.MoveCurrent(-1);  // Qty first
    editor.widthBox()->setValue(99);
    editor.nameBox()->setText("By quantity");
    PressOk(editor);
    QCOMPARE(ViewName(*db, 0), std::string("By quantity"));
    QCOMPARE(ViewFieldOrder(*db, 0)[0], 1);
    QCOMPARE(ViewFieldWidth(*db, 0, 1), 66u);  // 99 pixels stored as 2/3
    QCOMPARE(ViewFieldWidth(*db, 0, 0), 0u);
    QVERIFY(ViewFieldWidth(*db, 0, 2) > 0u);
    // Cancel leaves the view as it was.
    ViewEditorDialog again(*db, 0, FormatOptions{}, prompter);
    again.nameBox()->setText("Other");
    again.fieldList()->item(0)->setCheckState(Qt::Unchecked);
    again.reject();
    QCOMPARE(ViewName(*db, 0), std::string("By quantity"));
    QCOMPARE(ViewFieldWidth(*db, 0, 1), 66u);
  }

  void findDialogReadsItsControlsAndCompletesByKeyboard() {
    auto db = test::SampleDatabase();
    FindDialog dialog(db->definition(), FindSettings{});
    dialog.show();
    QCOMPARE(dialog.fieldBox()->itemText(0), QString("Search All Fields"));
    QTest::keyClicks(dialog.textBox(), "Ban");
    Choose(dialog.fieldBox(), "Name");
    dialog.caseBox()->setChecked(true);
    FindSettings s = dialog.settings();
    QCOMPARE(s.text, std::string("Ban"));
    QCOMPARE(s.field, 0);
    QVERIFY(s.case_sensitive && !s.begins_with);
    QTest::keyClick(dialog.textBox(), Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    test::ScriptedPrompter prompter;
    SortDialog sort(*db, -1, prompter);
    sort.show();
    QTest::keyClick(&sort, Qt::Key_Escape);
    QCOMPARE(sort.result(), int(QDialog::Rejected));
  }

  void findAndFindAgainSelectTheRecordAndGoRound() {
    auto h = StartedOn(test::SampleDatabase());
    MainWindow& w = h->application.window();
    Database& db = h->application.workspace().current();
    h->dialogs.find_settings = FindSettings{"ap", -1, false, false};
    db.current = 1;
    w.RunCommand(command::kFind);
    QCOMPARE(db.current, 3u);  // apricot, after the current record
    QCOMPARE(w.panel()->view()->currentIndex().row(), 3);
    QCOMPARE(w.panel()->view()->currentIndex().column(), 0);
    w.RunCommand(command::kFindAgain);  // past the end: round to apple
    QCOMPARE(db.current, 0u);
    w.RunCommand(command::kFindAgain);
    QCOMPARE(db.current, 3u);
    QVERIFY(h->prompter.Messages().empty());
    h->dialogs.find_settings = FindSettings{"zzz", -1, false, false};
    w.RunCommand(command::kFind);
    QCOMPARE(h->prompter.Messages().back(), std::string("Not Found in Database!"));
    QCOMPARE(db.current, 3u);
    w.RunCommand(command::kFindAgain);
    QCOMPARE(h->prompter.Messages().size(), std::size_t{2});
    QCOMPARE(h->prompter.calls().back().caption,
             std::string("Update"));  // as the first search says it
  }

  void reportWindowShowsTheReportOfTheProcessingLayer() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    auto text = RunReport(*db, 1, FormatOptions{}, prompter);
    QVERIFY(text);
    ReportDialog window(*text);
    QString expected = QString::fromStdString(*text).remove('\r');
    QCOMPARE(window.shownText(), expected);
    QVERIFY(QFontInfo(window.findChild<QPlainTextEdit*>()->font()).fixedPitch());
    ButtonNamed(window, "Copy")->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), window.shownText());
  }

  void exportWritesWhatQvdbWrites() {
    auto h = StartedOn(test::SampleDatabase());
    Database& db = h->application.workspace().current();
    QTemporaryDir dir;
    ExportRequest r;
    r.csv.header = true;
    r.csv.quote_all_values = r.csv.quote_all_names = true;
    r.csv.separator = ';';
    r.csv.slot_order = true;
    r.path = (dir.path() + "/gui.csv").toStdString();
    h->dialogs.export_request = r;
    h->application.window().RunCommand(command::kExportRecords);
    QCOMPARE(h->prompter.Messages().back(), std::string("File Exported OK"));
    QProcess qvdb;
    qvdb.start(QVDB_PATH, {"export", QString::fromStdString(db.path), dir.path() + "/cli.csv",
                           "--header", "--quote-all", "--separator", ";", "--slot-order"});
    QVERIFY(qvdb.waitForFinished(20000));
    QCOMPARE(qvdb.exitCode(), 0);
    QByteArray gui = FileContents(dir.path() + "/gui.csv");
    QVERIFY(gui.startsWith("\"Name\";\"Qty\";"));
    QCOMPARE(gui, FileContents(dir.path() + "/cli.csv"));
    // A file that cannot be opened.
    r.path = (dir.path() + "/no such folder/x.csv").toStdString();
    h->dialogs.export_request = r;
    h->application.window().RunCommand(command::kExportRecords);
    QCOMPARE(h->prompter.Messages().back(), std::string("ERROR: Unable to open file for writing."));
  }

  void importReportsTheBadRowAndStoresTheRest() {
    auto h = StartedOn(test::SampleDatabase());
    Database& db = h->application.workspace().current();
    QTemporaryDir dir;
    QFile csv(dir.path() + "/more.csv");
    QVERIFY(csv.open(QIODevice::WriteOnly));
    csv.write("Name,Qty\npear,4\nplum,lots\nfig,6\n");
    csv.close();
    h->dialogs.import_request = ImportRequest{csv.fileName().toStdString(), {}};
    h->application.window().RunCommand(command::kImportCsv);
    QCOMPARE(db.count(), 6u);
    std::string report = h->prompter.Messages().back();
    QVERIFY2(report.find("Imported 2 records.") == 0, report.c_str());
    QVERIFY2(report.find("\nline 3: ") != std::string::npos, report.c_str());
    QVERIFY(db.changed);
    QCOMPARE(h->application.window().windowTitle(), QString("Sample* (6/6)"));
  }

  void cancelledImportChangesNothing() {
    auto h = StartedOn(test::SampleDatabase());
    Database& db = h->application.workspace().current();
    const Bytes before = SerializeDatabase(db);
    QTemporaryDir dir;
    QFile csv(dir.path() + "/more.csv");
    QVERIFY(csv.open(QIODevice::WriteOnly));
    csv.write("Name,Qty\npear,4\nfig,6\n");
    csv.close();
    h->dialogs.import_request = ImportRequest{csv.fileName().toStdString(), {}};
    h->dialogs.cancel_long_work = true;
    h->application.window().RunCommand(command::kImportCsv);
    QCOMPARE(h->dialogs.long_titles.size(), std::size_t{1});
    QCOMPARE(db.count(), 4u);
    QVERIFY(!db.changed);
    QVERIFY(SerializeDatabase(db) == before);
    QVERIFY(h->prompter.Messages().empty());
  }

  void setValuesChangesEveryShownRecord() {
    auto h = StartedOn(test::SampleDatabase());
    Database& db = h->application.workspace().current();
    // The dialog reads a typed Integer.
    SetValuesDialog dialog(db, 1, FormatOptions{}, h->prompter);
    QCOMPARE(dialog.windowTitle(), QString("Set Value of: Qty"));
    dialog.textBox()->setText("12x");
    PressOk(dialog);
    QVERIFY(!dialog.value());
    dialog.textBox()->setText("12");
    PressOk(dialog);
    QVERIFY(dialog.value());
    // Only the records the filter shows change.
    Condition c;
    c.in_use = 1;
    c.field = 2;  // Done checked
    c.lower = 1;
    db.definition().set_condition(0, c);
    RebuildFilteredList(db);
    h->dialogs.set_value = dialog.value();
    h->application.window().panel()->Refresh();
    h->application.window().panel()->RunColumnCommand(1, command::kSetValues);
    QCOMPARE(Cell(db, 1, 1), std::string("12"));
    QCOMPARE(Cell(db, 3, 1), std::string("12"));
    QCOMPARE(Cell(db, 0, 1), std::string("3"));
    QVERIFY(db.changed);
    QCOMPARE(ListStatusText(h->application.workspace()),
             std::string("2 of 4 records pass the filter"));
  }

  void sortAndFilterCommandsKeepTheCurrentRecordAndSayWhatIsShown() {
    auto h = StartedOn(test::SampleDatabase());
    MainWindow& w = h->application.window();
    Database& db = h->application.workspace().current();
    db.current = 2;  // cherry
    h->dialogs.edit_sort = [](Database& d, int view) {
      d.definition().set_sort_key(0, SortKey{1, false});  // Qty, reverse
      return view == -1;
    };
    w.RunCommand(command::kSort);
    QCOMPARE(h->dialogs.long_titles, std::vector<std::string>{"Sorting..."});
    QCOMPARE(Cell(db, 0, 0), std::string("apricot"));
    QCOMPARE(Cell(db, db.current, 0), std::string("cherry"));
    QCOMPARE(w.panel()->view()->currentIndex().row(), static_cast<int>(db.current));
    h->dialogs.edit_filter = [](Database& d, int) {
      Condition c;
      c.in_use = 1;
      c.field = 1;
      c.lower = 4;
      c.upper = 8;
      d.definition().set_condition(0, c);
      RebuildFilteredList(d);
      return true;
    };
    w.RunCommand(command::kFilter);
    QCOMPARE(w.panel()->model()->rowCount(), 2);  // cherry 7, banana 5
    QCOMPARE(Cell(db, db.current, 0), std::string("cherry"));
    QCOMPARE(w.statusBar()->currentMessage(),
             QString("2 of 4 records pass the filter  |  Sorted by Qty (reverse)"));
  }

  void closeEmptiesTheListBeforeTheChooserShows() {
    auto h = StartedOn(test::SampleDatabase());
    MainWindow& w = h->application.window();
    int rows_behind = -1;
    h->dialogs.on_choose_start = [&] { rows_behind = w.panel()->model()->rowCount(); };
    w.RunCommand(command::kClose);
    QCOMPARE(rows_behind, 0);
    QCOMPARE(w.windowTitle(), QString("Quorvant"));
  }

  void columnMenuOpensFromTheKeyboardAndOnARightClick() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    panel->view()->setFocus();
    panel->view()->setCurrentIndex(panel->model()->index(0, 1));
    QStringList shown;
    auto close_menu = [&shown] {
      QTimer::singleShot(50, [&shown] {
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
          for (QAction* a : menu->actions())
            if (a->isEnabled()) shown << a->text().remove('&');
          menu->close();
        }
      });
    };
    close_menu();
    QTest::keyClick(panel->view(), Qt::Key_F10, Qt::ShiftModifier);
    QCOMPARE(shown, (QStringList{"Sort Forward", "Sort Reverse", "Field Properties", "Run Report",
                                 "Set Values To..", "Hide Field"}));
    shown.clear();
    close_menu();
    QHeaderView* header = panel->view()->horizontalHeader();
    emit header->customContextMenuRequested(QPoint(header->sectionViewportPosition(0) + 4, 4));
    QCOMPARE(shown.size(), 6);  // the Text field: Run Report refused later, with its message
  }

  void listFontIsBoldAndNeverSmallerThanTheDesktops() {
    QFont small("Sans", 7);
    QFont large("Sans", 14);
    QCOMPARE(BoldListFont(small).pointSizeF(), 9.0);
    QCOMPARE(BoldListFont(large).pointSizeF(), 14.0);
    QVERIFY(BoldListFont(small).bold());
    QCOMPARE(BoldListFont(small).families().first(), QString("Arial"));
  }

  void movingWithTheKeyboardChangesTheCurrentRecord() {
    auto h = StartedOn(test::SampleDatabase());
    RecordListPanel* panel = h->application.window().panel();
    Database& db = h->application.workspace().current();
    panel->view()->setFocus();
    QCOMPARE(db.current, 0u);
    QTest::keyClick(panel->view(), Qt::Key_Down);
    QTest::keyClick(panel->view(), Qt::Key_Down);
    QCOMPARE(db.current, 2u);
    QTest::keyClick(panel->view(), Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(db.current, 3u);
  }

  void menuShortcutsAreUniqueAndTheDataCommandsHaveThem() {
    auto h = StartedOn(test::SampleDatabase());
    MainWindow& w = h->application.window();
    QSet<QString> seen;
    for (QAction* a : w.findChildren<QAction*>()) {
      if (a->shortcut().isEmpty()) continue;
      QString keys = a->shortcut().toString();
      QVERIFY2(!seen.contains(keys), qPrintable(keys));
      seen.insert(keys);
    }
    for (int c : {command::kFind, command::kFindAgain, command::kSort, command::kFilter,
                  command::kExportRecords, command::kImportCsv}) {
      QVERIFY(!w.action(c)->shortcut().isEmpty());
      QVERIFY(w.action(c)->isEnabled());
    }
    QCOMPARE(w.action(command::kFindAgain)->shortcut(), QKeySequence(Qt::Key_F3));
  }

  void titleNamesTheFileWhenARecentDatabaseSharesTheName() {
    auto h = std::make_unique<test::AppHarness>();
    std::string other = h->WriteDatabase(test::SampleDatabase("Fruit"), "Fruit old.PDB");
    h->settings.values["LastFile0"] = other;
    h->settings.values["LastFileUsed"] =
        h->WriteDatabase(test::SampleDatabase("Fruit"), "Fruit.PDB");
    h->application.Start({});
    QCOMPARE(h->application.window().windowTitle(), QString("Fruit (4/4) - Fruit.PDB"));
    auto single = StartedOn(test::SampleDatabase("Fruit"));
    QCOMPARE(single->application.window().windowTitle(), QString("Fruit (4/4)"));
  }

  void longWorkReplaysItsMessagesAndCanBeCancelled() {
    test::ScriptedPrompter shown;
    LongTasks tasks;
    QVERIFY(tasks.Run(
        nullptr, "Quick", [](Prompter& p) { p.message("Done", "Update", Icon::Information); },
        shown));
    QCOMPARE(shown.Messages(), std::vector<std::string>{"Done"});
    // Work that outlasts the half second shows the dialog; Cancel returns at once.
    auto release = std::make_shared<std::atomic<bool>>(false);
    QTimer::singleShot(700, [] {
      for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* progress = qobject_cast<QProgressDialog*>(w); progress && progress->isVisible())
          progress->cancel();
    });
    bool finished = tasks.Run(
        nullptr, "Slow",
        [release](Prompter& p) {
          p.progress("Reading and Writing Record 1...");
          for (int i = 0; i < 500 && !*release; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
          p.message("Late", "Update", Icon::Information);
        },
        shown);
    QVERIFY(!finished);
    *release = true;
    QCOMPARE(shown.Messages().size(), std::size_t{1});  // a cancelled task says nothing
  }

  void hiddenFieldStaysHiddenWhenItsViewIsAppliedAgain() {
    auto h = StartedOn(test::SampleDatabase());
    Database& db = h->application.workspace().current();
    EnsureDefaultView(db);
    RecordListPanel* panel = h->application.window().panel();
    panel->Refresh();
    panel->RunColumnCommand(1, command::kHideField);
    QCOMPARE(panel->model()->columnCount(), 4);
    panel->ViewChosen(0);
    QCOMPARE(panel->model()->columnCount(), 4);
    QCOMPARE(ViewFieldWidth(db, 0, 1), 0u);
    // Sorting keeps the selection on the same record, and the header shows the sort.
    db.current = 1;  // banana
    panel->Refresh();
    panel->RunColumnCommand(0, command::kSortReverse);
    QCOMPARE(Cell(db, db.current, 0), std::string("banana"));
    QCOMPARE(panel->view()->horizontalHeader()->sortIndicatorSection(), 0);
    QCOMPARE(panel->view()->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    QCOMPARE(ListStatusText(h->application.workspace()),
             std::string("4 records  |  Sorted by Name (reverse)"));
  }
};

QTEST_MAIN(DataDialogsTest)
#include "data_dialogs_test.moc"
