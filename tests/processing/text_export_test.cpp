#include <gtest/gtest.h>

#include "processing/json_export.h"
#include "processing/record_text.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv::test {
namespace {

TEST(RecordTextTest, WritesShownUsedFieldsInDisplayOrderThenHyphens) {
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Field("Secret", kText)
                .Row({"bolt", "5", "x"})
                .Build();
  db->definition().field(2).bytes()[5] = 0;  // not shown
  db->definition().set_display_slot(0, 1);
  db->definition().set_display_slot(1, 0);
  std::string out;
  WriteRecordText(*db, 0, 0, {}, out);
  EXPECT_EQ(out, "Qty: 5\nName: bolt\n----------------------------------------\n");
  out.clear();
  WriteRecordText(*db, 0, 2, {}, out);
  EXPECT_EQ(out.substr(0, 13), "      Qty: 5\n");
}

TEST(RecordTextTest, LinkFieldsAreLeftToTheLinkedRecordsWriter) {
  auto db = DatabaseBuilder().Field("Name", kText).Field("Parts", kLink).Row({"kit", "3"}).Build();
  std::string out;
  WriteRecordText(*db, 0, 0, {}, out);
  EXPECT_EQ(out, "Name: kit\n----------------------------------------\n");
  out.clear();
  WriteRecordText(*db, 0, 0, {}, out,
                  [](const Database&, std::uint32_t, int slot, int level, std::string& text) {
                    text +=
                        "linked " + std::to_string(slot) + " at " + std::to_string(level) + "\n";
                  });
  EXPECT_EQ(out, "Name: kit\nlinked 1 at 1\n----------------------------------------\n");
}

TEST(RecordTextTest, TextExportWritesFilteredOrCurrentRecordsAndSaysSo) {
  TempFolder folder;
  ScriptedPrompter prompter;
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Row({"Caf\xE9", "1"})
                .Row({"b", "50"})
                .Row({"c", "2"})
                .Build();
  Condition c;
  c.in_use = 1;
  c.field = 1;
  c.lower = 0;
  c.upper = 9;
  db->definition().set_condition(0, c);
  db->current = 1;
  std::string path = folder.Path("out.txt");
  ASSERT_TRUE(ExportRecordsAsText(*db, true, path, {}, prompter));
  const std::string rule = "----------------------------------------\n";
  EXPECT_EQ(Slurp(path), "Name: Caf\xC3\xA9\nQty: 1\n" + rule + "Name: c\nQty: 2\n" + rule);
  ASSERT_TRUE(ExportRecordsAsText(*db, false, path, {}, prompter, TextEncoding::Cp1252));
  EXPECT_EQ(Slurp(path), "Name: b\nQty: 50\n" + rule);
  EXPECT_FALSE(ExportRecordsAsText(*db, true, folder.Path("none/out.txt"), {}, prompter));
  EXPECT_EQ(prompter.Messages(),
            (std::vector<std::string>{"File Exported OK", "File Exported OK",
                                      "ERROR: Unable to open file for writing."}));
  EXPECT_FALSE(prompter.busy());
  db->loaded = false;
  EXPECT_FALSE(ExportRecordsAsText(*db, true, path, {}, prompter));
  EXPECT_EQ(prompter.Messages().size(), 3u);
}

TEST(JsonExportTest, TypedValuesNullsAndEscapedTexts) {
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Field("Price", kFloat)
                .Field("Done", kCheckBox)
                .Field("When", kDate)
                .Field("At", kTime)
                .Row({"say \"hi\"\n\x01", "-5", "2.50", "1", "3/5/2024", "1:05:09 PM"})
                .Row({"", "7", "", "0", "", ""})
                .Build();
  const std::vector<int> fields = {0, 1, 2, 3, 4, 5};
  EXPECT_EQ(RecordsAsJson(*db, {0, 1}, fields, {}, {}),
            "[\n  {\"Name\": \"say \\\"hi\\\"\\n\\u0001\", \"Qty\": -5, \"Price\": 2.5, \"Done\": "
            "true, \"When\": \"2024-03-05\", \"At\": \"13:05:00\"},\n"
            "  {\"Name\": null, \"Qty\": 7, \"Price\": null, \"Done\": false, \"When\": null, "
            "\"At\": null}\n]\n");
  // The records and fields given, in their order; JSON Lines; the display texts with raw.
  EXPECT_EQ(RecordsAsJson(*db, {1, 0}, {1, 3}, {.typed = true, .lines = true}, {}),
            "{\"Qty\": 7, \"Done\": false}\n{\"Qty\": -5, \"Done\": true}\n");
  EXPECT_EQ(RecordsAsJson(*db, {1}, {3, 4}, {.typed = false}, {}),
            "[\n  {\"Done\": \"0\", \"When\": \"NO DATE\"}\n]\n");
  EXPECT_EQ(RecordsAsJson(*db, {}, fields, {}, {}), "[]\n");
}

}  // namespace
}  // namespace qv::test
