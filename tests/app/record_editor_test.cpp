// The record editor, the properties and undo, driven as a user drives them: File > New and the
// Fields page make a database with a field of every type, records are entered, changed and
// deleted in the editor, and Undo and Redo take them back.

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QUndoStack>
#include <QtTest>

#include "app/commands.h"
#include "app/field_controls.h"
#include "app/field_editor_dialog.h"
#include "app/properties_dialog.h"
#include "app/record_editor_dialog.h"
#include "security/access.h"
#include "security/record_header.h"
#include "security/settings.h"
#include "tests/app/editor_harness.h"

using namespace qv;
using test::WhenShown;

namespace {

struct FieldSpec {
  const char* name;
  FieldType type;
};

const FieldSpec kEveryType[] = {{"Name", kText},         {"Qty", kInteger},
                                {"Price", kFloat},       {"Colour", kPopUp},
                                {"Done", kCheckBox},     {"No", kUnique},
                                {"Picture", kImage},     {"Bought", kDate},
                                {"At", kTime},           {"Link", kLink},
                                {"Linked", kLinked},     {"Notes", kNote},
                                {"Section", kHeading},   {"Shop", kDbPopup},
                                {"Double", kCalculated}, {"Relation", kRelationship},
                                {"Size", kConditional},  {"Plug", kExternal}};

std::string Text(const Database& db, std::uint32_t record, const char* field) {
  return RecordValueText(db, record, *db.definition().FindField(field), FormatOptions{});
}

// Fills the field editor for one new field of the list above.
void DefineField(app::FieldEditorDialog* editor, const FieldSpec& spec) {
  editor->nameEdit()->setText(spec.name);
  editor->SelectType(spec.type);
  if (spec.type == kPopUp) editor->popupItems() = {"red", "green"};
  if (spec.type == kCalculated) editor->formulaEdit()->setText("{Qty} * 2");
  editor->accept();
}

}  // namespace

