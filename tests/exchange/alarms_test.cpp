#include "exchange/alarms.h"

#include <gtest/gtest.h>

#include "exchange/alarm_fired.h"
#include "exchange/alarm_settings.h"
#include "processing/sort.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

using test::DatabaseBuilder;

class ScriptedScreens : public AlarmScreens {
 public:
  void PlaySound() override { ++sounds; }
  AlarmChoice ShowReminder(const AlarmReminder& reminder) override {
    shown.push_back(reminder);
    return choice;
  }
  AlarmChoice choice = AlarmChoice::Ok;
  int sounds = 0;
  std::vector<AlarmReminder> shown;
};

class AlarmsTest : public ::testing::Test {
 protected:
  AlarmsTest() : workspace(prompter, settings, clock) {}

  // Tasks sorted by name once Sort() runs: Cherry, Apple, Banana become Apple, Banana, Cherry.
  std::unique_ptr<Database> Tasks() {
    auto db = DatabaseBuilder("Tasks")
                  .Field("Name", kText)
                  .Field("Due", kDate)
                  .Field("At", kTime)
                  .Row({"Cherry", "NO DATE", "No Time"})
                  .Row({"Apple", "NO DATE", "No Time"})
                  .Row({"Banana", "NO DATE", "No Time"})
                  .Build();
    AlarmSettings s;
    s.allowed = true;
    s.reminder_fields[0] = 0;
    s.reminder_fields[1] = 1;
    s.snooze_amount = 10;
    ChangeAlarmSettings(*db, s);
    db->path = folder.Path("Tasks.PDB");
    return db;
  }
  void Save(Database& db) { ASSERT_TRUE(SaveDatabase(db, clock)); }

