#pragma once
// Turns an infix formula such as "(F1 + F2) * 2", "Sqrt(P1)" or "{Unit price} * {Qty}" into
// the postfix program of a Calculated field (at most 11 tokens and 6 constants).
//
// Operands: numbers; F<n> (field slot n-1 of the record) and P<n> (of the previous record);
// a field name in braces or double quotes, or a one-word field name, with P before the brace or
// quote for the previous record. Operators + - * / ^ (^ binds tightest, right to left);
// functions Sqrt Sin Cos Ln Log Floor Ceil of one value and min max avg of two, as min(a, b).

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/schema.h"
#include "platform/prompter.h"

namespace qv {

struct BuiltFormula {
  int count = 0;
  std::array<std::uint8_t, 11> kinds{};
  std::array<std::uint8_t, 11> operands{};
  std::array<std::string, 6> constants;  // texts by constant number - 1
  int constants_used = 0;
  std::uint8_t refers = 0;  // bit 0: first field operand from the previous record; bit 1: the
                            // second; bit 2: a later one
};

enum class FormulaProblem { None, Empty, Invalid, TooManyTokens };

// Parses `text` against the fields of `definition`.
std::optional<BuiltFormula> ParseFormula(const DatabaseDefinition& definition,
                                         std::string_view text, FormulaProblem& problem);
// The message and caption that refuse a problem.
void ReportFormulaProblem(FormulaProblem problem, Prompter& prompter);
// Writes a built program into the field definition of `slot` (the result kind and every other
// byte stay).
void WriteFormula(DatabaseDefinition& definition, int slot, const BuiltFormula& formula);
// Parses and writes; on refusal shows the message, leaves the definition untouched and answers
// false.
bool BuildFormula(DatabaseDefinition& definition, int slot, std::string_view text,
                  Prompter& prompter);

}  // namespace qv
