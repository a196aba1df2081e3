// Alarms in the program: the "Alarm" reminder's three buttons, alarms due while the program was
// closed, the Alarm Settings page and the record editor's alarm entry.

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>

#include "app/alarm_dialog.h"
#include "app/alarm_handler.h"
#include "app/alarm_scheduler.h"
#include "app/alarm_settings_page.h"
#include "app/properties_dialog.h"
#include "app/record_alarm_row.h"
#include "app/record_editor_dialog.h"
#include "exchange/alarm_settings.h"
#include "exchange/alarms.h"
#include "tests/app/app_fakes.h"
#include "tests/app/screenshot.h"

using namespace qv;
using namespace qv::app;

namespace {

struct Harness {
  test::TempPaths paths;
  test::MemorySettings settings;
  test::FixedClock clock{1'900'000'000};
  test::ScriptedPrompter prompter;
  test::ScriptedDialogs dialogs;
  test::ScriptedAccess access;
  NoFormatConverter converter;
  AlarmSound sound;
  GuiAlarmHandler alarms{sound};
  Application application{
      ApplicationServices{settings, paths, clock, prompter, dialogs, access, converter, alarms}};
  int reminders = 0;

  // Tasks: Task, Due, At; alarms allowed, the reminder shows Task and Due, snooze 15 minutes.
  std::unique_ptr<Database> Tasks() {
    auto db = test::DatabaseBuilder("Tasks")
                  .Field("Task", kText)
                  .Field("Due", kDate)
                  .Field("At", kTime)
                  .Row({"Water the plants", "NO DATE", "No Time"})
                  .Row({"Call the dentist", "NO DATE", "No Time"})
                  .Build();
    AlarmSettings s;
    s.allowed = true;
    s.reminder_fields[0] = 0;
    s.reminder_fields[1] = 1;
    s.snooze_amount = 15;
    ChangeAlarmSettings(*db, s);
    return db;
  }
  // Tasks on disk with an alarm on record 2, due a minute ago.
  std::string TasksWithAlarm() {
    auto db = Tasks();
    QDir().mkpath(QString::fromStdString(paths.DataFolder()));
    db->path = paths.DataFolder() + "/Tasks.PDB";
    SetRecordAlarm(settings, *db, 1, clock.now - 60);
    SaveDatabase(*db, clock);
    return db->path;
  }
  // The reminder is answered with the button `pick` chooses.
  void Answer(std::function<QPushButton*(AlarmDialog&)> pick) {
    alarms.setReminderHook([this, pick](AlarmDialog& dialog) {
      ++reminders;
      QTimer::singleShot(0, &dialog, [&dialog, pick] { pick(dialog)->click(); });
    });
  }
  void Fire(std::uint32_t number) {
    application.window().HandleLaunchText(QString("AppRunToHandleNotification %1").arg(number));
  }
  std::uint32_t ItemOnDisk(const std::string& path, std::uint32_t record) {
    Database db;
    return LoadDatabase(db, path, prompter) ? RecordAlarmItem(db, record) : 0xFFFFFFFF;
  }
};

}  // namespace

class AlarmTest : public QObject {
  Q_OBJECT
 private slots:
  void okClearsTheAlarm() {
    Harness h;
    std::string path = h.TasksWithAlarm();
    h.application.Start({});
    QCOMPARE(h.ItemOnDisk(path, 1), 1u);
    h.Answer([](AlarmDialog& d) { return d.okButton(); });
    h.Fire(1);
    QTRY_COMPARE(h.reminders, 1);
    QTRY_VERIFY(!LoadAlarmEntry(h.settings, 1));
    QCOMPARE(h.ItemOnDisk(path, 1), 0u);
    QVERIFY(h.dialogs.opened_records.empty());
    QVERIFY(!h.application.workspace().current().loaded);  // nothing was opened
  }

  void gotoRecordOpensItInTheEditor() {
    Harness h;
    std::string path = h.TasksWithAlarm();
    h.application.Start({});
    QStringList shown;
    h.Answer([&shown](AlarmDialog& d) {
      shown = {d.fieldBox(0)->text(), d.fieldBox(1)->text()};
      return d.gotoButton();
    });
    h.Fire(1);
    QTRY_COMPARE(h.dialogs.opened_records, std::vector<std::uint32_t>{1});
    // The reminder showed the two chosen fields.
    QCOMPARE(shown, QStringList({"Call the dentist", "NO DATE"}));
    QCOMPARE(h.application.workspace().current().path, path);
    QCOMPARE(h.settings.values["AlarmDatabase"], std::string());  // consumed
    QCOMPARE(h.settings.values["LastRecord"], std::string("1"));
    QVERIFY(!LoadAlarmEntry(h.settings, 1));
  }

  void snoozeSetsTheAlarmAgainAfterTheSnoozeTime() {
    Harness h;
    std::string path = h.TasksWithAlarm();
    h.settings.values["LastFileUsed"] = path;
    h.application.Start({});
    QVERIFY(h.application.workspace().current().loaded);
    h.Answer([](AlarmDialog& d) { return d.snoozeButton(); });
    h.Fire(1);
    QTRY_COMPARE(h.reminders, 1);
    // The open database was worked on in place.
    Database& open = h.application.workspace().current();
    QTRY_VERIFY(open.changed);
    auto entry = FindAlarmEntry(h.settings, *RecordIdentityOf(open, 1));
    QVERIFY(entry);
    QCOMPARE(entry->time, h.clock.now + 15 * 60);
    QCOMPARE(RecordAlarmItem(open, 1), entry->number);
  }