  test::TempFolder folder;
  test::ScriptedPrompter prompter;
  test::MemorySettings settings;
  test::FixedClock clock{1'800'000'000};
  Workspace workspace;
  ScriptedScreens screens;
};

TEST_F(AlarmsTest, EntryAndAlarmItemAreWrittenAndReplaced) {
  auto db = Tasks();
  auto first = SetRecordAlarm(settings, *db, 1, 1'800'000'600);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->number, 1u);
  EXPECT_EQ(settings.values["Alarms/1/RecNum"], "1");
  EXPECT_EQ(settings.values["Alarms/1/AlarmTime"], "1800000600");
  EXPECT_EQ(settings.values["Alarms/1/DBPath"], db->path);
  EXPECT_EQ(settings.values["Alarms/1/GUID"].size(), 28u);
  EXPECT_EQ(RecordAlarmItem(*db, 1), 1u);
  EXPECT_EQ(FindAlarmEntry(settings, *RecordIdentityOf(*db, 1))->number, 1u);

  auto other = SetRecordAlarm(settings, *db, 2, 1'800'000'700);
  EXPECT_EQ(other->number, 2u);
  // Setting again replaces the record's own alarm, and its number is free for reuse.
  auto again = SetRecordAlarm(settings, *db, 1, 1'800'000'900);
  EXPECT_EQ(again->number, 1u);
  EXPECT_EQ(ListAlarmEntries(settings).size(), 2u);
  EXPECT_EQ(LoadAlarmEntry(settings, 1)->time, 1'800'000'900);

  EXPECT_TRUE(ClearRecordAlarm(settings, *again, db.get(), 1));
  EXPECT_EQ(RecordAlarmItem(*db, 1), 0u);
  EXPECT_FALSE(LoadAlarmEntry(settings, 1));
  EXPECT_FALSE(ClearRecordAlarm(settings, *again, db.get(), 1));
}

TEST_F(AlarmsTest, DatabaseWithoutRecordHeadersTakesNoAlarm) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"x"}).Build();
  EXPECT_FALSE(SetRecordAlarm(settings, *db, 0, 5));
  EXPECT_TRUE(settings.values.empty());
}

TEST_F(AlarmsTest, DamagedEntriesAreSkipped) {
  settings.values["Alarms/4/GUID"] = "zz";
  settings.values["Alarms/4/DBPath"] = "/x";
  settings.values["Alarms/4/RecNum"] = "0";
  settings.values["Alarms/4/AlarmTime"] = "1";
  settings.values["Alarms/nine/RecNum"] = "1";
  settings.values["Alarms/0/RecNum"] = "1";
  EXPECT_TRUE(ListAlarmEntries(settings).empty());
  settings.values["Alarms/4/GUID"] = std::string(28, 'a');
  settings.values["Alarms/4/AlarmTime"] = "12x";
  EXPECT_TRUE(ListAlarmEntries(settings).empty());
  settings.values["Alarms/4/AlarmTime"] = "12";
  EXPECT_EQ(ListAlarmEntries(settings).size(), 1u);
}

TEST_F(AlarmsTest, RecordMovedBySortingIsFoundByIdentity) {
  auto db = Tasks();
  SetRecordAlarm(settings, *db, 0, 1'700'000'000);  // Cherry, at index 0
  db->definition().set_sort_key(0, {0, true});
  SortDatabase(*db, true, prompter);
  ASSERT_EQ(RecordValueText(*db, 2, 0, {}), "Cherry");
  Save(*db);

  screens.choice = AlarmChoice::GotoRecord;
  EXPECT_EQ(HandleAlarmNotification(workspace, 1, screens, nullptr), kAlarmShowRecord);
  ASSERT_EQ(screens.shown.size(), 1u);
  EXPECT_EQ(screens.shown[0].field_texts[0], "Cherry");
  EXPECT_EQ(screens.shown[0].field_names[1], "Due");
  EXPECT_EQ(screens.shown[0].database_name, "Tasks");
  EXPECT_EQ(settings.values["LastRecord"], "2");
  EXPECT_EQ(settings.values["AlarmDatabase"], db->path);
  EXPECT_FALSE(LoadAlarmEntry(settings, 1));
  // The alarm's database was saved with the item cleared.
  Database reread;
  ASSERT_TRUE(LoadDatabase(reread, db->path, prompter));
  EXPECT_EQ(RecordAlarmItem(reread, 2), 0u);
}

TEST_F(AlarmsTest, DeletedRecordGivesTheMessageAndNoDialog) {
  auto db = Tasks();
  SetRecordAlarm(settings, *db, 1, 1'700'000'000);
  DeleteRecord(*db, 1);
  Save(*db);
  EXPECT_EQ(HandleAlarmNotification(workspace, 1, screens, nullptr), kAlarmHandled);
  EXPECT_EQ(screens.sounds, 1);
  EXPECT_TRUE(screens.shown.empty());
  EXPECT_EQ(prompter.Messages(),
            std::vector<std::string>{
                "An Alarm has gone off but the record no longer exists in this databsae."});
  // The entry stays, but it is not raised again.
  ASSERT_TRUE(LoadAlarmEntry(settings, 1));
  EXPECT_TRUE(DueAlarmEntries(settings, 1'900'000'000).empty());
}

TEST_F(AlarmsTest, MissingDatabaseGivesItsMessage) {
  auto db = Tasks();
  SetRecordAlarm(settings, *db, 1, 1'700'000'000);
  EXPECT_EQ(HandleAlarmNotification(workspace, 1, screens, nullptr), kAlarmHandled);
  EXPECT_EQ(
      prompter.Messages(),
      std::vector<std::string>{
          "Error: Could not open database for alarm.  Perhaps the database has been deleted?"});
  EXPECT_EQ(HandleAlarmNotification(workspace, 7, screens, nullptr), kAlarmNotLoaded);
}

TEST_F(AlarmsTest, SnoozeWritesANewAlarmTime) {
  auto db = Tasks();
  SetRecordAlarm(settings, *db, 2, 1'700'000'000);
  db->loaded = true;
  screens.choice = AlarmChoice::Snooze;
  // The open database is worked on in place and left for the program to save.
  EXPECT_EQ(HandleAlarmNotification(workspace, 1, screens, db.get()), kAlarmHandled);
  auto entry = FindAlarmEntry(settings, *RecordIdentityOf(*db, 2));
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->time, clock.now + 10 * 60);
  EXPECT_EQ(RecordAlarmItem(*db, 2), entry->number);
  EXPECT_TRUE(db->changed);
  EXPECT_FALSE(std::filesystem::exists(db->path));
}

TEST_F(AlarmsTest, OkClearsAndDueListSkipsTheFuture) {
  auto db = Tasks();
  Save(*db);
  SetRecordAlarm(settings, *db, 0, 100);
  SetRecordAlarm(settings, *db, 1, 50);
  SetRecordAlarm(settings, *db, 2, 5000);
  auto due = DueAlarmEntries(settings, 100);
  ASSERT_EQ(due.size(), 2u);
  EXPECT_EQ(due[0].time, 50);
  EXPECT_EQ(NextAlarmTime(settings), 50);
  EXPECT_EQ(AlarmFired(workspace, due[0], screens, db.get()), kAlarmHandled);
  EXPECT_EQ(RecordAlarmItem(*db, 1), 0u);
  EXPECT_EQ(ListAlarmEntries(settings).size(), 2u);
}

TEST_F(AlarmsTest, SettingsRoundTripAndAutomaticTimes) {
  auto db = Tasks();
  AlarmSettings s = ReadAlarmSettings(db->definition());
  EXPECT_TRUE(s.allowed);
  EXPECT_EQ(s.snooze_amount, 10);
  s.automatic = true;
  s.date_field = 1;
  s.time_field = 2;
  s.snooze_unit = SnoozeUnit::Hours;
  ChangeAlarmSettings(*db, s);
  AlarmSettings back = ReadAlarmSettings(db->definition());
  EXPECT_EQ(back.date_field, 1);
  EXPECT_EQ(back.time_field, 2);
  EXPECT_EQ(back.SnoozeSeconds(), 36000);
  // A date field slot that now holds a text field reads as none.
  s.date_field = 0;
  ChangeAlarmSettings(*db, s);
  EXPECT_EQ(ReadAlarmSettings(db->definition()).date_field, -1);
  s.date_field = 1;
  ChangeAlarmSettings(*db, s);

  EXPECT_FALSE(AutomaticAlarmTime(*db, 0));  // NO DATE
  auto values = test::ValuesFromTexts(*db, {{0, "Egg"}, {1, "3/15/2027"}, {2, "9:30:00 AM"}},
                                      test::UsOptions());
  values.prefix = DecodeRecord(db->records[0].data).prefix;
  db->records[0].data = EncodeRecord(db->definition(), values);
  EXPECT_EQ(AutomaticAlarmTime(*db, 0), ParseAlarmTime("2027-03-15 09:30"));
}

TEST(AlarmTimeText, RoundTripsAndRefusesNonsense) {
  EXPECT_EQ(ParseAlarmTime("1970-01-02 00:01"), 86460);
  EXPECT_EQ(AlarmTimeText(*ParseAlarmTime("2024-02-29 23:59")), "2024-02-29 23:59");
  for (const char* bad : {"2023-02-29 10:00", "2024-13-01 10:00", "2024-01-01 24:00", "2024-01-01",
                          "2024-01-01 10:00x", ""})
    EXPECT_FALSE(ParseAlarmTime(bad)) << bad;
}

}  // namespace
}  // namespace qv
