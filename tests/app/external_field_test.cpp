// External fields in the application: the record editor runs the field's plug-in when a record
// is set up, when its button is pressed and when the record is stored; the field editor's
// Configure... hands the plug-in the field's settings.

#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>
#include <filesystem>

#include "app/field_controls.h"
#include "app/field_editor_dialog.h"
#include "app/record_editor_dialog.h"
#include "engine/field_settings.h"
#include "platform/qt/qt_paths.h"
#include "tests/app/editor_harness.h"
#include "tests/support/builders.h"

using namespace qv;
using test::WhenShown;

namespace {

// The test plug-ins, put where the program looks for them.
void InstallTestPlugins() {
  namespace fs = std::filesystem;
  const fs::path plugins = fs::path(QtPaths().DataFolder()) / "plugins";
  fs::create_directories(plugins);
  for (const char* name : {"libqvt-counter.so", "libqvt-writer.so"})
    fs::copy_file(fs::path(TEST_PLUGIN_HOME) / "plugins" / name, plugins / name,
                  fs::copy_options::overwrite_existing);
}

std::unique_ptr<Database> PluggedDatabase(const char* plugin) {
  auto db = test::DatabaseBuilder("Plugged")
                .Field("Name", kText, 12)
                .Field("Qty", kInteger)
                .Field("Check", kExternal, 16)
                .Row({"bolt", "4", ""})
                .Build();
  SetPluginName(db->definition().field(2), plugin);
  return db;
}

}  // namespace

class ExternalFieldTest : public QObject {
  Q_OBJECT
 private slots:
  void initTestCase() { InstallTestPlugins(); }

  void theRecordEditorRunsThePluginAtSetUpSelectAndSave() {
    test::EditorHarness h;
    h.Install(PluggedDatabase("qvt-counter"));
    int first = 0;
    WhenShown<app::RecordEditorDialog>([&first](app::RecordEditorDialog* e) {
      app::FieldControl* check = e->control(2);
      first = check->text().toInt();
      QVERIFY(first > 0);  // set up by INITEXTERNAL
      auto* button = check->widget()->findChild<QToolButton*>();
      QVERIFY(button && button->isEnabled());
      button->click();  // SELECTEXTERNAL
      QCOMPARE(check->text().toInt(), first + 1);
      e->accept();  // SAVEEXTERNAL, then stored
    });
    h.application.window().panel()->Activate(0);
    QCOMPARE(RecordValueText(h.db(), 0, 2, FormatOptions{}), std::to_string(first + 2));
  }

  void aNewRecordSetUpByAPluginAloneIsNotStored() {
    test::EditorHarness h;
    h.Install(PluggedDatabase("qvt-counter"));
    app::RecordEditorDialog editor(h.workspace(), h.db(), h.access, kNewRecord, false);
    QVERIFY(editor.Start());
    QVERIFY(!editor.control(2)->text().isEmpty());
    editor.accept();
    QCOMPARE(h.db().count(), 1u);
  }

  void configureHandsThePluginTheFieldSettings() {
    test::EditorHarness h;
    auto db = PluggedDatabase("qvt-writer");
    app::FieldEditorDialog editor(h.workspace(), *db, 2);
    QCOMPARE(editor.pluginEdit()->text(), QString("qvt-writer"));
    QPushButton* configure = nullptr;
    for (auto* b : editor.findChildren<QPushButton*>())
      if (b->text() == "Configure...") configure = b;
    QVERIFY(configure && configure->isEnabled());
    configure->click();
    QCOMPARE(editor.pluginSettings().setting, 0x01020304u);
    editor.accept();
    QCOMPARE(GetPluginSettings(db->definition().field(2)).byte_setting, std::uint8_t{7});

    // A plug-in that cannot be found is reported and the settings stay.
    app::FieldEditorDialog missing(h.workspace(), *db, 2);
    missing.pluginEdit()->setText("qvt-missing");
    for (auto* b : missing.findChildren<QPushButton*>())
      if (b->text() == "Configure...") b->click();
    QCOMPARE(h.prompter.Messages().back(),
             std::string("Could not locate or open Plug-in: qvt-missing to configure External "
                         "field type"));
    QCOMPARE(missing.pluginSettings().setting, 0x01020304u);
  }
};

QTEST_MAIN(ExternalFieldTest)
#include "external_field_test.moc"
