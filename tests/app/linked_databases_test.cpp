// Linked databases driven as a user drives them: a project's record shows its tasks and opens
// them, a task opens its steps, Back returns; a task added under the restriction takes the
// project's key, a task is reassigned to another project, and deleting a project deletes its
// tasks. Pictures of the parent record and of the restricted list are written on the way. The
// field editor defines a DB Popup and a Relationship with the other database's fields.

#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include "app/delete_records_dialog.h"
#include "app/field_controls.h"
#include "app/field_editor_dialog.h"
#include "app/link_settings_page.h"
#include "app/linked_navigation.h"
#include "app/main_window.h"
#include "app/record_editor_dialog.h"
#include "engine/field_settings.h"
#include "processing/filter_dialog.h"
#include "processing/linked_database.h"
#include "tests/app/editor_harness.h"
#include "tests/app/screenshot.h"
#include "tests/support/linked_family.h"

using namespace qv;
using test::WhenShown;

namespace {

std::vector<std::string> VisibleNames(const Database& db) {
  std::vector<std::string> names;
  for (std::uint32_t n : db.visible) names.push_back(RecordValueText(db, n, 0, {}));
  return names;
}

// Opens the record editor on a row of the list and runs `act` on it.
void OnRecord(app::MainWindow& window, int row, std::function<void(app::RecordEditorDialog*)> act) {
  WhenShown<app::RecordEditorDialog>(act);
  window.panel()->Activate(row);
}

QPushButton* LinkButton(app::RecordEditorDialog* editor, int slot) {
  return editor->control(slot)->widget()->findChild<QPushButton*>();
}

// A new field of `type` reaching `target`, as the field editor shows it before OK.
void NewLinkField(app::FieldEditorDialog& editor, const char* name, unsigned type,
                  const char* target) {
  editor.nameEdit()->setText(name);
  editor.SelectType(type);
  editor.targetEdit()->setText(target);
  emit editor.targetEdit()->editingFinished();
}

void Choose(QComboBox* box, const QString& text) {
  const int at = box->findText(text);
  QVERIFY2(at > 0, qPrintable(text));
  box->setCurrentIndex(at);
}

int LinkByte(const Database& db, int slot, std::size_t offset) {
  return db.definition().field(slot).bytes()[offset];
}

}  // namespace

class LinkedDatabasesTest : public QObject {
  Q_OBJECT

 private slots:
  void ParentChildGrandchildAndBack();
  void DbPopupPicksAndFillsItsPair();
  void FieldEditorDefinesLinkSettings();
};

