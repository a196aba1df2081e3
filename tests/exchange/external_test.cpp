#include "exchange/external.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/field_settings.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

const PluginPlaces kTestPlaces{TEST_PLUGIN_HOME};

// "Name" (Text 12), "Qty" (Integer), "Check" (External 16) in slots 0, 1, 2; one record.
std::unique_ptr<Database> PluginDatabase(const std::string& plugin, std::string name = "Test") {
  auto db = test::DatabaseBuilder(std::move(name))
                .Field("Name", kText, 12)
                .Field("Qty", kInteger)
                .Field("Check", kExternal, 16)
                .Row({"Alpha", "42", "before"})
                .Build();
  SetPluginName(db->definition().field(2), plugin);
  return db;
}

RecordValues FirstRecord(const Database& db) {
  return DecodeRecord(db.records[0].data);
}

std::string Text(const RecordValues& values, int slot) {
  return std::string(ValueText(values.values[static_cast<std::size_t>(slot)]));
}

TEST(CallExternal, StoresWhatAnAcceptingPluginFlaggedAsChanged) {
  auto db = PluginDatabase("qvt-writer");
  RecordValues values = FirstRecord(*db);
  EXPECT_EQ(CallExternal(kTestPlaces, 2, kSaveExternal, *db, 0, values), 1);
  EXPECT_EQ(Text(values, 2), "written");
  EXPECT_EQ(values.values[2], TextValue("written"));
  EXPECT_EQ(ValueInt32(values.values[1]), 99);
  EXPECT_EQ(Text(values, 0), "Alpha");  // untouched buffers keep their bytes
}

TEST(CallExternal, AFullTextBufferIsStoredWithinTheField) {
  auto db = PluginDatabase("qvt-filler");
  RecordValues values = FirstRecord(*db);
  ASSERT_EQ(CallExternal(kTestPlaces, 2, kInitExternal, *db, 0, values), 1);
  EXPECT_EQ(values.values[2].size(), 16u);  // the field length: 15 letters and the NUL
  EXPECT_EQ(Text(values, 2), std::string(15, 'x'));
}

TEST(CallExternal, ChangesNothingWithoutBothAcceptanceAndTheChangedFlag) {
  for (const char* plugin : {"qvt-refuse", "qvt-unflagged"}) {
    auto db = PluginDatabase(plugin);
    const RecordValues before = FirstRecord(*db);
    RecordValues values = before;
    for (int event : {kInitExternal, kSaveExternal, kSelectExternal})
      EXPECT_EQ(CallExternal(kTestPlaces, 2, event, *db, 0, values), 0) << plugin;
    EXPECT_EQ(values.values, before.values) << plugin;
  }
}

TEST(CallExternal, UnknownEventsMissingLibrariesAndPathsCallNothing) {
  auto db = PluginDatabase("qvt-counter");
  RecordValues values = FirstRecord(*db);
  const RecordValues before = values;
  EXPECT_EQ(CallExternal(kTestPlaces, 2, 32004, *db, 0, values), 0);
  EXPECT_EQ(CallExternal(kTestPlaces, 2, 32000, *db, 0, values), 0);
  EXPECT_EQ(values.values, before.values);
  // The first real call is the plug-in's first: the unknown events never reached it.
  EXPECT_EQ(CallExternal(kTestPlaces, 2, kInitExternal, *db, 0, values), 1);
  EXPECT_EQ(Text(values, 2), "1");

  auto missing = PluginDatabase("qvt-missing");
  RecordValues untouched = FirstRecord(*missing);
  EXPECT_EQ(CallExternal(kTestPlaces, 2, kInitExternal, *missing, 0, untouched), 0);
  EXPECT_EQ(untouched.values, FirstRecord(*missing).values);
}

TEST(CallExternal, KeepsTheLibraryLoadedBetweenRecords) {
  auto db = PluginDatabase("qvt-counter");
  RecordValues values = FirstRecord(*db);
  ASSERT_EQ(CallExternal(kTestPlaces, 2, kSelectExternal, *db, 0, values), 1);
  const int first = std::stoi(Text(values, 2));
  ASSERT_EQ(CallExternal(kTestPlaces, 2, kSelectExternal, *db, 0, values), 1);
  EXPECT_EQ(std::stoi(Text(values, 2)), first + 1);
  const std::string file = std::string(TEST_PLUGIN_HOME) + "/plugins/libqvt-counter.so";
  EXPECT_NE(dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(ExternalBlocks, EveryOffsetIsWhereThePluginReadsIt) {
  auto db = PluginDatabase("qvt-offsets", "Offsets");
  PluginSettings settings;
  settings.setting = 0x11223344;
  settings.byte_setting = 0x55;
  for (std::size_t i = 0; i < settings.config.size(); ++i)
    settings.config[i] = static_cast<std::uint8_t>(i + 1);
  SetPluginSettings(db->definition().field(2), settings);
  RecordValues values = FirstRecord(*db);
  ASSERT_EQ(CallExternal(kTestPlaces, 2, kInitExternal, *db, 7, values), 1);
  EXPECT_EQ(Text(values, 2), "ok");

  test::ScriptedPrompter prompter;
  EXPECT_EQ(ConfigureExternal(kTestPlaces, 2, "qvt-offsets", *db, settings, prompter), 1);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(settings.config.data())), "ok");
  EXPECT_TRUE(prompter.calls().empty());
}

