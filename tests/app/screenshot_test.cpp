// Pictures of the main window on the example database, the start chooser and the preferences,
// written under the build folder for people to look at.

#include "tests/app/screenshot.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressDialog>
#include <QtTest>

#include "app/about_dialog.h"
#include "app/export_dialog.h"
#include "app/filters_dialog.h"
#include "app/find_dialog.h"
#include "app/import_dialog.h"
#include "app/preferences_dialog.h"
#include "app/report_dialog.h"
#include "app/set_values_dialog.h"
#include "app/sort_dialog.h"
#include "app/start_chooser_dialog.h"
#include "app/view_editor_dialog.h"
#include "app/views_dialog.h"
#include "processing/report.h"
#include "processing/store.h"
#include "processing/views.h"
#include "tests/app/app_fakes.h"

using namespace qv;

namespace {

using qv::test::Shoot;

// The example database, loaded.
std::unique_ptr<Database> Example() {
  auto db = std::make_unique<Database>();
  test::ScriptedPrompter quiet;
  if (!LoadDatabase(*db, EXAMPLE_DB, quiet)) return nullptr;
  PositionOpenedDatabase(*db, quiet);
  return db;
}

}  // namespace

class ScreenshotTest : public QObject {
  Q_OBJECT
 private slots:
  void mainWindowOnTheExample() {
    test::AppHarness h;
    QDir().mkpath(QString::fromStdString(h.paths.DataFolder()));
    std::string copy = h.paths.DataFolder() + "/Inventory.PDB";
    QVERIFY(QFile::copy(EXAMPLE_DB, QString::fromStdString(copy)));
    h.settings.values["LastFileUsed"] = copy;
    h.application.Start({});
    QVERIFY(h.application.workspace().has_open_database());
    h.application.window().resize(920, 560);
    Shoot(h.application.window(), "main_window");
  }

  void startChooser() {
    app::StartChooserDialog chooser({{"Inventory", 0}, {"Recipes", 1}, {"Garden Log", 2}});
    Shoot(chooser, "start_chooser");
  }

  void dataDialogs() {
    auto db = Example();
    QVERIFY(db);
    test::ScriptedPrompter prompter;
    FormatOptions options;
    FindSettings find{"drill", -1, false, false};
    app::FindDialog finder(db->definition(), find);
    Shoot(finder, "find");
    db->definition().set_sort_key(0, SortKey{1, true});
    db->definition().set_sort_key(1, SortKey{2, false});
    app::SortDialog sorting(*db, -1, prompter);
    Shoot(sorting, "sort");
    app::FiltersDialog filters(*db, -1, options, prompter);
    filters.row(0).enabled->setChecked(true);
    filters.row(0).field->setCurrentIndex(2);
    emit filters.row(0).field->activated(2);
    filters.row(0).contains->setText("Tools");
    filters.row(1).enabled->setChecked(true);
    filters.row(1).field->setCurrentIndex(3);
    emit filters.row(1).field->activated(3);
    for (int row : {2, 3}) {
      filters.row(row).enabled->setChecked(true);
      filters.row(row).field->setCurrentIndex(row + 3);  // Bought, Counted
      emit filters.row(row).field->activated(row + 3);
    }
    filters.row(2).lower->setText("1/1/2024");
    filters.resize(filters.width(), 700);
    Shoot(filters, "filters");
    EnsureDefaultView(*db);
    NewView(*db, prompter);
    app::ViewsDialog views(*db, options, prompter);
    Shoot(views, "views");
    app::ViewEditorDialog editor(*db, 1, options, prompter);
    Shoot(editor, "view_editor");
    auto report = RunReport(*db, 2, options, prompter);
    QVERIFY(report);
    app::ReportDialog window(*report);
    Shoot(window, "report");
    app::ExportDialog exporter(Preferences{}, "/home/user/Documents/Inventory.csv");
    Shoot(exporter, "export");
    app::SetValuesDialog set_values(*db, 5, options, prompter);
    Shoot(set_values, "set_values");
    app::SetValuesDialog set_date(*db, 4, options, prompter);
    Shoot(set_date, "set_values_date");
    QProgressDialog progress("Importing from .CSV File...", "Cancel", 0, 0);
    progress.setWindowTitle("Quorvant");
    progress.setMinimumWidth(360);
    Shoot(progress, "progress");
  }

  void importPreview() {
    auto db = Example();
    QVERIFY(db);
    QTemporaryDir dir;
    QFile csv(dir.path() + "/more stock.csv");
    QVERIFY(csv.open(QIODevice::WriteOnly));
    csv.write(
        "Item,Category,Qty,Price,Bought,Counted,Notes\n"
        "Hex key set,Tools,1,12.50,2024-06-01,1,Metric\n"
        "Cable ties,Fasteners,200,0.02,2024-06-03,0,\n"
        "Spirit level,Tools,1,24.00,2024-06-09,1,\"60 cm, aluminium\"\n");
    csv.close();
    app::ImportDialog dialog(*db, Preferences{}, csv.fileName().toStdString());
    Shoot(dialog, "import");
  }

  void aboutAndNewDatabase() {
    app::AboutDialog about;
    Shoot(about, "about");
    // Every line of the About text is shown whole.
    auto* text = about.findChildren<QLabel*>().last();
    QVERIFY(text->height() >= text->heightForWidth(text->width()));
  }

  void preferences() {
    app::PreferencesDialog dialog{Preferences{}};
    Shoot(dialog, "preferences");
  }
};

QTEST_MAIN(ScreenshotTest)
#include "screenshot_test.moc"
