#include "processing/formula.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "engine/record.h"
#include "engine/text.h"
#include "processing/conditional.h"
#include "processing/filter.h"
#include "processing/numeric.h"
#include "security/enciphered.h"

namespace qv {

namespace {

// The editor's display table: operands, parentheses, the eight operators, two unknowns and the
// function names listed backwards. Stored programs depend on the reversal: id 0 is Sqrt.
constexpr std::string_view kDisplayTable[] = {
    "F%i", "P%i", "F?", "%li", "(", ")", "/", "*", "+", "-", "^", "min", "max", "avg",
    "?",   "?",   "Ceil", "Floor", "Log", "Ln", "Cos", "Sin", "Sqrt"};
constexpr int kOperatorEntry = 6;
constexpr int kFunctionEntry = 16;

std::string_view ConstantText(const std::uint8_t* field, int number) {
  if (number < 1 || number > kFormulaConstants) return {};
  return CStringAt(field + formula::kConstantOffset[number - 1],
                   formula::kConstantSize[number - 1]);
}

double ApplyOperator(int id, double x, double y) {
  switch (id) {
    case 0: return x / y;
    case 1: return x * y;
    case 2: return x + y;
    case 3: return x - y;
    case 4: return std::pow(x, y);
    case 5: return x < y ? x : y;
    case 6: return x > y ? x : y;
    case 7: return (x + y) * 0.5;
    default: return 0.0;
  }
}

double ApplyFunction(int id, double t) {
  switch (id) {
    case 0: return std::sqrt(t);
    case 1: return std::sin(t);
    case 2: return std::cos(t);
    case 3: return std::log(t);
    case 4: return std::log10(t);
    case 5: return std::floor(t);
    case 6: return std::ceil(t);
    default: return 0.0;
  }
}

double OperandValue(const Database& db, std::span<const std::uint8_t> record, int slot) {
  if (slot < 0 || slot >= kFieldSlots || record.empty()) return 0.0;
  auto ref = LocateValue(record, slot);
  if (!ref) return 0.0;
  return FieldNumericValue(db.definition().field(slot), record.subspan(ref->offset, ref->length));
}

}  // namespace

FormulaProgram LoadFormulaProgram(const DatabaseDefinition& definition, int slot) {
  FormulaProgram program;
  if (slot < 0 || slot >= kFieldSlots) return program;
  const std::uint8_t* f = definition.field(slot).bytes();
  int count = f[formula::kCount];
  program.second_byte = f[formula::kSecondByte];
  if (count > kMaxFormulaTokens) {
    program.corrupt = true;
    count = kMaxFormulaTokens;
  }
  program.count = count;
  for (int t = 0; t < count; ++t) {
    FormulaToken& token = program.tokens[t];
    token.kind = f[formula::kKinds + t];
    token.operand = f[formula::kOperands + t];
    switch (token.kind) {
      case kFunctionToken:
      case kOperatorToken: token.integer = token.operand; break;
      case kIntegerConstant: token.integer = TextToLong(ConstantText(f, token.operand)); break;
      case kDecimalConstant: token.number = TextToDouble(ConstantText(f, token.operand)); break;
      case kFieldOperand: token.integer = static_cast<std::int8_t>(token.operand); break;
      default: break;
    }
  }
  return program;
}

double EvaluateFormula(const FormulaProgram& program, std::span<const std::uint8_t> record,
                       const Database& db, std::span<const std::uint8_t> previous,
                       Prompter& prompter) {
  auto corrupt = [&] {
    prompter.message("Formula is corrupt, please verify", "Error", Icon::Error);
    return -1.0;
  };
  if (program.corrupt) return corrupt();
  double stack[kFormulaStackSize];
  int top = 0;  // values on the stack; 11 tokens can never fill 16 places
  for (int t = 0; t < program.count && t < kMaxFormulaTokens; ++t) {
    const FormulaToken& token = program.tokens[t];
    switch (token.kind) {
      case kIntegerConstant: stack[top++] = token.integer; break;
      case kDecimalConstant: stack[top++] = token.number; break;
      case kFieldOperand: {
        int n = token.integer;
        stack[top++] = n > 0   ? OperandValue(db, record, n - 1)
                       : n < 0 ? OperandValue(db, previous, -n - 1)
                               : 0.0;
        break;
      }
      case kOperatorToken: {
        if (top < 2) return corrupt();
        double y = stack[--top];
        double x = stack[--top];
        stack[top++] = ApplyOperator(token.integer, x, y);
        break;
      }
      case kFunctionToken:
        if (top < 1) return corrupt();
        stack[top - 1] = ApplyFunction(token.integer, stack[top - 1]);
        break;
      default: break;
    }
  }
  return top > 0 ? stack[0] : 0.0;
}

std::string FormatFormulaResult(double value, int result_kind) {
  char buffer[400];
  auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                                 ResultKindDecimals(result_kind));
  if (ec != std::errc()) return value < 0 ? "-inf" : "inf";
  return std::string(buffer, end);
}

