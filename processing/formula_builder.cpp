#include "processing/formula_builder.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <vector>

#include "engine/text.h"
#include "processing/formula.h"
#include "processing/numeric.h"

namespace qv {

namespace {

struct Pending {
  std::uint8_t kind;
  int operand;           // id, or the signed field operand
  std::string constant;  // kinds 3 and 4
};

constexpr std::string_view kFunctions[] = {"Sqrt", "Sin", "Cos", "Ln", "Log", "Floor", "Ceil"};
constexpr std::string_view kPairFunctions[] = {"min", "max", "avg"};  // operator ids 5, 6, 7

// Deeper nesting cannot make a program of 11 tokens that means more than a shallower one, and
// refusing it keeps the recursion of the parser shallow whatever the text.
constexpr int kMaxNesting = 32;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsIdentStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsIdentChar(char c) {
  return IsIdentStart(c) || IsDigit(c);
}

class Parser {
 public:
  Parser(const DatabaseDefinition& definition, std::string_view text)
      : def_(definition), s_(text) {}

  FormulaProblem Parse() {
    const bool ok = Expr() && (Skip(), pos_ == s_.size());
    if (too_many_) return FormulaProblem::TooManyTokens;
    return ok ? FormulaProblem::None : FormulaProblem::Invalid;
  }
  std::vector<Pending>& tokens() { return out_; }

 private:
  void Skip() {
    while (pos_ < s_.size() && (s_[pos_] == ' ' || s_[pos_] == '\t')) ++pos_;
  }
  char Peek() {
    Skip();
    return pos_ < s_.size() ? s_[pos_] : '\0';
  }
  bool Take(char c) {
    if (Peek() != c) return false;
    ++pos_;
    return true;
  }
  // Once the program is full, parsing stops: a long text is refused after 11 tokens.
  void Emit(std::uint8_t kind, int operand, std::string constant = {}) {
    if (out_.size() == static_cast<std::size_t>(kMaxFormulaTokens)) {
      too_many_ = true;
      return;
    }
    out_.push_back({kind, operand, std::move(constant)});
  }
  struct Nesting {
    explicit Nesting(int& depth) : depth_(depth) { ++depth_; }
    ~Nesting() { --depth_; }
    int& depth_;
  };
  bool TooDeep() const { return depth_ > kMaxNesting || too_many_; }