TEST(ConfigureExternal, KeepsWhatThePluginAcceptedAndUnloadsIt) {
  // A copy under a name no record has loaded, so its unloading shows.
  test::TempFolder home;
  std::filesystem::create_directories(home.Path("plugins"));
  std::filesystem::copy_file(std::string(TEST_PLUGIN_HOME) + "/plugins/libqvt-writer.so",
                             home.Path("plugins/libqvt-fresh.so"));
  auto db = PluginDatabase("qvt-fresh");
  test::ScriptedPrompter prompter;
  PluginSettings settings;
  ASSERT_EQ(ConfigureExternal({home.path()}, 2, "qvt-fresh", *db, settings, prompter), 1);
  EXPECT_EQ(settings.setting, 0x01020304u);
  EXPECT_EQ(settings.byte_setting, 7);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(settings.config.data()), 10), "configured");
  EXPECT_EQ(dlopen(home.Path("plugins/libqvt-fresh.so").c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);

  // A plug-in without CONFIGEXTERNAL leaves the settings as they were.
  PluginSettings kept = settings;
  EXPECT_EQ(ConfigureExternal(kTestPlaces, 2, "qvt-counter", *db, kept, prompter), 1);
  EXPECT_EQ(kept, settings);
  EXPECT_TRUE(prompter.calls().empty());
}

TEST(ConfigureExternal, ReportsALibraryItCannotOpen) {
  auto db = PluginDatabase("qvt-missing");
  test::ScriptedPrompter prompter;
  PluginSettings settings;
  settings.byte_setting = 3;
  EXPECT_EQ(ConfigureExternal(kTestPlaces, 2, "qvt-missing", *db, settings, prompter), 0);
  ASSERT_EQ(prompter.calls().size(), 1u);
  EXPECT_EQ(prompter.calls()[0].text,
            "Could not locate or open Plug-in: qvt-missing to configure External field type");
  EXPECT_EQ(prompter.calls()[0].caption, "Error");
  EXPECT_EQ(settings.byte_setting, 3);
}

TEST(PluginLookup, RefusesNamesHoldingAPathSeparator) {
  // A library that a name with "/" would reach, were it not refused.
  test::TempFolder home;
  std::filesystem::create_directories(home.Path("plugins/libsub"));
  std::filesystem::copy_file(std::string(TEST_PLUGIN_HOME) + "/plugins/libqvt-writer.so",
                             home.Path("plugins/libsub/qvt-writer.so"));
  const PluginPlaces places{home.path()};
  auto db = PluginDatabase("sub/qvt-writer");
  RecordValues values = FirstRecord(*db);
  EXPECT_EQ(CallExternal(places, 2, kSaveExternal, *db, 0, values), 0);
  EXPECT_EQ(Text(values, 2), "before");
  test::ScriptedPrompter prompter;
  PluginSettings settings;
  EXPECT_EQ(ConfigureExternal(places, 2, "sub/qvt-writer", *db, settings, prompter), 0);
  EXPECT_EQ(prompter.Messages().size(), 1u);
  EXPECT_FALSE(ValidPluginName("..\\qvt-writer"));
  EXPECT_FALSE(ValidPluginName(""));
  EXPECT_TRUE(ValidPluginName("quorvant-age"));
}

TEST(ExamplePlugins, ChecksumFollowsTheOtherValues) {
  const PluginPlaces examples{EXAMPLE_PLUGIN_HOME};
  auto db = PluginDatabase("quorvant-checksum");
  RecordValues values = FirstRecord(*db);
  ASSERT_EQ(CallExternal(examples, 2, kSaveExternal, *db, 0, values), 1);
  const std::string sum = Text(values, 2);
  EXPECT_EQ(sum.size(), 8u);
  EXPECT_EQ(CallExternal(examples, 2, kSaveExternal, *db, 0, values), 0);  // already current
  values.Set(1, Int32Value(43));
  ASSERT_EQ(CallExternal(examples, 2, kSaveExternal, *db, 0, values), 1);
  EXPECT_NE(Text(values, 2), sum);
}

}  // namespace
}  // namespace qv
