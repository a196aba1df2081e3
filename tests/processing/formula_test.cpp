#include "processing/formula.h"

#include <gtest/gtest.h>

#include "processing/formula_builder.h"
#include "tests/processing/fixtures.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

// Writes a program by hand: (kind, operand byte) per token, constants by number.
void SetProgram(Database& db, int slot, std::vector<std::pair<int, int>> tokens,
                std::vector<std::string> constants = {}) {
  std::uint8_t* f = db.definition().field(slot).bytes();
  for (std::size_t t = 0; t < tokens.size() && t < 11; ++t) {
    f[formula::kKinds + t] = static_cast<std::uint8_t>(tokens[t].first);
    f[formula::kOperands + t] = static_cast<std::uint8_t>(tokens[t].second);
  }
  for (std::size_t k = 0; k < constants.size(); ++k)
    PutCString(f + formula::kConstantOffset[k], formula::kConstantSize[k], constants[k]);
  f[formula::kCount] = static_cast<std::uint8_t>(tokens.size());
}

class FormulaTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = DatabaseBuilder()
              .Field("A", kInteger)
              .Field("B", kInteger)
              .Field("Result", kCalculated)
              .Build();
  }
  std::string Compute(std::int32_t a, std::int32_t b) {
    db_->records.clear();
    AddRaw(*db_, {{0, Int32Value(a)}, {1, Int32Value(b)}});
    Bytes& record = db_->records[0].data.edit();
    EXPECT_EQ(UpdateCalculatedField(*db_, 2, db_->definition(), &record, 0u, prompter_), 0);
    return std::string(ValueText(ValueBytes(record, 2)));
  }
  std::unique_ptr<Database> db_;
  ScriptedPrompter prompter_;
};

TEST_F(FormulaTest, SumStoredWithTheDecimalsOfItsResultKind) {
  ASSERT_TRUE(BuildFormula(db_->definition(), 2, "F1 + F2", prompter_));
  const std::uint8_t* f = db_->definition().field(2).bytes();
  EXPECT_EQ(f[formula::kCount], 3);
  EXPECT_EQ(std::vector<int>(f + formula::kKinds, f + formula::kKinds + 3),
            (std::vector<int>{5, 5, 1}));
  EXPECT_EQ(std::vector<int>(f + formula::kOperands, f + formula::kOperands + 3),
            (std::vector<int>{1, 2, 2}));
  EXPECT_EQ(Compute(2, 3), "5.0000");
  const std::pair<int, const char*> kinds[] = {
      {1, "5"}, {4, "5.000"}, {5, "5.00"}, {6, "5.0"}, {2, "5"}};
  for (auto [kind, text] : kinds) {
    db_->definition().field(2).bytes()[formula::kResultKind] = static_cast<std::uint8_t>(kind);
    EXPECT_EQ(Compute(2, 3), text) << kind;
  }
  EXPECT_TRUE(prompter_.Messages().empty());
  EXPECT_TRUE(db_->field_changed[2]);
}

TEST_F(FormulaTest, FloatingPointIsUnguarded) {
  ASSERT_TRUE(BuildFormula(db_->definition(), 2, "F1 / F2", prompter_));
  EXPECT_EQ(Compute(1, 0), "inf");
  EXPECT_EQ(Compute(-1, 0), "-inf");
  ASSERT_TRUE(BuildFormula(db_->definition(), 2, "Sqrt(F1)", prompter_));
  EXPECT_NE(Compute(-4, 0).find("nan"), std::string::npos);
  EXPECT_TRUE(prompter_.Messages().empty());
}

TEST_F(FormulaTest, UnderflowReportsOnceAndStoresMinusOne) {
  SetProgram(*db_, 2, {{1, 2}});  // a lone "+"
  EXPECT_EQ(Compute(2, 3), "-1.0000");
  SetProgram(*db_, 2, {{0, 0}, {1, 2}, {1, 2}});  // three short tokens, one message
  EXPECT_EQ(Compute(2, 3), "-1.0000");
  EXPECT_EQ(prompter_.Messages(), (std::vector<std::string>{"Formula is corrupt, please verify",
                                                            "Formula is corrupt, please verify"}));
  EXPECT_EQ(prompter_.calls()[0].caption, "Error");
}