  bool Expr() {
    Nesting nesting(depth_);
    if (TooDeep() || !Term()) return false;
    while (true) {
      char c = Peek();
      if (c != '+' && c != '-') return true;
      ++pos_;
      if (too_many_ || !Term()) return false;
      Emit(kOperatorToken, c == '+' ? 2 : 3);
    }
  }
  bool Term() {
    if (!Unary()) return false;
    while (true) {
      char c = Peek();
      if (c != '*' && c != '/') return true;
      ++pos_;
      if (too_many_ || !Unary()) return false;
      Emit(kOperatorToken, c == '*' ? 1 : 0);
    }
  }
  // Each "-" emits a token before it recurses, so the token limit bounds this recursion.
  bool Unary() {
    if (too_many_) return false;
    while (Take('+')) {
    }
    if (!Take('-')) return Power();
    std::size_t mark = pos_;
    std::string number;
    if (Number(number) && Peek() != '^') {
      Emit(kIntegerConstant, 0, "-" + number);
      return true;
    }
    pos_ = mark;
    // No negation token exists: -x is written 0 x -.
    Emit(kIntegerConstant, 0, "0");
    if (!Unary()) return false;
    Emit(kOperatorToken, 3);
    return true;
  }
  bool Power() {
    if (!Primary()) return false;
    if (!Take('^')) return true;
    if (!Unary()) return false;
    Emit(kOperatorToken, 4);
    return true;
  }
  bool Number(std::string& text) {
    Skip();
    std::size_t start = pos_;
    while (pos_ < s_.size() && (IsDigit(s_[pos_]) || s_[pos_] == '.')) ++pos_;
    if (pos_ == start || s_.substr(start, pos_ - start) == ".") {
      pos_ = start;
      return false;
    }
    if (pos_ < s_.size() && (s_[pos_] == 'e' || s_[pos_] == 'E')) {
      std::size_t e = pos_ + 1;
      if (e < s_.size() && (s_[e] == '+' || s_[e] == '-')) ++e;
      if (e < s_.size() && IsDigit(s_[e])) {
        while (e < s_.size() && IsDigit(s_[e])) ++e;
        pos_ = e;
      }
    }
    text = std::string(s_.substr(start, pos_ - start));
    return std::count(text.begin(), text.end(), '.') <= 1;
  }
  bool FieldOperand(int slot, bool previous) {
    if (slot < 0 || slot >= kFieldSlots || !def_.field(slot).used()) return false;
    Emit(kFieldOperand, previous ? -(slot + 1) : slot + 1);
    return true;
  }
  bool QuotedName(bool previous) {
    char open = s_[pos_];
    char close = open == '{' ? '}' : '"';
    std::size_t end = s_.find(close, pos_ + 1);
    if (end == std::string_view::npos) return false;
    std::string_view name = s_.substr(pos_ + 1, end - pos_ - 1);
    pos_ = end + 1;
    auto slot = def_.FindField(name);
    return slot && FieldOperand(*slot, previous);
  }
  bool Primary() {
    char c = Peek();
    if (c == '(') {
      ++pos_;
      return Expr() && Take(')');
    }
    if (c == '{' || c == '"') return QuotedName(false);
    std::string number;
    if (IsDigit(c) || c == '.') {
      if (!Number(number)) return false;
      Emit(kIntegerConstant, 0, number);
      return true;
    }
    if (!IsIdentStart(c)) return false;
    std::size_t start = pos_;
    while (pos_ < s_.size() && IsIdentChar(s_[pos_])) ++pos_;
    std::string_view word = s_.substr(start, pos_ - start);
    if ((word == "P" || word == "p") && pos_ < s_.size() && (s_[pos_] == '{' || s_[pos_] == '"'))
      return QuotedName(true);
    if (Peek() == '(') return Call(word);
    if (word.size() >= 2 &&
        (word[0] == 'F' || word[0] == 'f' || word[0] == 'P' || word[0] == 'p') &&
        std::all_of(word.begin() + 1, word.end(), IsDigit)) {
      int n = TextToLong(word.substr(1));
      return FieldOperand(n - 1, word[0] == 'P' || word[0] == 'p');
    }
    auto slot = def_.FindField(word);
    return slot && FieldOperand(*slot, false);
  }
  bool Call(std::string_view name) {
    ++pos_;  // "("
    for (int id = 0; id < 7; ++id) {
      if (!EqualsNoCase(name, kFunctions[id])) continue;
      if (!Expr() || !Take(')')) return false;
      Emit(kFunctionToken, id);
      return true;
    }
    for (int k = 0; k < 3; ++k) {
      if (!EqualsNoCase(name, kPairFunctions[k])) continue;
      if (!Expr() || !Take(',') || !Expr() || !Take(')')) return false;
      Emit(kOperatorToken, 5 + k);
      return true;
    }
    return false;
  }

  const DatabaseDefinition& def_;
  std::string_view s_;
  std::size_t pos_ = 0;
  std::vector<Pending> out_;
  int depth_ = 0;
  bool too_many_ = false;
};

// A constant text that fits its place (at most 9 characters); long decimals are rounded.
std::string FittedConstant(const std::string& text) {
  if (text.size() <= 9) return text;
  double v = TextToDouble(text);
  for (int precision = 8; precision >= 1; --precision) {
    char buffer[64];
    auto [end, ec] =
        std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::general, precision);
    if (ec == std::errc() && end - buffer <= 9) return std::string(buffer, end);
  }
  return {};
}

bool IsWholeNumber(const std::string& text) {
  std::size_t start = !text.empty() && text[0] == '-' ? 1 : 0;
  if (start == text.size() || text.size() > 10) return false;
  if (!std::all_of(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), IsDigit))
    return false;
  long long v = std::stoll(text);
  return v >= INT32_MIN && v <= INT32_MAX;
}

