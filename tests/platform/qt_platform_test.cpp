#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "platform/qt/qt_locale.h"
#include "platform/qt/qt_paths.h"
#include "platform/qt/qt_settings.h"

namespace qv {
namespace {

TEST(QtLocale, PatternsBecomeWindowsStyle) {
  EXPECT_EQ(WindowsTimePattern("h:mm:ss AP t"), "h:mm:ss tt");
  EXPECT_EQ(WindowsTimePattern("HH:mm:ss t"), "HH:mm:ss");
  EXPECT_EQ(WindowsTimePattern("h:mm"), "H:mm");  // without a designator Qt's h is 24-hour
  Locale us = LocaleFromQt(QLocale(QLocale::English, QLocale::UnitedStates));
  EXPECT_EQ(us.short_date, "M/d/yy");
  EXPECT_EQ(us.date_separator, "/");
  EXPECT_EQ(us.time_format, "h:mm:ss tt");
  Locale de = LocaleFromQt(QLocale(QLocale::German, QLocale::Germany));
  EXPECT_EQ(de.date_separator, ".");
  EXPECT_EQ(de.time_format, "HH:mm:ss");
}

TEST(QtLocale, SettingsOverrideThePatterns) {
  QTemporaryDir dir;
  QtSettings settings(dir.filePath("q.conf"));
  settings.write("DateFormat", "yyyy-MM-dd");
  Locale l = LocaleFromQt(QLocale(QLocale::English, QLocale::UnitedStates), &settings);
  EXPECT_EQ(l.short_date, "yyyy-MM-dd");
  EXPECT_EQ(l.date_separator, "-");
  // A pattern the formatter cannot read is ignored, not shown as dates without parts.
  settings.write("DateFormat", "%d.%m.%Y");
  settings.write("TimeFormat", "h:mm tt");
  Locale ignored = LocaleFromQt(QLocale(QLocale::English, QLocale::UnitedStates), &settings);
  EXPECT_EQ(ignored.short_date,
            LocaleFromQt(QLocale(QLocale::English, QLocale::UnitedStates)).short_date);
  EXPECT_EQ(ignored.time_format, "h:mm:ss tt");
}

TEST(QtSettings, StringsUnderTheOriginalKeyNames) {
  QTemporaryDir dir;
  {
    QtSettings settings(dir.filePath("Quorvant3.conf"));
    settings.write("AutoSave", "0");
    settings.write("Alarms/3/DBPath", "/tmp/x.PDB");
    EXPECT_EQ(ReadIntSetting(settings, "AutoSave", 1), 0);
    EXPECT_EQ(ReadIntSetting(settings, "Missing", 7), 7);
    settings.sync();
  }
  QtSettings again(dir.filePath("Quorvant3.conf"));
  EXPECT_EQ(again.read("Alarms/3/DBPath"), "/tmp/x.PDB");
  again.remove("AutoSave");
  EXPECT_EQ(again.read("AutoSave"), std::nullopt);
}

TEST(QtPaths, HomeOverride) {
  QTemporaryDir dir;
  qputenv("QUORVANT_HOME", dir.path().toLocal8Bit());
  QtPaths paths;
  EXPECT_EQ(paths.DataFolder(), dir.path().toStdString());
  qunsetenv("QUORVANT_HOME");
  EXPECT_NE(paths.DataFolder().find("/Quorvant3"), std::string::npos);
}

}  // namespace
}  // namespace qv
