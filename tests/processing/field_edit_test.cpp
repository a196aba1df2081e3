#include "processing/field_edit.h"

#include <gtest/gtest.h>

#include <cctype>

#include "engine/field_settings.h"
#include "engine/format.h"
#include "processing/conditional.h"
#include "processing/formula.h"
#include "processing/formula_builder.h"
#include "processing/formula_text.h"
#include "processing/views.h"
#include "security/record_header.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

// The file a save would write opens again and writes the same bytes.
void ExpectRoundTrip(const Database& db) {
  Bytes image = SerializeDatabase(db);
  Database again;
  std::uint32_t bad = 0;
  ASSERT_EQ(ParseDatabase(image, again, bad), ReadError::None);
  EXPECT_EQ(SerializeDatabase(again), image);
}

struct Conversion {
  FieldType from;
  std::vector<std::string> texts;
  FieldType to;
  unsigned length;
  std::uint32_t lost;
  std::uint32_t altered;
  std::vector<std::string> after;
};

// Test names and failure reports say which change it was.
void PrintTo(const Conversion& c, std::ostream* os) {
  *os << FieldTypeName(c.from) << " to " << FieldTypeName(c.to);
}

class TypeChangeTest : public ::testing::TestWithParam<Conversion> {};

TEST_P(TypeChangeTest, CountsWhatCannotBeKeptAndConvertsTheRest) {
  const Conversion& c = GetParam();
  DatabaseBuilder builder;
  builder.Field("Value", c.from);
  if (c.from == kPopUp) builder.Items({"42", "red"});
  for (const std::string& t : c.texts) builder.Row({t});
  auto db = builder.Build();
  ScriptedPrompter prompter;
  FormatOptions options;
  FieldChangeImpact impact = AssessTypeChange(*db, 0, c.to, c.length, options);
  ASSERT_TRUE(impact.refusal.empty()) << impact.refusal;
  EXPECT_EQ(impact.lost, c.lost);
  EXPECT_EQ(impact.altered, c.altered);
  ASSERT_TRUE(ChangeFieldType(*db, 0, c.to, c.length, options, prompter));
  EXPECT_EQ(db->definition().field(0).type(), unsigned{c.to});
  EXPECT_EQ(Column(*db, 0, options), c.after);
  ExpectRoundTrip(*db);
}

INSTANTIATE_TEST_SUITE_P(
    ValueHoldingTypes, TypeChangeTest,
    ::testing::Values(
        Conversion{kText, {"42", "hello", ""}, kInteger, 0, 1, 0, {"42", "0", "0"}},
        Conversion{kText, {"abcdefgh", "abc"}, kText, 5, 0, 1, {"abcde", "abc"}},
        Conversion{kText, {"yes", "maybe", "0"}, kCheckBox, 0, 1, 0, {"1", "0", "0"}},
        Conversion{kText, {"3/5/2002", "soon"}, kDate, 0, 1, 0, {"3/5/2002", "NO DATE"}},
        Conversion{kText, {"1:05 pm", "later"}, kTime, 0, 1, 0, {"1:05:00PM", "No Time"}},
        Conversion{kText, {"red", "a very long item"}, kPopUp, 0, 0, 1, {"red", "a very long i"}},
        Conversion{kInteger, {"42", "-7"}, kText, 0, 0, 0, {"42", "-7"}},
        Conversion{kInteger, {"42", "-7"}, kFloat, 0, 0, 0, {"42", "-7"}},
        Conversion{kInteger, {"5", "-7"}, kUnique, 0, 1, 0, {"5", "6"}},
        Conversion{kInteger, {"42", "0"}, kDate, 0, 1, 0, {"NO DATE", "NO DATE"}},
        Conversion{kInteger, {"1", "0", "5"}, kCheckBox, 0, 1, 0, {"1", "0", "0"}},
        Conversion{kFloat, {"42", "3.7", "-1"}, kInteger, 0, 0, 1, {"42", "4", "-1"}},
        Conversion{kFloat, {"2.5"}, kText, 0, 0, 0, {"2.5"}},
        Conversion{kPopUp, {"42", "red"}, kInteger, 0, 1, 0, {"42", "0"}},
        Conversion{kPopUp, {"red"}, kNote, 0, 0, 0, {"red"}},
        Conversion{kCheckBox, {"1", "0"}, kInteger, 0, 0, 0, {"1", "0"}},
        Conversion{kUnique, {"7", "8"}, kText, 0, 0, 0, {"7", "8"}},
        Conversion{kDate, {"3/5/2002", ""}, kText, 0, 0, 0, {"3/5/2002", ""}},
        Conversion{kDate, {"3/5/2002"}, kTime, 0, 1, 0, {"No Time"}},
        Conversion{kTime, {"1:05 pm", ""}, kText, 0, 0, 0, {"1:05:00PM", ""}},
        Conversion{kNote, {"hello"}, kHeading, 0, 1, 0, {""}},
        Conversion{kText, {"x", ""}, kImage, 0, 1, 0, {"", ""}}),
    [](const ::testing::TestParamInfo<Conversion>& info) {
      std::string name = std::to_string(info.index) + "_" +
                         std::string(FieldTypeName(info.param.from)) + "To" +
                         std::string(FieldTypeName(info.param.to));
      std::erase_if(
          name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)) && c != '_'; });
      return name;
    });