TEST_F(FormulaTest, BottomEntryIsTheResult) {
  SetProgram(*db_, 2, {{5, 1}, {5, 2}});  // F1 F2 with no operator
  EXPECT_EQ(Compute(7, 3), "7.0000");
  SetProgram(*db_, 2, {});
  EXPECT_EQ(Compute(7, 3), "0.0000");
  SetProgram(*db_, 2, {{2, 0}, {5, 2}, {2, 1}});  // carried tokens are skipped
  EXPECT_EQ(Compute(7, 3), "3.0000");
}

TEST_F(FormulaTest, FunctionIdsAndTheReversedNameList) {
  SetProgram(*db_, 2, {{3, 1}, {0, 0}}, {"16"});
  EXPECT_EQ(Compute(0, 0), "4.0000");
  SetProgram(*db_, 2, {{4, 2}, {0, 6}}, {"", "1.2"});
  EXPECT_EQ(Compute(0, 0), "2.0000");
  SetProgram(*db_, 2, {{4, 2}, {0, 5}}, {"", "1.2"});
  EXPECT_EQ(Compute(0, 0), "1.0000");
  SetProgram(*db_, 2, {{3, 1}, {0, 9}}, {"16"});  // unknown function
  EXPECT_EQ(Compute(0, 0), "0.0000");
  EXPECT_EQ(FunctionName(0), "Sqrt");
  EXPECT_EQ(FunctionName(6), "Ceil");
  EXPECT_EQ(FunctionName(7), "?");
  EXPECT_EQ(OperatorText(5), "min");
  EXPECT_EQ(OperatorText(8), "?");
  SetProgram(*db_, 2, {{5, 1}, {5, 2}, {1, 6}, {3, 1}, {1, 7}, {5, 0xFF}, {0, 3}, {5, 0}, {2, 0}},
             {"12"});
  EXPECT_EQ(FormulaDisplayText(db_->definition(), 2), "F1 F2 max 12 avg P1 Ln F? (");
}

TEST_F(FormulaTest, DamagedProgramsGiveDefinedAnswers) {
  SetProgram(*db_, 2, {{5, 1}});
  db_->definition().field(2).bytes()[formula::kCount] = 12;
  EXPECT_EQ(Compute(2, 3), "-1.0000");
  EXPECT_EQ(prompter_.Messages().size(), 1u);
  SetProgram(*db_, 2, {{5, 101}, {5, 50}, {1, 2}, {5, 1}, {1, 2}});  // slot 100, an unused slot
  EXPECT_EQ(Compute(2, 3), "2.0000");
  SetProgram(*db_, 2, {{3, 9}, {5, 1}, {1, 2}});  // constant 9 does not exist: 0
  EXPECT_EQ(Compute(2, 3), "2.0000");
  EXPECT_EQ(UpdateCalculatedField(*db_, 2, db_->definition(), nullptr, 0u, prompter_), -1);
}

TEST_F(FormulaTest, OperandsReadEachTypeAsANumber) {
  auto db = DatabaseBuilder()
                .Options(EuropeanOptions())
                .Field("Day", kDate)
                .Field("At", kTime)
                .Field("Done", kCheckBox)
                .Field("Price", kFloat)
                .Field("R", kCalculated)
                .Build();
  AddRaw(*db, {{0, UInt32Value(1461)},
               {1, TimeValue(1, 2, 3)},
               {2, CheckValue(true)},
               {3, TextValue("2.5")}});
  ScriptedPrompter p;
  db->definition().field(4).bytes()[formula::kResultKind] = 1;
  auto eval = [&](const char* text) {
    EXPECT_TRUE(BuildFormula(db->definition(), 4, text, p)) << text;
    return EvaluateFormula(LoadFormulaProgram(db->definition(), 4), db->records[0].data, *db, {},
                           p);
  };
  EXPECT_EQ(eval("Day"), 1461);
  EXPECT_EQ(eval("At"), 3723);  // seconds
  EXPECT_EQ(eval("Done + Price"), 3.5);
  EXPECT_EQ(eval("P1"), 0);  // no previous record
}