// Gives each distinct constant a numbered place; the longest texts take the larger places first.
bool AssignConstants(std::vector<Pending>& tokens, BuiltFormula& built) {
  std::vector<std::string> distinct;
  for (Pending& t : tokens) {
    if (t.kind != kIntegerConstant) continue;
    if (!IsWholeNumber(t.constant) || t.constant.size() > 9) {
      t.kind = kDecimalConstant;
      t.constant = FittedConstant(t.constant);
      if (t.constant.empty()) return false;
    }
    if (std::find(distinct.begin(), distinct.end(), t.constant) == distinct.end())
      distinct.push_back(t.constant);
  }
  if (distinct.size() > kFormulaConstants) return false;
  std::vector<std::string> by_length = distinct;
  std::stable_sort(by_length.begin(), by_length.end(),
                   [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
  std::array<bool, kFormulaConstants> taken{};
  for (const std::string& text : by_length) {
    int best = -1;
    for (int k = 0; k < kFormulaConstants; ++k) {
      if (taken[k] || text.size() + 1 > formula::kConstantSize[k]) continue;
      if (best < 0 || formula::kConstantSize[k] < formula::kConstantSize[best]) best = k;
    }
    if (best < 0) return false;
    taken[best] = true;
    built.constants[best] = text;
  }
  for (Pending& t : tokens) {
    if (t.kind != kIntegerConstant && t.kind != kDecimalConstant) continue;
    for (int k = 0; k < kFormulaConstants; ++k)
      if (taken[k] && built.constants[k] == t.constant) t.operand = k + 1;
  }
  built.constants_used = static_cast<int>(distinct.size());
  return true;
}

}  // namespace

std::optional<BuiltFormula> ParseFormula(const DatabaseDefinition& definition,
                                         std::string_view text, FormulaProblem& problem) {
  problem = FormulaProblem::None;
  if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
    problem = FormulaProblem::Empty;
    return std::nullopt;
  }
  Parser parser(definition, text);
  problem = parser.Parse();
  if (problem != FormulaProblem::None) return std::nullopt;
  std::vector<Pending>& tokens = parser.tokens();
  BuiltFormula built;
  if (tokens.size() > kMaxFormulaTokens || !AssignConstants(tokens, built)) {
    problem = FormulaProblem::TooManyTokens;
    return std::nullopt;
  }
  built.count = static_cast<int>(tokens.size());
  int field_operands = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    built.kinds[i] = tokens[i].kind;
    built.operands[i] = static_cast<std::uint8_t>(tokens[i].operand);
    if (tokens[i].kind != kFieldOperand) continue;
    if (tokens[i].operand < 0)
      built.refers |= field_operands == 0 ? 0x01 : field_operands == 1 ? 0x02 : 0x04;
    ++field_operands;
  }
  return built;
}

void ReportFormulaProblem(FormulaProblem problem, Prompter& prompter) {
  switch (problem) {
    case FormulaProblem::Empty:
      prompter.message("Formula is empty. Please enter a valid formula.", "ERROR", Icon::Error);
      break;
    case FormulaProblem::Invalid:
      prompter.message("Invalid formula. Please enter a valid formula.", "ERROR", Icon::Error);
      break;
    case FormulaProblem::TooManyTokens:
      prompter.message("All available operators are used up.", "Error", Icon::Error);
      break;
    case FormulaProblem::None:
      break;
  }
}

void WriteFormula(DatabaseDefinition& definition, int slot, const BuiltFormula& formula) {
  std::uint8_t* f = definition.field(slot).bytes();
  for (int t = 0; t < kMaxFormulaTokens; ++t) {
    f[formula::kOperands + t] = t < formula.count ? formula.operands[t] : 0;
    f[formula::kKinds + t] = t < formula.count ? formula.kinds[t] : std::uint8_t{kCarriedToken};
  }
  for (int k = 0; k < kFormulaConstants; ++k)
    PutCString(f + formula::kConstantOffset[k], formula::kConstantSize[k], formula.constants[k]);
  f[formula::kCount] = static_cast<std::uint8_t>(formula.count);
  f[formula::kSecondByte] = static_cast<std::uint8_t>(formula.constants_used);
  f[formula::kRefers] = formula.refers;
}

bool BuildFormula(DatabaseDefinition& definition, int slot, std::string_view text,
                  Prompter& prompter) {
  if (slot < 0 || slot >= kFieldSlots) return false;
  FormulaProblem problem;
  auto built = ParseFormula(definition, text, problem);
  if (!built) {
    ReportFormulaProblem(problem, prompter);
    return false;
  }
  WriteFormula(definition, slot, *built);
  return true;
}

}  // namespace qv
