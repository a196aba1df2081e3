// Pictures of the record editor with a field of every type, each page of the database
// properties, the field editor of a calculated and of a pop-up field, the pop-up list editor,
// the security access dialog and the password dialog, written under the build folder.

#include <QDir>
#include <QLineEdit>
#include <QTabWidget>
#include <QtTest>

#include "app/field_controls.h"
#include "app/field_editor_dialog.h"
#include "app/password_dialog.h"
#include "app/popup_list_editor.h"
#include "app/properties_dialog.h"
#include "app/record_editor_dialog.h"
#include "app/security_access_dialog.h"
#include "engine/field_settings.h"
#include "processing/conditional.h"
#include "processing/field_edit.h"
#include "processing/formula_builder.h"
#include "security/access.h"
#include "tests/app/editor_harness.h"
#include "tests/app/screenshot.h"

using namespace qv;

namespace {

// Saves the widget's picture, no larger than a 1366 x 768 screen less its panel.
void Shoot(QWidget& widget, const QString& name) {
  widget.show();
  QVERIFY(QTest::qWaitForWindowExposed(&widget));
  QVERIFY2(widget.width() <= 1366 && widget.height() <= 740, qPrintable(name));
  test::Shoot(widget, name);
}

// A database with one field of every type and one record holding a value in each.
std::unique_ptr<Database> EveryType() {
  test::DatabaseBuilder b("Workshop");
  b.Field("Item", kText).Field("Qty", kInteger).Field("Price", kFloat);
  b.Field("Colour", kPopUp).Items({"Red", "Green", "Blue"}).Field("Counted", kCheckBox);
  b.Field("Number", kUnique).Field("Details", kHeading).Field("Bought", kDate).Field("At", kTime);
  b.Field("Notes", kNote, 400).Field("Total", kCalculated).Field("Stock", kConditional);
  b.Field("Sketch", kImage).Field("Supplier", kLink).Field("Order", kLinked);
  b.Field("Shop", kDbPopup).Field("Parts", kRelationship).Field("Age", kExternal);
  auto db = b.Build();
  RecordValues values = DefaultValues(*db);
  const std::pair<int, const char*> texts[] = {
      {0, "Cordless drill"},
      {1, "2"},
      {2, "89.90"},
      {3, "Green"},
      {4, "1"},
      {7, "3/14/2024"},
      {8, "9:30 am"},
      {9, "18 V with two batteries;\nkeep the charger in the drawer."},
      {15, "Hardware Co"}};
  for (auto [slot, text] : texts)
    values.Set(slot, *ParseValue(db->definition().field(slot), db->schema.fields[slot], text, {}));
  Bytes sketch(2001, 0);
  sketch[0] = 1;
  for (int x = 10; x < 150; ++x)
    for (int y : {10, 11, 88, 89, 10 + (x - 10) * 78 / 140})
      sketch[1 + (y * 160 + x) / 8] |= 0x80 >> (x % 8);
  values.Set(12, sketch);
  StoreRecord(*db, values, kNewRecord);
  ShowAllRecords(*db);
  test::ScriptedPrompter prompter;
  BuildFormula(db->definition(), 10, "{Qty} * {Price}", prompter);
  db->definition().field(10).bytes()[43] = 5;  // two decimals
  ConditionalSettings low;
  low.test_field = 1;
  low.op = kCondLess;
  low.value = "5";
  low.then_text = "order more";
  low.else_text = "enough";
  low.Write(db->definition().field(11));
  SetLinkTarget(db->definition().field(13), "Suppliers");
  SetPluginName(db->definition().field(17), "agedays");
  RecalculateAll(*db, prompter);
  return db;
}

}  // namespace

class EditorScreenshotTest : public QObject {
  Q_OBJECT
 private slots:
  void recordEditorWithEveryType() {
    test::EditorHarness h;
    h.Install(EveryType());
    app::RecordEditorDialog editor(h.workspace(), h.db(), h.access, 0, false);
    QVERIFY(editor.Start());
    QCOMPARE(editor.control(10)->text(), QString("179.80"));
    Shoot(editor, "record_editor");
  }

  void propertiesPages() {
    test::EditorHarness h;
    h.Install(EveryType());
    app::PropertiesDialog dialog(h.workspace(), h.access, h.db());
    const char* names[] = {"properties_general", "properties_fields", "properties_views",
                           "properties_security", "properties_alarms"};
    for (int page = 0; page < 5; ++page) {
      dialog.ShowPage(page);
      Shoot(dialog, names[page]);
    }
  }

  void fieldEditors() {
    test::EditorHarness h;
    h.Install(EveryType());
    app::FieldEditorDialog calculated(h.workspace(), h.db(), 10);
    QCOMPARE(calculated.formulaEdit()->text(), QString("{Qty} * {Price}"));
    Shoot(calculated, "field_editor_calculated");
    app::FieldEditorDialog popup(h.workspace(), h.db(), 3);
    Shoot(popup, "field_editor_popup");
    app::FieldEditorDialog conditional(h.workspace(), h.db(), 11);
    Shoot(conditional, "field_editor_conditional");
  }

  void smallDialogs() {
    app::PopupListEditor popups({"Red", "Green", "Blue"});
    Shoot(popups, "popup_list_editor");
    DatabaseDefinition definition;
    SetAccess(definition, kEditRecords, kViewRecordsOnly);
    app::SecurityAccessDialog access(definition);
    Shoot(access, "security_access");
    app::PasswordDialog password(
        QString::fromStdString(std::string(PasswordTitle(PasswordMode::kEncryption))),
        "Please enter your Password");
    Shoot(password, "password_dialog");
  }
};

QTEST_MAIN(EditorScreenshotTest)
#include "editor_screenshot_test.moc"