class RecordEditorTest : public QObject {
  Q_OBJECT
 private slots:
  void newDatabaseThroughPropertiesThenEnterEditDeleteUndo() {
    test::EditorHarness h;
    app::MainWindow& window = h.application.window();
    WhenShown<app::PropertiesDialog>([](app::PropertiesDialog* props) {
      QCOMPARE(props->tabs()->currentIndex(), int{app::PropertiesDialog::kFieldsPage});
      props->nameEdit()->setText("Shop");
      for (const FieldSpec& spec : kEveryType) {
        WhenShown<app::FieldEditorDialog>(
            [spec](app::FieldEditorDialog* e) { DefineField(e, spec); });
        props->AddField();
      }
      props->accept();
    });
    window.RunCommand(app::command::kNew);
    Database& db = h.db();
    QVERIFY(db.loaded);
    QCOMPARE(db.name, std::string("Shop"));
    QCOMPARE(UsedFieldsInDisplayOrder(db.definition()).size(), std::size(kEveryType));
    QCOMPARE(db.definition().field(*db.definition().FindField("Colour")).type(), unsigned{kPopUp});

    // A new record: the Calculated value follows its operand while typing.
    WhenShown<app::RecordEditorDialog>([&db](app::RecordEditorDialog* e) {
      auto control = [&](const char* name) { return e->control(*db.definition().FindField(name)); };
      QVERIFY(control("Name")->SetText("apple"));
      QVERIFY(control("Qty")->SetText("3"));
      QCOMPARE(control("Double")->text(), QString("6.0000"));
      QVERIFY(control("Qty")->SetText("5"));
      QCOMPARE(control("Double")->text(), QString("10.0000"));
      QVERIFY(control("Price")->SetText("2.5"));
      QVERIFY(control("Colour")->SetText("green"));
      QVERIFY(control("Done")->SetText("1"));
      QVERIFY(control("Bought")->SetText("3/5/2002"));
      QVERIFY(control("At")->SetText("1:05 pm"));
      QVERIFY(control("Notes")->SetText("first line\nsecond line"));
      QVERIFY(!control("Qty")->SetText("many"));  // refused, and storing would say so
      QVERIFY(control("Qty")->SetText("5"));
      e->accept();
    });
    window.RunCommand(app::command::kNewRecord);
    QCOMPARE(db.count(), 1u);
    QCOMPARE(Text(db, 0, "Name"), std::string("apple"));
    QCOMPARE(Text(db, 0, "Double"), std::string("10.0000"));
    QCOMPARE(Text(db, 0, "Colour"), std::string("green"));
    QCOMPARE(Text(db, 0, "Bought"), std::string("3/5/2002"));
    QCOMPARE(Text(db, 0, "Notes"), std::string("first line\nsecond line"));
    QCOMPARE(Text(db, 0, "No"), std::string("0"));
    QVERIFY(window.windowTitle().contains("*"));

    // A second record through New inside the editor, then an edit of the first.
    WhenShown<app::RecordEditorDialog>([&db](app::RecordEditorDialog* e) {
      e->NewRecord();
      QVERIFY(e->control(*db.definition().FindField("Name"))->SetText("banana"));
      e->accept();
    });
    window.panel()->Activate(0);
    QCOMPARE(db.count(), 2u);
    QCOMPARE(Text(db, 1, "No"), std::string("1"));
    WhenShown<app::RecordEditorDialog>([&db](app::RecordEditorDialog* e) {
      QVERIFY(e->control(*db.definition().FindField("Name"))->SetText("apricot"));
      e->accept();
    });
    window.panel()->Activate(0);
    QCOMPARE(Text(db, 0, "Name"), std::string("apricot"));

    QUndoStack* undo = window.history().stack();
    QCOMPARE(undo->undoText(), QString("Edit Record"));
    undo->undo();
    QCOMPARE(Text(db, 0, "Name"), std::string("apple"));
    undo->redo();
    QCOMPARE(Text(db, 0, "Name"), std::string("apricot"));

    // Delete from the editor; Undo brings the record back with its values.
    h.prompter.Queue(Answer::Yes);
    WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* e) {
      e->DeleteRecord();
      e->reject();
    });
    window.panel()->Activate(1);
    QCOMPARE(db.count(), 1u);
    QCOMPARE(undo->undoText(), QString("Delete Record"));
    undo->undo();
    QCOMPARE(db.count(), 2u);
    QCOMPARE(Text(db, 1, "Name"), std::string("banana"));
    QCOMPARE(db.visible.size(), std::size_t{2});
  }

  void deletingEveryRecordIsUndoneInOneStep() {
    test::EditorHarness h;
    h.Install(test::SampleDatabase());
    app::MainWindow& window = h.application.window();
    WhenShown<QDialog>([](QDialog* d) { d->accept(); });  // "Delete Records": all within the filter
    window.RunCommand(app::command::kDeleteRecords);
    QCOMPARE(h.db().count(), 0u);
    window.history().stack()->undo();
    QCOMPARE(h.db().count(), 4u);
    QCOMPARE(Text(h.db(), 3, "Name"), std::string("apricot"));
  }

  void markedFieldsAreEncipheredOnRecordCloseInModeOne() {
    test::EditorHarness h;
    auto built = test::DatabaseBuilder("Vault")
                     .Field("Secret", kText)
                     .Field("Plain", kText)
                     .Row({"x", "y"})
                     .Build();
    EnableRecordHeaders(*built);
    built->definition().field(0).set_encrypted(true);
    SetEncryptionMode(built->definition(), kEncryptMarkedFields);
    h.Install(std::move(built));
    h.passwords.Type("pw").Type("pw");  // a first password is asked twice
    WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* e) {
      QVERIFY(e->control(0)->SetText("hidden words"));
      QVERIFY(e->control(1)->SetText("open words"));
      e->accept();
    });
    h.application.window().panel()->Activate(0);
    QCOMPARE(h.passwords.calls.size(), std::size_t{2});
    QCOMPARE(h.passwords.calls[0].mode, PasswordMode::kEncryption);
    auto header = ReadRecordHeader(h.db().records[0].data);
    QVERIFY(header && header->has(kRecordFieldsEnciphered));
    Bytes image = SerializeDatabase(h.db());
    std::string file(image.begin(), image.end());
    QVERIFY(file.find("open words") != std::string::npos);
    QVERIFY(file.find("hidden words") == std::string::npos);

    // Opening it again asks for the password and shows the deciphered text; closing it, even
    // unchanged, enciphers it again.
    h.passwords.Type("pw").Type("pw");
    WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* e) {
      QCOMPARE(e->control(0)->text(), QString("hidden words"));
      e->reject();
    });
    h.application.window().panel()->Activate(0);
    QVERIFY(ReadRecordHeader(h.db().records[0].data)->has(kRecordFieldsEnciphered));
  }

  void theEncryptBoxEnciphersARecordInManualMode() {
    test::EditorHarness h;
    auto built = test::DatabaseBuilder("Vault")
                     .Field("Secret", kText)
                     .Field("Plain", kText)
                     .Row({"x", "y"})
                     .Build();
    EnableRecordHeaders(*built);
    built->definition().field(0).set_encrypted(true);
    SetEncryptionMode(built->definition(), kManualEncryption);
    h.Install(std::move(built));
    h.passwords.Type("pw").Type("pw");  // a first password is asked twice
    WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* e) {
      QVERIFY(!e->encryptBox()->isHidden());
      QVERIFY(e->control(0)->SetText("s3cret"));
      e->encryptBox()->setChecked(true);
      e->accept();
    });
    h.application.window().panel()->Activate(0);
    auto header = ReadRecordHeader(h.db().records[0].data);
    QVERIFY(header && header->has(kRecordManualEncrypt) && header->has(kRecordFieldsEnciphered));
    Bytes image = SerializeDatabase(h.db());
    QVERIFY(std::string(image.begin(), image.end()).find("s3cret") == std::string::npos);
  }

  void viewRecordsOnlyOpensTheEditorReadOnly() {
    test::EditorHarness h;
    auto db = test::SampleDatabase();
    SetAccess(db->definition(), kEditRecords, kViewRecordsOnly);
    h.Install(std::move(db));
    const Bytes before = SerializeDatabase(h.db());
    WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* e) {
      QVERIFY(!e->control(0)->SetText("changed"));
      QCOMPARE(e->control(0)->text(), QString("apple"));
      e->NewRecord();  // nothing: a read-only editor adds no record
      e->accept();
    });
    h.application.window().panel()->Activate(0);
    QCOMPARE(SerializeDatabase(h.db()), before);
    QCOMPARE(h.application.window().history().stack()->count(), 0);
  }

  void cancelInPropertiesChangesNoByte() {
    test::EditorHarness h;
    h.Install(test::SampleDatabase());
    Database& db = h.db();
    db.changed = false;
    const Bytes before = SerializeDatabase(db);
    h.prompter.Queue(Answer::Yes);
    WhenShown<app::PropertiesDialog>([](app::PropertiesDialog* props) {
      props->nameEdit()->setText("Renamed");
      props->ShowPage(app::PropertiesDialog::kFieldsPage);
      props->DeleteSelectedField();
      QCOMPARE(props->fieldList()->count(), 4);
      props->SetEncryptionChoice(kEncryptEntireDatabase);
      props->reject();
    });
    h.application.window().RunCommand(app::command::kDbProperties);
    QCOMPARE(SerializeDatabase(db), before);
    QVERIFY(!db.changed);
  }

  void retypingInTheFieldEditorAsksBeforeLosingValues() {
    test::EditorHarness h;
    h.Install(test::SampleDatabase());
    h.prompter.Queue(Answer::No);
    WhenShown<app::FieldEditorDialog>([](app::FieldEditorDialog* e) {
      e->SelectType(kDate);
      e->accept();  // asked, answered No: stays open
      QVERIFY(e->isVisible());
      e->reject();
    });
    h.application.window().panel()->EditProperties(0);
    QCOMPARE(h.db().definition().field(0).type(), unsigned{kText});
    QVERIFY(h.prompter.Questions().back().find("4 values of 'Name' cannot be kept") !=
            std::string::npos);
  }

  void theEditorIsCompletedWithTheKeyboard() {
    test::EditorHarness h;
    h.Install(test::SampleDatabase());
    WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* e) {
      e->activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(e));
      QWidget* first = QApplication::focusWidget();
      QVERIFY(first);
      QTest::keyClicks(first, "kiwi");
      QTest::keyClick(first, Qt::Key_Tab);
      QTest::keyClicks(QApplication::focusWidget(), "12");
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    h.application.window().RunCommand(app::command::kNewRecord);
    QCOMPARE(h.db().count(), 5u);
    QVERIFY(h.db().records.size() == 5);
    bool found = false;
    for (std::uint32_t i = 0; i < h.db().count(); ++i)
      found = found || (Text(h.db(), i, "Name") == "kiwi" && Text(h.db(), i, "Qty") == "12");
    QVERIFY(found);
  }

  void propertiesAndTheFieldEditorAreCompletedWithTheKeyboard() {
    test::EditorHarness h;
    h.Install(test::SampleDatabase());
    WhenShown<app::PropertiesDialog>([](app::PropertiesDialog* props) {
      props->activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(props));
      QTest::keyClick(props, Qt::Key_F, Qt::AltModifier);  // the Fields page
      QCOMPARE(props->tabs()->currentIndex(), int{app::PropertiesDialog::kFieldsPage});
      WhenShown<app::FieldEditorDialog>([](app::FieldEditorDialog* e) {
        e->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(e));
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(e->nameEdit()));
        QTest::keyClicks(e->nameEdit(), "Size");  // replaces the selected "New Field"
        QTest::keyClick(e->nameEdit(), Qt::Key_Tab);
        QTest::keyClicks(QApplication::focusWidget(), "Integer");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
      });
      // From the page's tab: Tab to the field list, Tab to "Add...", Space presses it.
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
      QTest::keyClick(props, Qt::Key_Return);  // OK
    });
    h.application.window().RunCommand(app::command::kDbProperties);
    auto slot = h.db().definition().FindField("Size");
    QVERIFY(slot);
    QCOMPARE(h.db().definition().field(*slot).type(), unsigned{kInteger});
  }
};

QTEST_MAIN(RecordEditorTest)
#include "record_editor_test.moc"