void LinkedDatabasesTest::ParentChildGrandchildAndBack() {
  test::EditorHarness h;
  const test::LinkedFamily family = test::SaveLinkedFamily(h.paths.DataFolder());
  app::MainWindow& window = h.application.window();
  window.resize(1366, 740);
  QVERIFY(window.flows().OpenDatabaseFile(family.projects));
  window.panel()->Refresh();
  Workspace& ws = h.workspace();

  // Parent: the record shows its linked tasks; the button opens them.
  OnRecord(window, 0, [&](app::RecordEditorDialog* editor) {
    auto* list = editor->control(1)->widget()->findChild<QListWidget*>("linkedRecords");
    QVERIFY(list);
    QCOMPARE(list->count(), 2);
    QCOMPARE(list->item(0)->text(), QString("Dig"));
    test::Shoot(*editor, "linked_parent_record");
    LinkButton(editor, 1)->click();
  });
  QCOMPARE(ws.index(), 1);
  QCOMPARE(ws.current().path, family.tasks);
  QCOMPARE(VisibleNames(ws.current()), (std::vector<std::string>{"Dig", "Plant"}));
  QVERIFY(window.windowTitle().startsWith("Project Tasks (2/3)"));
  app::LinkBar* bar = window.linkBar();
  QVERIFY(bar->isVisibleTo(&window));
  QVERIFY(bar->crumbs()->text().contains("Projects: Garden"));
  test::Shoot(window, "linked_child_list");

  // Grandchild, then a fifth database is refused, then Back.
  OnRecord(window, 0, [&](app::RecordEditorDialog* editor) { LinkButton(editor, 2)->click(); });
  QCOMPARE(ws.index(), 2);
  QCOMPARE(VisibleNames(ws.current()), (std::vector<std::string>{"Spade", "Gloves"}));
  QVERIFY(bar->crumbs()->text().contains("Project Tasks: Dig"));
  auto filler = test::DatabaseBuilder("Filler").Field("Name", kText).Build();
  filler->loaded = true;
  QVERIFY(ws.Push(std::move(filler)));
  QVERIFY(!app::FollowLink(ws, h.access, 0, 0));
  QCOMPARE(h.prompter.Messages().back(), std::string(app::kStackFull));
  ws.Pop();
  QVERIFY(bar->Back());
  QCOMPARE(ws.index(), 1);
  QCOMPARE(ws.current().path, family.tasks);

  // A task added under the restriction belongs to Garden.
  WhenShown<app::RecordEditorDialog>([](app::RecordEditorDialog* editor) {
    QVERIFY(editor->control(0)->SetText("Water"));
    QCOMPARE(editor->control(1)->text(), QString("Garden"));
    editor->accept();
  });
  window.panel()->NewRecord();
  Database& tasks = ws.current();
  QCOMPARE(tasks.count(), 4u);
  auto water = *std::find_if(tasks.visible.begin(), tasks.visible.end(), [&](std::uint32_t n) {
    return RecordValueText(tasks, n, 0, {}) == "Water";
  });
  QCOMPARE(ValueUInt32(ValueBytes(tasks.records[water].data, 1)), 1u);

  // Reassigned to Garage, it leaves Garden's list.
  const int water_row = static_cast<int>(
      std::find(tasks.visible.begin(), tasks.visible.end(), water) - tasks.visible.begin());
  h.prompter.Queue(Answer::Yes);
  OnRecord(window, water_row, [&](app::RecordEditorDialog* editor) {
    WhenShown<QInputDialog>([](QInputDialog* chooser) {
      chooser->setTextValue("2. Garage");
      chooser->accept();
    });
    LinkButton(editor, 1)->click();
    QCOMPARE(editor->control(1)->text(), QString("Garage"));
    editor->accept();
  });
  QCOMPARE(h.prompter.Questions().back(), std::string(kReassignQuestion));
  QCOMPARE(VisibleNames(tasks), (std::vector<std::string>{"Dig", "Plant"}));
  QCOMPARE(ValueUInt32(ValueBytes(tasks.records[water].data, 1)), 2u);

  // Back to the projects (the tasks saved on the way), then Garden goes with its tasks.
  QVERIFY(bar->Back());
  QCOMPARE(ws.index(), 0);
  QVERIFY(!bar->isVisibleTo(&window));
  FilterDialogControls filter;
  filter.conditions[0] = {.enabled = true, .field = 0, .must_contain = "Garden"};
  std::string problem;
  QVERIFY(StoreFilterDialog(ws.current(), filter, ws.options, problem));
  window.panel()->Refresh();
  h.prompter.Queue(Answer::Yes);
  WhenShown<app::DeleteRecordsDialog>([](app::DeleteRecordsDialog* d) { d->accept(); });
  window.panel()->DeleteRecords();
  QCOMPARE(h.prompter.Questions().back(), std::string(kDeleteLinkedQuestion));
  QCOMPARE(ws.current().count(), 1u);
  // The projects were saved before their tasks went.
  Database projects;
  QVERIFY(LoadDatabase(projects, family.projects, h.prompter));
  QCOMPARE(projects.count(), 1u);
  Database saved;
  QVERIFY(LoadDatabase(saved, family.tasks, h.prompter));
  ShowAllRecords(saved);
  QCOMPARE(VisibleNames(saved), (std::vector<std::string>{"Sweep", "Water"}));
}

void LinkedDatabasesTest::DbPopupPicksAndFillsItsPair() {
  test::EditorHarness h;
  test::SaveLinkedFamily(h.paths.DataFolder());
  auto orders = test::DatabaseBuilder("Orders")
                    .Field("Order", kText)
                    .Field("Project", kDbPopup)
                    .Field("Billed to", kDbPopup)
                    .Field("Other", kDbPopup)
                    .Row({"1", "", "", ""})
                    .Build();
  for (int s = 1; s <= 3; ++s) {
    FieldDefinition f = orders->definition().field(s);
    SetLinkTarget(f, "Projects");
    f.bytes()[link_settings::kSourceField] = 0;
    f.bytes()[link_settings::kPairGroup] = s == 3 ? 2 : 1;
  }
  const std::string path = h.paths.DataFolder() + "/Orders.PDB";
  orders->path = path;
  QVERIFY(SaveDatabase(*orders, h.clock));
  app::MainWindow& window = h.application.window();
  QVERIFY(window.flows().OpenDatabaseFile(path));
  window.panel()->Refresh();
  OnRecord(window, 0, [](app::RecordEditorDialog* editor) {
    auto* combo = qobject_cast<QComboBox*>(editor->control(1)->widget());
    QVERIFY(combo);
    QCOMPARE(combo->count(), 2);
    combo->setCurrentIndex(1);
    emit combo->activated(1);
    QCOMPARE(editor->control(2)->text(), QString("Garage"));
    QCOMPARE(editor->control(3)->text(), QString());
    editor->accept();
  });
  const Database& db = h.workspace().current();
  QCOMPARE(RecordValueText(db, 0, 1, {}), std::string("Garage"));
  QCOMPARE(RecordValueText(db, 0, 2, {}), std::string("Garage"));
}