TEST(FieldEditTest, DeleteFixesUpSortsFiltersViewsAndFormulas) {
  auto db = DatabaseBuilder()
                .Field("Name", kText)
                .Field("Qty", kInteger)
                .Field("Double", kCalculated)
                .Field("Big", kConditional)
                .Field("Note", kText)
                .Row({"b", "2"})
                .Row({"a", "3"})
                .Build();
  ScriptedPrompter prompter;
  DatabaseDefinition& d = db->definition();
  ASSERT_TRUE(BuildFormula(d, 2, "Qty * 2", prompter));
  ConditionalSettings cond;
  cond.test_field = 1;
  cond.op = kCondGreater;
  cond.value = "2";
  cond.then_text = "big";
  cond.Write(d.field(3));
  d.set_sort_key(0, {1, true});
  d.set_sort_key(1, {0, true});
  Condition c;
  c.in_use = 1;
  c.field = 1;
  d.set_condition(0, c);
  EnsureDefaultView(*db);
  CaptureView(*db, 0);

  FieldChangeImpact impact = AssessDelete(*db, 1);
  EXPECT_EQ(impact.lost, 2u);
  EXPECT_TRUE(impact.NeedsConsent());
  EXPECT_NE(impact.Describe("Qty").find("The formula of 'Double' uses 'Qty' and is cleared."),
            std::string::npos)
      << impact.Describe("Qty");
  ASSERT_TRUE(DeleteField(*db, 1, prompter));

  EXPECT_FALSE(d.field(1).used());
  EXPECT_EQ(d.field(1).name(), "Field 2");
  EXPECT_EQ(d.sort_key(0).field, 0);  // the second key moved up
  EXPECT_EQ(d.sort_key(1).field, -1);
  EXPECT_EQ(d.condition(0).in_use, 0);
  const std::uint8_t* view_sort = d.view_block(0) + view::kSortKeys;
  EXPECT_EQ(view_sort[0], 0);
  EXPECT_EQ(view_sort[2], 0xFF);
  EXPECT_EQ(LoadFormulaProgram(d, 2).count, 0);
  EXPECT_EQ(ConditionalSettings::Read(d.field(3)).test_field, -1);
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"a", "b"}));

  // The freed slot comes back empty, not with the deleted field's values.
  std::string problem;
  auto slot = AddField(*db, "Count", kInteger, 40, 0, problem);
  ASSERT_EQ(slot, 1) << problem;
  EXPECT_EQ(Column(*db, 1), (std::vector<std::string>{"0", "0"}));
  EXPECT_EQ(UsedFieldsInDisplayOrder(d).front(), 1);
  ExpectRoundTrip(*db);
}

TEST(FieldEditTest, MoveChangesTheOrderNotWhatFormulasRead) {
  auto db = DatabaseBuilder()
                .Field("A", kInteger)
                .Field("B", kInteger)
                .Field("Sum", kCalculated)
                .Row({"1", "2"})
                .Build();
  ScriptedPrompter prompter;
  ASSERT_TRUE(BuildFormula(db->definition(), 2, "A + B", prompter));
  ASSERT_TRUE(MoveField(*db, 2, 0));
  ASSERT_TRUE(MoveField(*db, 0, 5));  // past the end: last
  EXPECT_EQ(UsedFieldsInDisplayOrder(db->definition()), (std::vector<int>{2, 1, 0}));
  EXPECT_EQ(FieldPosition(db->definition(), 1), 1);
  RecalculateAll(*db, prompter);
  EXPECT_EQ(Column(*db, 2), (std::vector<std::string>{"3.0000"}));
}

TEST(FieldEditTest, AddNumbersUniqueFieldsAndRefusesBadInput) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"a"}).Row({"b"}).Build();
  std::string problem;
  auto slot = AddField(*db, "No", kUnique, 40, 0, problem);
  ASSERT_TRUE(slot) << problem;
  EXPECT_EQ(Column(*db, *slot), (std::vector<std::string>{"0", "1"}));
  EXPECT_FALSE(AddField(*db, "name", kText, 40, 0, problem));  // case ignored
  EXPECT_EQ(problem, "Another field is named 'name'.");
  EXPECT_FALSE(AddField(*db, "Twenty characters!!!", kText, 40, 0, problem));
  EXPECT_FALSE(AddField(*db, "X", kText, 0, 0, problem));
  EXPECT_EQ(RenameField(*db, 0, "No"), "Another field is named 'No'.");
  EXPECT_EQ(RenameField(*db, 0, "Title"), "");
  EXPECT_EQ(db->definition().field(0).name(), "Title");
}

