#pragma once
// Calculated fields: the postfix program of at most 11 tokens and 6 constants kept in the
// field's definition, its evaluation on a stack of 16 doubles, and the refresh of one record's
// calculated values.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

inline constexpr int kMaxFormulaTokens = 11;
inline constexpr int kFormulaConstants = 6;
inline constexpr int kFormulaStackSize = 16;

enum FormulaTokenKind : std::uint8_t {
  kFunctionToken = 0,    // one value; operand = function id
  kOperatorToken = 1,    // two values; operand = operator id
  kCarriedToken = 2,     // kept in the program, skipped by evaluation
  kIntegerConstant = 3,  // operand = constant number 1..6
  kDecimalConstant = 4,  // operand = constant number 1..6
  kFieldOperand = 5,     // signed operand: n > 0 slot n-1, n < 0 slot -n-1 of the previous record
};

// Places of the program inside the 116-byte field definition.
namespace formula {
inline constexpr std::size_t kRefers = 10;
inline constexpr std::size_t kOperands = 12;    // 11 operand bytes
inline constexpr std::size_t kResultKind = 43;
inline constexpr std::size_t kCount = 64;
inline constexpr std::size_t kSecondByte = 65;  // the number of constants in use
inline constexpr std::size_t kKinds = 105;      // 11 kind bytes
// Constant k (1..6): its offset and its size with the terminating NUL.
inline constexpr std::size_t kConstantOffset[kFormulaConstants] = {24, 33, 44, 54, 86, 95};
inline constexpr std::size_t kConstantSize[kFormulaConstants] = {9, 10, 10, 10, 9, 10};
}  // namespace formula

struct FormulaToken {
  std::uint8_t kind = kCarriedToken;
  std::uint8_t operand = 0;   // the stored operand byte
  std::int32_t integer = 0;   // kinds 0, 1: the id; 3: the constant; 5: the signed operand
  double number = 0.0;        // kind 4: the constant
};

struct FormulaProgram {
  int count = 0;                 // tokens in use
  std::uint8_t second_byte = 0;  // carried with the program
  bool corrupt = false;          // the stored count is above 11
  std::array<FormulaToken, kMaxFormulaTokens> tokens{};
};

// Decodes the program of a field slot; constants are converted once, here.
FormulaProgram LoadFormulaProgram(const DatabaseDefinition& definition, int slot);

// The postfix evaluation. An operator or function short of values shows "Formula is corrupt,
// please verify" once and answers -1. The bottom stack entry is the result, by design; an empty
// program answers 0. Field operands that name no field read as 0; `previous` is the record
// before this one in display order (empty for none).
double EvaluateFormula(const FormulaProgram& program, std::span<const std::uint8_t> record,
                       const Database& db, std::span<const std::uint8_t> previous,
                       Prompter& prompter);

// The stored text of a result: fixed point with the result kind's decimals, always ".".
std::string FormatFormulaResult(double value, int result_kind);

// Refreshes one Calculated value in `record` (marking the field changed when its text
// differs). -1 when `record` is null.
int UpdateCalculatedField(Database& db, int slot, const DatabaseDefinition& definition,
                          Bytes* record, std::span<const std::uint8_t> previous,
                          Prompter& prompter);
// The same with the previous record taken from the database by position.
int UpdateCalculatedField(Database& db, int slot, const DatabaseDefinition& definition,
                          Bytes* record, std::uint32_t position, Prompter& prompter);

// Refreshes every Calculated and Conditional value of one record, in the order of the field
// display table. With `only_position_dependent`, only the fields whose value refers to other
// records.
void ComputeRecordFormulas(Database& db, const DatabaseDefinition& definition, Bytes& record,
                           std::span<const std::uint8_t> previous, Prompter& prompter,
                           bool only_position_dependent = false);

// The Calculated and Conditional fields in the order of the field display table, programs
// decoded, and the refresh of those fields in one record. A pass over many records decodes
// once: the definitions cannot change during a pass.
struct ComputedField {
  int slot;
  bool calculated;  // else Conditional
  FormulaProgram program;
};
std::vector<ComputedField> ComputedFieldsInOrder(const DatabaseDefinition& definition,
                                                 bool only_position_dependent);
void ComputeFields(Database& db, const DatabaseDefinition& definition, Bytes& record,
                   std::span<const std::uint8_t> previous, Prompter& prompter,
                   std::span<const ComputedField> fields);

// The record before `position` in display order: the previous passing record while a filter is
// active, else position - 1. Empty when there is none.
std::span<const std::uint8_t> PreviousInDisplayOrder(const Database& db, std::uint32_t position);

// Replaces a field's value in a record, in place when the length stays the same.
void PutFieldValue(Bytes& record, const DatabaseDefinition& definition, int slot,
                   std::span<const std::uint8_t> value);

// Display texts of the formula editor.
std::string_view FunctionName(int id);   // "Sqrt" for 0 ... "Ceil" for 6, "?" otherwise
std::string_view OperatorText(int id);   // "/" "*" "+" "-" "^" "min" "max" "avg", "?" otherwise
std::string TokenDisplayText(const DatabaseDefinition& definition, int slot, int token);
// The tokens' texts joined by blanks, for example "F1 F2 +".
std::string FormulaDisplayText(const DatabaseDefinition& definition, int slot);

// The first and second field operands of a program (the first two field-operand tokens), as
// the dependency search reads them: slot -1 for none.
struct FormulaOperands {
  int first = -1;
  bool first_previous = false;
  int second = -1;
  bool second_previous = false;
};
FormulaOperands FormulaOperandSlots(const DatabaseDefinition& definition, int slot);

}  // namespace qv
