#include <gtest/gtest.h>

#include "engine/database.h"
#include "exchange/alarm_settings.h"
#include "exchange/alarms.h"
#include "tests/cli/qvdb_runner.h"
#include "tests/support/fakes.h"

namespace qv::test {
namespace {

class QvdbAlarmTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run({"new", file_, "--field", "Task:Text"}).exit_code, 0);
    for (const char* task : {"Task=call", "Task=write"})
      ASSERT_EQ(Run({"add", file_, task}).exit_code, 0);
  }
  // qvdb with settings of its own, never the user's.
  QvdbResult Run(const std::vector<std::string>& arguments) {
    return RunQvdb(arguments, "", {{"XDG_CONFIG_HOME", folder_.Path("config")}});
  }
  void AllowAlarms() {
    Database db;
    SilentPrompter quiet;
    ASSERT_TRUE(LoadDatabase(db, file_, quiet));
    AlarmSettings s;
    s.allowed = true;
    ChangeAlarmSettings(db, s);
    FixedClock clock;
    ASSERT_TRUE(SaveDatabase(db, clock));
  }
  TempFolder folder_;
  std::string file_ = folder_.Path("Tasks.PDB");
};

TEST_F(QvdbAlarmTest, SetListDueAndClear) {
  auto refused = Run({"alarm", file_, "set", "1", "2030-01-02 08:30"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("does not allow alarms"), std::string::npos) << refused.err;
  AllowAlarms();
  EXPECT_EQ(Run({"alarm", file_, "set", "1", "2030-01-32 08:30"}).exit_code, 2);
  EXPECT_EQ(Run({"alarm", file_, "set", "3", "2030-01-02 08:30"}).exit_code, 1);
  auto set = Run({"alarm", file_, "set", "2", "2030-01-02 08:30"});
  ASSERT_EQ(set.exit_code, 0) << set.err;
  EXPECT_EQ(set.out, "alarm 1 set for 2030-01-02 08:30\n");
  // The record carries the entry's number.
  Database db;
  SilentPrompter quiet;
  ASSERT_TRUE(LoadDatabase(db, file_, quiet));
  EXPECT_EQ(RecordAlarmItem(db, 1), 1u);

  EXPECT_NE(Run({"alarm", "list"}).out.find("2030-01-02 08:30"), std::string::npos);
  EXPECT_EQ(Run({"alarm", "due", "--at", "2030-01-02 08:29"}).out, "");
  EXPECT_EQ(Run({"alarm", "due", "--at", "2030-01-02 08:30"}).out,
            "1\t2030-01-02 08:30\t" + file_ + "\t2\n");
  ASSERT_EQ(Run({"alarm", file_, "clear", "2"}).exit_code, 0);
  EXPECT_EQ(Run({"alarm", "due", "--at", "2031-01-01 00:00"}).out, "");
  ASSERT_TRUE(LoadDatabase(db, file_, quiet));
  EXPECT_EQ(RecordAlarmItem(db, 1), 0u);
  EXPECT_EQ(Run({"alarm", file_, "clear", "2"}).out, "record 2 has no alarm\n");
  EXPECT_EQ(Run({"alarm", "list", "extra"}).exit_code, 2);
}

TEST_F(QvdbAlarmTest, AutomaticAlarmsComeFromTheStoredDateAndTime) {
  ASSERT_EQ(Run({"field", file_, "add", "Due:Date"}).exit_code, 0);
  ASSERT_EQ(Run({"field", file_, "add", "At:Time"}).exit_code, 0);
  {
    Database db;
    SilentPrompter quiet;
    ASSERT_TRUE(LoadDatabase(db, file_, quiet));
    AlarmSettings s;
    s.allowed = true;
    s.automatic = true;
    s.date_field = *db.definition().FindField("Due");
    s.time_field = *db.definition().FindField("At");
    ChangeAlarmSettings(db, s);
    FixedClock clock;
    ASSERT_TRUE(SaveDatabase(db, clock));
  }
  const std::vector<std::string> formats = {"--date-format", "dd/MM/yyyy", "--time-format",
                                            "HH:mm"};
  auto with = [&](std::vector<std::string> args) {
    args.insert(args.end(), formats.begin(), formats.end());
    return Run(args);
  };
  ASSERT_EQ(with({"set", file_, "1", "Due=24/12/2099", "At=09:15"}).exit_code, 0);
  ASSERT_EQ(with({"add", file_, "Task=past", "Due=01/01/2001"}).exit_code, 0);
  // The past date sets nothing; moving the date moves the alarm, emptying it clears it.
  EXPECT_EQ(Run({"alarm", "due", "--at", "2100-01-01 00:00"}).out,
            "1\t2099-12-24 09:15\t" + file_ + "\t1\n");
  ASSERT_EQ(with({"set", file_, "1", "Due=25/12/2099"}).exit_code, 0);
  EXPECT_NE(Run({"alarm", "list"}).out.find("2099-12-25 09:15"), std::string::npos);
  ASSERT_EQ(with({"set", file_, "1", "Due=NO DATE"}).exit_code, 0);
  EXPECT_EQ(Run({"alarm", "due", "--at", "2100-01-01 00:00"}).out, "");
}

}  // namespace
}  // namespace qv::test