namespace {

void PutValueAt(Bytes& record, const DatabaseDefinition& definition, int slot,
                std::optional<ValueRef> ref, std::span<const std::uint8_t> value) {
  if (!ref || value.size() > 0xFFFE) {
    record = ReplaceValue(record, definition, slot, value);
    return;
  }
  // Spliced in place, so a reused work buffer needs no new memory.
  auto at = record.begin() + static_cast<std::ptrdiff_t>(ref->offset);
  std::size_t common = std::min(value.size(), ref->length);
  if (value.size() > ref->length) {
    record.insert(at + static_cast<std::ptrdiff_t>(ref->length),
                  value.begin() + static_cast<std::ptrdiff_t>(common), value.end());
  } else if (value.size() < ref->length) {
    record.erase(at + static_cast<std::ptrdiff_t>(value.size()),
                 at + static_cast<std::ptrdiff_t>(ref->length));
  }
  PutLE16(record.data() + ref->offset - 2, static_cast<std::uint16_t>(value.size()));
  if (common) std::memcpy(record.data() + ref->offset, value.data(), common);
}

}  // namespace

void PutFieldValue(Bytes& record, const DatabaseDefinition& definition, int slot,
                   std::span<const std::uint8_t> value) {
  PutValueAt(record, definition, slot, LocateValue(record, slot), value);
}

namespace {

// Stores a result's text in the record, marking the field changed when the text differs.
void StoreResult(Database& db, int slot, const DatabaseDefinition& definition, Bytes& record,
                 double result) {
  ConstFieldDefinition field = definition.field(slot);
  char text[400];
  auto [end, ec] = std::to_chars(text, text + sizeof text - 1, result, std::chars_format::fixed,
                                 ResultKindDecimals(CalculatedResultKind(field)));
  std::size_t length = ec == std::errc() ? static_cast<std::size_t>(end - text) : 0;
  if (ec != std::errc()) {
    std::memcpy(text, result < 0 ? "-inf" : "inf", result < 0 ? 4 : 3);
    length = result < 0 ? 4 : 3;
  }
  std::size_t largest = LargestValueSize(field);
  if (length + 1 > largest) length = largest - 1;
  text[length] = '\0';
  std::span<const std::uint8_t> fresh(reinterpret_cast<const std::uint8_t*>(text), length + 1);
  auto ref = LocateValue(record, slot);
  std::span<const std::uint8_t> old =
      ref ? std::span<const std::uint8_t>(record).subspan(ref->offset, ref->length)
          : std::span<const std::uint8_t>();
  if (ValueText(old) != std::string_view(text, length)) db.field_changed[slot] = 1;
  if (ref && old.size() == fresh.size() && std::memcmp(old.data(), fresh.data(), fresh.size()) == 0)
    return;
  PutValueAt(record, definition, slot, ref, fresh);
}

}  // namespace

int UpdateCalculatedField(Database& db, int slot, const DatabaseDefinition& definition,
                          Bytes* record, std::span<const std::uint8_t> previous,
                          Prompter& prompter) {
  if (!record) return -1;
  if (slot < 0 || slot >= kFieldSlots) return 0;
  FormulaProgram program = LoadFormulaProgram(definition, slot);
  StoreResult(db, slot, definition, *record,
              EvaluateFormula(program, *record, db, previous, prompter));
  return 0;
}

std::span<const std::uint8_t> PreviousInDisplayOrder(const Database& db, std::uint32_t position) {
  if (position == 0 || position > db.count()) return {};
  int p = FilterActive(db) ? StepPassingRecords(db, static_cast<int>(position), -1)
                           : static_cast<int>(position) - 1;
  // An enciphered record has no values to read.
  if (p < 0 || IsRecordEnciphered(db, static_cast<std::uint32_t>(p))) return {};
  return db.records[static_cast<std::size_t>(p)].data;
}