void LinkedDatabasesTest::FieldEditorDefinesLinkSettings() {
  test::EditorHarness h;
  test::SaveLinkedFamily(h.paths.DataFolder());
  auto orders = test::DatabaseBuilder("Orders")
                    .Field("Order", kText)
                    .Field("Note", kText)
                    .Field("Number", kInteger)
                    .Build();
  orders->path = h.paths.DataFolder() + "/Orders.PDB";
  QVERIFY(SaveDatabase(*orders, h.clock));
  QVERIFY(h.application.window().flows().OpenDatabaseFile(orders->path));
  Database& db = h.db();

  // A DB Popup showing the tasks' Project field, in pairing group 3; the tasks' file name
  // differs from their title, so only the folder listing finds them.
  app::FieldEditorDialog popup(h.workspace(), db, -1);
  NewLinkField(popup, "Task's project", kDbPopup, "Project Tasks");
  app::LinkSettingsPage* page = popup.linkPage();
  QVERIFY(page->offersOtherFields());
  QVERIFY(page->otherFieldBox()->isVisibleTo(page));
  QVERIFY(!page->otherFieldEdit()->isVisibleTo(page));
  QCOMPARE(page->otherFieldBox()->findText("Steps"), -1);  // a Link shows nothing to pick
  Choose(page->otherFieldBox(), "Project");
  page->pairBox()->setValue(3);
  test::Shoot(popup, "field_editor_link_page");
  popup.accept();
  QCOMPARE(popup.result(), int(QDialog::Accepted));
  const int popup_slot = popup.slot();
  QCOMPARE(LinkTarget(db.definition().field(popup_slot)), std::string("Project Tasks"));
  QCOMPARE(LinkByte(db, popup_slot, link_settings::kSourceField), 1);
  QCOMPARE(LinkByte(db, popup_slot, link_settings::kPairGroup), 3);

  // Cancel leaves the field as it was.
  {
    app::FieldEditorDialog again(h.workspace(), db, popup_slot);
    QCOMPARE(again.linkPage()->otherFieldBox()->currentText(), QString("Project"));
    QCOMPARE(again.linkPage()->pairBox()->value(), 3);
    again.linkPage()->pairBox()->setValue(9);
    Choose(again.linkPage()->otherFieldBox(), "Task");
    again.reject();
  }
  QCOMPARE(LinkByte(db, popup_slot, link_settings::kSourceField), 1);
  QCOMPARE(LinkByte(db, popup_slot, link_settings::kPairGroup), 3);

  // A Relationship from this database's Number to the steps' Task field.
  app::FieldEditorDialog relation(h.workspace(), db, -1);
  NewLinkField(relation, "Steps", kRelationship, "Steps");
  page = relation.linkPage();
  QVERIFY(page->keyFieldBox()->isVisibleTo(page));
  QCOMPARE(page->keyFieldBox()->count(), 2);  // none, and the one Integer field
  Choose(page->keyFieldBox(), "Number");
  QCOMPARE(page->otherFieldBox()->count(), 2);  // none, and the one Linked field
  Choose(page->otherFieldBox(), "Task");
  relation.accept();
  const int relation_slot = relation.slot();
  QCOMPARE(LinkByte(db, relation_slot, link_settings::kSourceField), 2);
  QCOMPARE(LinkByte(db, relation_slot, link_settings::kOtherField), 1);
  Database steps;
  QVERIFY(LoadDatabase(steps, h.paths.DataFolder() + "/Steps.PDB", h.prompter));
  QCOMPARE(ChildKeyField(db, relation_slot, steps), 1);

  // A database that is not there: its field is typed, by number, as a name cannot be looked up.
  app::FieldEditorDialog missing(h.workspace(), db, relation_slot);
  page = missing.linkPage();
  page->targetEdit()->setText("Elsewhere");
  emit page->targetEdit()->editingFinished();
  QVERIFY(!page->offersOtherFields());
  QVERIFY(page->otherFieldEdit()->isVisibleTo(page));
  QCOMPARE(page->otherFieldEdit()->text(), QString("2"));
  test::Shoot(missing, "field_editor_link_fallback");
  page->otherFieldEdit()->setText("Task");
  missing.accept();
  QVERIFY(missing.result() != QDialog::Accepted);
  QVERIFY(QString::fromStdString(h.prompter.Messages().back()).contains("type its number"));
  QCOMPARE(LinkTarget(db.definition().field(relation_slot)), std::string("Steps"));
  page->otherFieldEdit()->setText("4");
  missing.accept();
  QCOMPARE(LinkTarget(db.definition().field(relation_slot)), std::string("Elsewhere"));
  QCOMPARE(LinkByte(db, relation_slot, link_settings::kOtherField), 3);
  QCOMPARE(LinkByte(db, relation_slot, link_settings::kSourceField), 2);
}

QTEST_MAIN(LinkedDatabasesTest)
#include "linked_databases_test.moc"