TEST(FormulaBuilderTest, InfixBecomesPostfix) {
  auto db = DatabaseBuilder()
                .Field("Unit price", kFloat)
                .Field("Qty", kInteger)
                .Field("Total", kCalculated)
                .Build();
  ScriptedPrompter p;
  DatabaseDefinition& d = db->definition();
  ASSERT_TRUE(BuildFormula(d, 2, "(F1 + F2) * 2", p));
  EXPECT_EQ(FormulaDisplayText(d, 2), "F1 F2 + 2 *");
  EXPECT_EQ(d.field(2).refers_byte(), 0);
  ASSERT_TRUE(BuildFormula(d, 2, "Sqrt(P1)", p));
  EXPECT_EQ(FormulaDisplayText(d, 2), "P1 Sqrt");
  EXPECT_EQ(d.field(2).refers_byte(), 1);
  ASSERT_TRUE(BuildFormula(d, 2, "{Unit price} * Qty - P\"Qty\" ^ 2 ^ 0.5", p));
  EXPECT_EQ(FormulaDisplayText(d, 2), "F1 F2 * P2 2 0.5 ^ ^ -");
  EXPECT_EQ(d.field(2).refers_byte(), 4);  // the third field operand is the previous one
  ASSERT_TRUE(BuildFormula(d, 2, "max(F1, -F2) / -2.5", p));
  EXPECT_EQ(FormulaDisplayText(d, 2), "F1 0 F2 - max -2.5 /");
  EXPECT_TRUE(p.Messages().empty());
}

TEST(FormulaBuilderTest, RefusalsKeepTheDefinition) {
  auto db = DatabaseBuilder().Field("A", kInteger).Field("R", kCalculated).Build();
  ScriptedPrompter p;
  DatabaseDefinition& d = db->definition();
  ASSERT_TRUE(BuildFormula(d, 1, "F1 * 3", p));
  Bytes before = d.bytes();
  for (const char* bad : {"", "   ", "F1 +", "F1 F1", "(F1", "F3", "F0", "F101", "Nope(F1)",
                          "{Missing}", "1..2", "F1 +* 2"})
    EXPECT_FALSE(BuildFormula(d, 1, bad, p)) << bad;
  // 12 tokens, then 7 distinct constants.
  EXPECT_FALSE(BuildFormula(d, 1, "F1+F1+F1+F1+F1+F1+F1", p));
  EXPECT_FALSE(BuildFormula(d, 1, "1+2+3+4+5+6+7", p));
  EXPECT_EQ(d.bytes(), before);
  std::vector<std::string> m = p.Messages();
  ASSERT_EQ(m.size(), 14u);
  EXPECT_EQ(m[0], "Formula is empty. Please enter a valid formula.");
  EXPECT_EQ(m[1], "Formula is empty. Please enter a valid formula.");
  EXPECT_EQ(m[2], "Invalid formula. Please enter a valid formula.");
  EXPECT_EQ(p.calls()[2].caption, "ERROR");
  EXPECT_EQ(m[12], "All available operators are used up.");
  EXPECT_EQ(m[13], "All available operators are used up.");
  EXPECT_EQ(p.calls()[13].caption, "Error");
}