int UpdateCalculatedField(Database& db, int slot, const DatabaseDefinition& definition,
                          Bytes* record, std::uint32_t position, Prompter& prompter) {
  return UpdateCalculatedField(db, slot, definition, record, PreviousInDisplayOrder(db, position),
                               prompter);
}

std::vector<ComputedField> ComputedFieldsInOrder(const DatabaseDefinition& definition,
                                                 bool only_position_dependent) {
  std::vector<ComputedField> fields;
  for (int position = 0; position < kFieldSlots; ++position) {
    int slot = definition.display_slot(position);
    if (slot >= kFieldSlots) continue;
    ConstFieldDefinition field = definition.field(slot);
    if (only_position_dependent && !field.position_dependent()) continue;
    if (field.type() == kCalculated)
      fields.push_back({slot, true, LoadFormulaProgram(definition, slot)});
    else if (field.type() == kConditional)
      fields.push_back({slot, false, {}});
  }
  return fields;
}

void ComputeFields(Database& db, const DatabaseDefinition& definition, Bytes& record,
                   std::span<const std::uint8_t> previous, Prompter& prompter,
                   std::span<const ComputedField> fields) {
  for (const ComputedField& f : fields) {
    if (f.calculated)
      StoreResult(db, f.slot, definition, record,
                  EvaluateFormula(f.program, record, db, previous, prompter));
    else
      UpdateConditionalField(db, f.slot, definition, record);
  }
}

void ComputeRecordFormulas(Database& db, const DatabaseDefinition& definition, Bytes& record,
                           std::span<const std::uint8_t> previous, Prompter& prompter,
                           bool only_position_dependent) {
  ComputeFields(db, definition, record, previous, prompter,
                ComputedFieldsInOrder(definition, only_position_dependent));
}

std::string_view FunctionName(int id) {
  return id >= 0 && id <= 6 ? kDisplayTable[kFunctionEntry + 6 - id] : std::string_view("?");
}

std::string_view OperatorText(int id) {
  return id >= 0 && id <= 7 ? kDisplayTable[kOperatorEntry + id] : std::string_view("?");
}

std::string TokenDisplayText(const DatabaseDefinition& definition, int slot, int token) {
  if (slot < 0 || slot >= kFieldSlots || token < 0 || token >= kMaxFormulaTokens) return {};
  const std::uint8_t* f = definition.field(slot).bytes();
  std::uint8_t operand = f[formula::kOperands + token];
  switch (f[formula::kKinds + token]) {
    case kFunctionToken: return std::string(FunctionName(operand));
    case kOperatorToken: return std::string(OperatorText(operand));
    case kCarriedToken: return operand == 0 ? "(" : operand == 1 ? ")" : "";
    case kIntegerConstant:
      return StringPrintf("%li", static_cast<long>(TextToLong(ConstantText(f, operand))));
    case kDecimalConstant: return std::string(ConstantText(f, operand));
    case kFieldOperand: {
      int n = static_cast<std::int8_t>(operand);
      if (n > 0) return StringPrintf("F%i", n);
      if (n < 0) return StringPrintf("P%i", -n);
      return "F?";
    }
    default: return "?";
  }
}

std::string FormulaDisplayText(const DatabaseDefinition& definition, int slot) {
  if (slot < 0 || slot >= kFieldSlots) return {};
  int count = definition.field(slot).bytes()[formula::kCount];
  if (count > kMaxFormulaTokens) count = kMaxFormulaTokens;
  std::string out;
  for (int t = 0; t < count; ++t) {
    std::string text = TokenDisplayText(definition, slot, t);
    if (text.empty()) continue;
    if (!out.empty()) out += ' ';
    out += text;
  }
  return out;
}

FormulaOperands FormulaOperandSlots(const DatabaseDefinition& definition, int slot) {
  FormulaOperands operands;
  FormulaProgram program = LoadFormulaProgram(definition, slot);
  int found = 0;
  for (int t = 0; t < program.count && found < 2; ++t) {
    if (program.tokens[t].kind != kFieldOperand) continue;
    int n = program.tokens[t].integer;
    int operand_slot = n > 0 ? n - 1 : (n < 0 ? -n - 1 : -1);
    if (found++ == 0) {
      operands.first = operand_slot;
      operands.first_previous = n < 0;
    } else {
      operands.second = operand_slot;
      operands.second_previous = n < 0;
    }
  }
  return operands;
}

}  // namespace qv