TEST(FieldEditTest, DefaultsAndUniqueStartReachNewRecords) {
  auto db =
      DatabaseBuilder().Field("Qty", kInteger).Field("No", kUnique).Field("When", kDate).Build();
  FormatOptions options;
  EXPECT_EQ(SetDefaultText(*db, 0, "12", options), "");
  EXPECT_EQ(SetDefaultText(*db, 0, "twelve", options), "'twelve' is not a value of this field.");
  EXPECT_EQ(SetDefaultText(*db, 2, "3/5/2002", options), "");
  EXPECT_EQ(DefaultText(*db, 2, options), "3/5/2002");
  EXPECT_NE(SetDefaultText(*db, 1, "4", options), "");  // Unique numbers are not defaults
  SetUniqueStart(db->definition().field(1), 1000);
  StoreRecord(*db, DefaultValues(*db), kNewRecord);
  StoreRecord(*db, DefaultValues(*db), kNewRecord);
  EXPECT_EQ(Column(*db, 0, options), (std::vector<std::string>{"12", "12"}));
  EXPECT_EQ(Column(*db, 1, options), (std::vector<std::string>{"1000", "1001"}));
  ExpectRoundTrip(*db);
}

TEST(FieldEditTest, ANewTypeStartsWithoutTheOldTypesSettings) {
  auto db = DatabaseBuilder().Field("Qty", kInteger).Field("Total", kCalculated).Row({"4"}).Build();
  ScriptedPrompter prompter;
  FormatOptions options;
  ASSERT_TRUE(BuildFormula(db->definition(), 1, "{Qty} * 2.25 + 1.5 + 2.75 + 3.5 + 4.5", prompter));
  RecalculateAll(*db, prompter);
  ASSERT_TRUE(ChangeFieldType(*db, 1, kText, 0, options, prompter));
  // The constants stored where a default value sits must not turn into one.
  EXPECT_EQ(DefaultText(*db, 1, options), "");
  EXPECT_EQ(Column(*db, 1), (std::vector<std::string>{"21.2500"}));
  StoreRecord(*db, DefaultValues(*db), kNewRecord);
  EXPECT_EQ(Column(*db, 1).back(), "");
}

TEST(FieldEditTest, EncipheredValuesAreNeverConverted) {
  auto db = DatabaseBuilder().Field("Secret", kText).Field("Plain", kText).Row({"x", "y"}).Build();
  EnableRecordHeaders(*db);
  ASSERT_EQ(SetFieldEncrypted(*db, 0, true), "");
  auto header = ReadRecordHeader(db->records[0].data);
  ASSERT_TRUE(header);
  header->set(kRecordFieldsEnciphered, true);
  WriteRecordHeader(db->records[0].data, *header);
  FormatOptions options;
  EXPECT_NE(AssessTypeChange(*db, 0, kInteger, 0, options).refusal, "");
  EXPECT_NE(AssessDelete(*db, 0).refusal, "");
  EXPECT_NE(SetFieldEncrypted(*db, 1, true), "");
  // An unmarked field may still change; the enciphered bytes stay as they were.
  auto before = ValueBytes(db->records[0].data, 0);
  Bytes secret(before.begin(), before.end());
  ScriptedPrompter prompter;
  EXPECT_TRUE(ChangeFieldType(*db, 1, kNote, 0, options, prompter));
  auto after = ValueBytes(db->records[0].data, 0);
  EXPECT_EQ(Bytes(after.begin(), after.end()), secret);
}

}  // namespace
}  // namespace qv::test

namespace qv::test {
namespace {

TEST(FormulaInfixTextTest, WritesWhatTheBuilderReadsBack) {
  auto db = DatabaseBuilder()
                .Field("Unit price", kFloat)
                .Field("Qty", kInteger)
                .Field("Total", kCalculated)
                .Build();
  ScriptedPrompter prompter;
  for (std::string text :
       {"({Unit price} * {Qty}) + 2.5", "Sqrt({Qty}) - P{Qty}", "max({Qty}, 3)"}) {
    ASSERT_TRUE(BuildFormula(db->definition(), 2, text, prompter)) << text;
    std::string shown = FormulaInfixText(db->definition(), 2);
    EXPECT_EQ(shown, text);
    std::string program = FormulaDisplayText(db->definition(), 2);
    ASSERT_TRUE(BuildFormula(db->definition(), 2, shown, prompter));
    EXPECT_EQ(FormulaDisplayText(db->definition(), 2), program);
  }
}

}  // namespace
}  // namespace qv::test
