#include "processing/conditional.h"

#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/formula.h"
#include "processing/numeric.h"

namespace qv {

namespace {

// Places inside the 116-byte field definition.
constexpr std::size_t kTestField = 24;
constexpr std::size_t kOperator = 25;
constexpr std::size_t kThenSource = 26;
constexpr std::size_t kElseSource = 27;
constexpr std::size_t kValue = 28, kValueSize = 20;
constexpr std::size_t kThenText = 48, kThenSize = 16;
constexpr std::size_t kElseText = 86, kElseSize = 16;
constexpr std::uint8_t kNoField = 0xFF;

constexpr std::string_view kOperatorTexts[kConditionalOperators] = {
    "=", "<>", "<", "<=", ">", ">=", "contains", "is empty", "is not empty"};

int SlotFromByte(std::uint8_t b) { return b < kFieldSlots ? b : -1; }
std::uint8_t ByteFromSlot(int slot) {
  return slot >= 0 && slot < kFieldSlots ? static_cast<std::uint8_t>(slot) : kNoField;
}

bool IsNumericType(unsigned type) {
  switch (type) {
    case kInteger:
    case kUnique:
    case kFloat:
    case kCalculated:
    case kCheckBox:
    case kDate:
    case kTime: return true;
    default: return false;
  }
}

bool IsEmptyValue(ConstFieldDefinition field, std::span<const std::uint8_t> value) {
  switch (field.type()) {
    case kInteger:
    case kUnique:
    case kDate: return ValueUInt32(value) == 0;
    case kCheckBox: return value.empty() || value[0] == 0;
    case kTime: return value.size() < 3 || value[2] == 255;
    default: return CanonicalValueText(field, value).empty();
  }
}

std::span<const std::uint8_t> FieldValue(std::span<const std::uint8_t> record, int slot) {
  auto ref = LocateValue(record, slot);
  if (!ref) return {};
  return record.subspan(ref->offset, ref->length);
}

}  // namespace

std::string_view ConditionalOperatorText(int op) {
  return op >= 0 && op < kConditionalOperators ? kOperatorTexts[op] : std::string_view();
}

std::optional<ConditionalOperator> ConditionalOperatorByText(std::string_view text) {
  for (int op = 0; op < kConditionalOperators; ++op)
    if (EqualsNoCase(kOperatorTexts[op], text)) return static_cast<ConditionalOperator>(op);
  return std::nullopt;
}

ConditionalSettings ConditionalSettings::Read(ConstFieldDefinition field) {
  const std::uint8_t* f = field.bytes();
  ConditionalSettings s;
  s.test_field = SlotFromByte(f[kTestField]);
  s.op = f[kOperator];
  s.then_field = SlotFromByte(f[kThenSource]);
  s.else_field = SlotFromByte(f[kElseSource]);
  s.value = std::string(CStringAt(f + kValue, kValueSize));
  s.then_text = std::string(CStringAt(f + kThenText, kThenSize));
  s.else_text = std::string(CStringAt(f + kElseText, kElseSize));
  return s;
}

void ConditionalSettings::Write(FieldDefinition field) const {
  std::uint8_t* f = field.bytes();
  f[kTestField] = ByteFromSlot(test_field);
  f[kOperator] = op;
  f[kThenSource] = ByteFromSlot(then_field);
  f[kElseSource] = ByteFromSlot(else_field);
  PutCString(f + kValue, kValueSize, value);
  PutCString(f + kThenText, kThenSize, then_text);
  PutCString(f + kElseText, kElseSize, else_text);
}

std::string CanonicalValueText(ConstFieldDefinition field, std::span<const std::uint8_t> value) {
  switch (field.type()) {
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
    case kPopUp:
    case kFloat:
    case kCalculated: return std::string(ValueText(value));
    case kLinked: return value.size() >= 25 ? std::string(ValueText(value.subspan(24))) : "";
    case kInteger: return StringPrintf("%ld", static_cast<long>(ValueInt32(value)));
    case kUnique: return StringPrintf("%lu", static_cast<unsigned long>(ValueUInt32(value)));
    case kCheckBox: return !value.empty() && value[0] ? "1" : "0";
    case kDate: {
      std::uint32_t days = ValueUInt32(value);
      if (days == 0) return "";
      Dmy d = DateNumberToDmy(days);
      return StringPrintf("%04d-%02d-%02d", d.year, d.month, d.day);
    }
    case kTime:
      if (value.size() < 3 || value[2] == 255) return "";
      return StringPrintf("%02d:%02d", value[2], value[1]);
    default: return "";
  }
}

bool ConditionalTestHolds(const Database& db, const ConditionalSettings& s,
                          std::span<const std::uint8_t> record) {
  if (s.test_field < 0 || !db.definition().field(s.test_field).used()) return false;
  auto ref = LocateValue(record, s.test_field);
  if (!ref) return false;
  std::span<const std::uint8_t> value = record.subspan(ref->offset, ref->length);
  ConstFieldDefinition field = db.definition().field(s.test_field);
  if (s.op == kCondIsEmpty) return IsEmptyValue(field, value);
  if (s.op == kCondIsNotEmpty) return !IsEmptyValue(field, value);
  std::string text = CanonicalValueText(field, value);
  if (s.op == kCondContains) return ContainsNoCase(text, s.value);
  int order;
  if (IsNumericType(field.type())) {
    double x = FieldNumericValue(field, value), y = TextToDouble(s.value);
    order = x < y ? -1 : (x > y ? 1 : 0);
  } else {
    order = Stricmp(text, s.value);
  }
  switch (s.op) {
    case kCondEqual: return order == 0;
    case kCondNotEqual: return order != 0;
    case kCondLess: return order < 0;
    case kCondLessOrEqual: return order <= 0;
    case kCondGreater: return order > 0;
    case kCondGreaterOrEqual: return order >= 0;
    default: return false;
  }
}

std::string ConditionalResult(const Database& db, const ConditionalSettings& s,
                              std::span<const std::uint8_t> record) {
  bool holds = ConditionalTestHolds(db, s, record);
  int source = holds ? s.then_field : s.else_field;
  if (source < 0) return holds ? s.then_text : s.else_text;
  return CanonicalValueText(db.definition().field(source), FieldValue(record, source));
}

void UpdateConditionalField(Database& db, int slot, const DatabaseDefinition& definition,
                            Bytes& record) {
  if (slot < 0 || slot >= kFieldSlots) return;
  ConditionalSettings s = ConditionalSettings::Read(definition.field(slot));
  std::string text = ConditionalResult(db, s, record);
  std::size_t largest = LargestValueSize(definition.field(slot));
  if (text.size() + 1 > largest) text.resize(largest - 1);
  auto ref = LocateValue(record, slot);
  std::string_view old = ref ? ValueText(std::span<const std::uint8_t>(record).subspan(
                                   ref->offset, ref->length))
                             : std::string_view();
  if (ref && old == text && ref->length == text.size() + 1) return;
  if (old != text) db.field_changed[slot] = 1;
  PutFieldValue(record, definition, slot, TextValue(text));
}

std::string ConditionalDescription(const DatabaseDefinition& definition, int slot) {
  if (slot < 0 || slot >= kFieldSlots) return {};
  ConditionalSettings s = ConditionalSettings::Read(definition.field(slot));
  auto name = [&](int f) { return f >= 0 ? definition.field(f).name() : std::string("?"); };
  auto branch = [&](int f, const std::string& text) {
    return f >= 0 ? definition.field(f).name() : "\"" + text + "\"";
  };
  std::string out = "if " + name(s.test_field) + " " + std::string(ConditionalOperatorText(s.op));
  if (s.op != kCondIsEmpty && s.op != kCondIsNotEmpty) out += " \"" + s.value + "\"";
  return out + " then " + branch(s.then_field, s.then_text) + " else " +
         branch(s.else_field, s.else_text);
}

}  // namespace qv