TEST(FormulaBuilderTest, LongTextIsRefusedBeforeTheParserGoesDeep) {
  auto db = DatabaseBuilder().Field("A", kInteger).Field("R", kCalculated).Build();
  DatabaseDefinition& d = db->definition();
  auto problem = [&](const std::string& text) {
    FormulaProblem p;
    EXPECT_FALSE(ParseFormula(d, text, p)) << text.substr(0, 40);
    return p;
  };
  const std::size_t n = 100000;
  EXPECT_EQ(problem(std::string(20000, '(') + "1" + std::string(20000, ')')),
            FormulaProblem::Invalid);
  EXPECT_EQ(problem(std::string(n, '-') + "1"), FormulaProblem::TooManyTokens);
  EXPECT_EQ(problem(std::string(n, '-') + "("), FormulaProblem::TooManyTokens);
  EXPECT_EQ(problem(std::string(n, '+') + "F1 +"), FormulaProblem::Invalid);
  EXPECT_EQ(problem("Sqrt(" + std::string(n, '(')), FormulaProblem::Invalid);
  std::string sum = "1";
  for (std::size_t i = 0; i < n; ++i) sum += "+1";
  EXPECT_EQ(problem(sum), FormulaProblem::TooManyTokens);
  std::string power = "2";
  for (std::size_t i = 0; i < n; ++i) power += "^2";
  EXPECT_EQ(problem(power), FormulaProblem::TooManyTokens);
  // What fits in 11 tokens still parses, redundant parentheses and plus signs included.
  FormulaProblem p;
  EXPECT_TRUE(ParseFormula(d, std::string(30, '(') + "F1" + std::string(30, ')') + " * 2", p));
  EXPECT_TRUE(ParseFormula(d, "+++F1 - -F1", p));
  EXPECT_TRUE(ParseFormula(d, "Sqrt(Sqrt(Sqrt(Sqrt(Sqrt(Sqrt(Sqrt(Sqrt(Sqrt(Sqrt(F1))))))))))", p));
}

TEST(FormulaBuilderTest, ConstantsShareAndFitTheirPlaces) {
  auto db = DatabaseBuilder().Field("A", kInteger).Field("R", kCalculated).Build();
  ScriptedPrompter p;
  DatabaseDefinition& d = db->definition();
  // Two 9-character constants and four short ones: the long ones need the 10-byte places.
  ASSERT_TRUE(BuildFormula(d, 1, "1 + 2 + 3 + 4 + 123456789 + 987654321", p));
  EXPECT_EQ(FormulaDisplayText(d, 1), "1 2 + 3 + 4 + 123456789 + 987654321 +");
  ASSERT_TRUE(BuildFormula(d, 1, "F1 * 2 + F1 * 2", p));
  EXPECT_EQ(d.field(1).bytes()[formula::kSecondByte], 1);  // one constant, used twice
  ASSERT_TRUE(BuildFormula(d, 1, "F1 * 3.14159265358979", p));
  EXPECT_EQ(FormulaDisplayText(d, 1), "F1 3.1415927 *");
  db->records.clear();
  AddRaw(*db, {{0, Int32Value(2)}});
  Bytes& r = db->records[0].data.edit();
  UpdateCalculatedField(*db, 1, d, &r, 0u, p);
  EXPECT_EQ(ValueText(ValueBytes(r, 1)), "6.2832");
}

TEST(ComputeRecordFormulasTest, FieldsRefreshInDisplayTableOrder) {
  auto db = DatabaseBuilder()
                .Field("A", kInteger)
                .Field("Twice", kCalculated)
                .Field("Plus", kCalculated)
                .Build();
  ScriptedPrompter p;
  ASSERT_TRUE(BuildFormula(db->definition(), 1, "F1 * 2", p));
  ASSERT_TRUE(BuildFormula(db->definition(), 2, "F2 + 1", p));
  AddRaw(*db, {{0, Int32Value(5)}, {1, TextValue("0")}, {2, TextValue("0")}});
  Bytes record = db->records[0].data;
  ComputeRecordFormulas(*db, db->definition(), record, {}, p);
  EXPECT_EQ(ValueText(ValueBytes(record, 2)), "11.0000");
  // With "Plus" shown before "Twice", it sees the old value of "Twice".
  db->definition().set_display_slot(1, 2);
  db->definition().set_display_slot(2, 1);
  record = db->records[0].data;
  ComputeRecordFormulas(*db, db->definition(), record, {}, p);
  EXPECT_EQ(ValueText(ValueBytes(record, 2)), "1.0000");
  EXPECT_EQ(ValueText(ValueBytes(record, 1)), "10.0000");
}

}  // namespace
}  // namespace qv::test