  void alarmDueWhileClosedFiresAtStart() {
    Harness h;
    h.TasksWithAlarm();
    h.Answer([](AlarmDialog& d) { return d.okButton(); });
    h.application.Start({});
    AlarmScheduler scheduler(h.settings, h.clock, {}, [&h](const QString& text) {
      h.application.window().HandleLaunchText(text);
    });
    scheduler.Start();
    QTRY_COMPARE(h.reminders, 1);
    QTRY_VERIFY(ListAlarmEntries(h.settings).empty());
    // Nothing more is due; the next look comes within a minute.
    scheduler.Check();
    QTest::qWait(100);
    QCOMPARE(h.reminders, 1);
    QCOMPARE(scheduler.interval(), 60'000);
  }

  void deletedRecordShowsNoReminder() {
    Harness h;
    std::string path = h.TasksWithAlarm();
    Database db;
    QVERIFY(LoadDatabase(db, path, h.prompter));
    DeleteRecord(db, 1);
    QVERIFY(SaveDatabase(db, h.clock));
    h.application.Start({});
    h.Answer([](AlarmDialog& d) { return d.okButton(); });
    h.Fire(1);
    QTRY_VERIFY(!h.prompter.Messages().empty());
    QCOMPARE(
        h.prompter.Messages().back(),
        std::string("An Alarm has gone off but the record no longer exists in this databsae."));
    QCOMPARE(h.reminders, 0);
  }

  void alarmDialogScreenshot() {
    AlarmReminder reminder;
    reminder.database_name = "Tasks";
    reminder.field_names[0] = "Task";
    reminder.field_texts[0] = "Call the dentist about the crown";
    reminder.field_names[1] = "Due";
    reminder.field_texts[1] = "24/12/2026";
    AlarmDialog dialog(reminder);
    // Keyboard: OK takes Enter; Tab walks OK, Goto Record, Snooze.
    QVERIFY(dialog.okButton()->isDefault());
    QCOMPARE(dialog.okButton()->nextInFocusChain(), dialog.gotoButton());
    test::Shoot(dialog, "alarm_dialog");
    QVERIFY(dialog.width() <= 1366 && dialog.height() <= 768);
  }

  void settingsPageStoresOnOkAndCancelChangesNothing() {
    Harness h;
    auto db = h.Tasks();
    const Bytes before = db->definition().bytes();
    {
      PropertiesDialog dialog(h.application.workspace(), h.access, *db);
      AlarmSettingsPage* page = dialog.alarmsPage();
      page->automaticChoice()->setChecked(true);
      page->snoozeAmount()->setValue(2);
      dialog.reject();
      QCOMPARE(db->definition().bytes(), before);
    }
    PropertiesDialog dialog(h.application.workspace(), h.access, *db);
    dialog.ShowPage(PropertiesDialog::kAlarmsPage);
    AlarmSettingsPage* page = dialog.alarmsPage();
    QVERIFY(page->allowBox()->isChecked());
    page->automaticChoice()->setChecked(true);
    QVERIFY(page->dateField()->isEnabled());
    QCOMPARE(page->dateField()->currentText(), QString("Due"));
    page->timeField()->setCurrentIndex(page->timeField()->findText("At"));
    page->snoozeAmount()->setValue(2);
    page->snoozeUnit()->setCurrentIndex(1);
    test::Shoot(dialog, "properties_alarm_settings");
    dialog.accept();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    dialog.TakeResult(*db);
    AlarmSettings s = ReadAlarmSettings(db->definition());
    QVERIFY(s.automatic);
    QCOMPARE(s.date_field, 1);
    QCOMPARE(s.time_field, 2);
    QCOMPARE(s.SnoozeSeconds(), std::int64_t{7200});
  }

  void recordEditorSetsAndClearsTheRecordsAlarm() {
    Harness h;
    auto db = h.Tasks();
    db->loaded = true;
    Workspace& ws = h.application.workspace();
    {
      RecordEditorDialog editor(ws, *db, h.access, 0, false);
      QVERIFY(editor.Start());
      RecordAlarmRow* row = editor.alarmRow();
      QVERIFY(row);
      QVERIFY(!row->setBox()->isChecked());
      row->setBox()->setChecked(true);
      row->when()->setDateTime(QDateTime(QDate(2030, 5, 6), QTime(7, 45), Qt::UTC));
      test::Shoot(editor, "record_editor_alarm");
      editor.accept();
    }
    auto entry = FindAlarmEntry(h.settings, *RecordIdentityOf(*db, 0));
    QVERIFY(entry);
    QCOMPARE(AlarmTimeText(entry->time), std::string("2030-05-06 07:45"));
    QCOMPARE(RecordAlarmItem(*db, 0), entry->number);
    RecordEditorDialog editor(ws, *db, h.access, 0, false);
    QVERIFY(editor.Start());
    QVERIFY(editor.alarmRow()->setBox()->isChecked());
    editor.alarmRow()->setBox()->setChecked(false);
    editor.accept();
    QVERIFY(!LoadAlarmEntry(h.settings, entry->number));
    QCOMPARE(RecordAlarmItem(*db, 0), 0u);
  }
};

QTEST_MAIN(AlarmTest)
#include "alarm_test.moc"
