#include "processing/formula_text.h"

#include <vector>

#include "processing/formula.h"

namespace qv {

namespace {

std::string OperandText(const DatabaseDefinition& definition, int operand) {
  int slot = operand > 0 ? operand - 1 : -operand - 1;
  std::string prefix = operand < 0 ? "P" : "";
  if (slot < 0 || slot >= kFieldSlots || !definition.field(slot).used())
    return prefix.empty() ? "F" + std::to_string(operand) : "P" + std::to_string(-operand);
  return prefix + "{" + definition.field(slot).name() + "}";
}

}  // namespace

std::string FormulaInfixText(const DatabaseDefinition& definition, int slot) {
  if (slot < 0 || slot >= kFieldSlots) return {};
  FormulaProgram program = LoadFormulaProgram(definition, slot);
  if (program.corrupt) return {};
  // Each entry: its text, and whether it is a bare infix expression needing brackets inside
  // another one.
  std::vector<std::pair<std::string, bool>> stack;
  for (int t = 0; t < program.count; ++t) {
    const FormulaToken& token = program.tokens[static_cast<std::size_t>(t)];
    switch (token.kind) {
      case kFieldOperand:
        stack.push_back({OperandText(definition, token.integer), false});
        break;
      case kIntegerConstant:
      case kDecimalConstant:
        stack.push_back({TokenDisplayText(definition, slot, t), false});
        break;
      case kFunctionToken: {
        if (stack.empty()) return {};
        stack.back() = {std::string(FunctionName(token.integer)) + "(" + stack.back().first + ")",
                        false};
        break;
      }
      case kOperatorToken: {
        if (stack.size() < 2) return {};
        auto b = stack.back();
        stack.pop_back();
        auto a = stack.back();
        std::string op(OperatorText(token.integer));
        if (token.integer >= 5) {
          stack.back() = {op + "(" + a.first + ", " + b.first + ")", false};
        } else {
          auto wrap = [](const std::pair<std::string, bool>& e) {
            return e.second ? "(" + e.first + ")" : e.first;
          };
          stack.back() = {wrap(a) + " " + op + " " + wrap(b), true};
        }
        break;
      }
      default:
        break;  // carried tokens take no part
    }
  }
  return stack.size() == 1 ? stack.front().first : std::string();
}

}  // namespace qv
