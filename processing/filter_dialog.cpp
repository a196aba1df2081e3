#include "processing/filter_dialog.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/numeric.h"
#include "processing/views.h"

namespace qv {

namespace {

constexpr std::uint8_t kJoinNot = 0x01, kJoinOr = 0x02;
constexpr std::uint8_t kGroupOpen = 0x01, kGroupClose = 0x02;

std::string Trimmed(std::string_view text) {
  std::size_t a = text.find_first_not_of(" \t");
  if (a == std::string_view::npos) return {};
  std::size_t b = text.find_last_not_of(" \t");
  return std::string(text.substr(a, b - a + 1));
}

bool Whole(std::string_view text, long long low, long long high, long long open, long long& out) {
  std::string t = Trimmed(text);
  if (t.empty()) {
    out = open;
    return true;
  }
  char* end = nullptr;
  errno = 0;
  long long v = std::strtoll(t.c_str(), &end, 10);
  if (*end != '\0' || errno == ERANGE || v < low || v > high) return false;
  out = v;
  return true;
}

bool Decimal(std::string_view text, bool decimal_comma, const char* open, std::string& out) {
  std::string t = Trimmed(text);
  if (t.empty()) {
    out = open;
    return true;
  }
  if (decimal_comma)
    for (char& ch : t)
      if (ch == ',') ch = '.';
  char* end = nullptr;
  std::strtod(t.c_str(), &end);  // validation only; the text is stored as typed, with "."
  if (*end != '\0' || t.size() > 39) return false;
  out = t;
  return true;
}

// A limit typed for a date or time, parsed as the record editor parses it.
bool DateOrTime(unsigned type, std::string_view text, const FormatOptions& options, bool upper,
                std::array<std::uint8_t, 40>& out) {
  std::string t = Trimmed(text);
  out.fill(0);
  if (t.empty()) {
    if (upper) std::memset(out.data(), 0xFF, type == kDate ? 4 : 3);
    return true;
  }
  std::uint8_t bytes[kFieldDefinitionSize] = {};
  FieldDefinition scratch(bytes);
  scratch.set_type(type);
  auto value = ParseValue(scratch, FieldRecord{}, t, options);
  if (!value) return false;
  std::memcpy(out.data(), value->data(), type == kDate ? 4 : 3);
  return true;
}

bool Ranges(unsigned type, const FilterConditionControls& in, Condition& c) {
  long long low = 0, high = 0;
  switch (type) {
    case kInteger:
      if (!Whole(in.lower, INT32_MIN, INT32_MAX, INT32_MIN, low) ||
          !Whole(in.upper, INT32_MIN, INT32_MAX, INT32_MAX, high))
        return false;
      break;
    case kUnique:
      if (!Whole(in.lower, 0, UINT32_MAX, 0, low) ||
          !Whole(in.upper, 0, UINT32_MAX, UINT32_MAX, high))
        return false;
      break;
    default:
      return false;
  }
  c.lower = static_cast<std::uint32_t>(low);
  c.upper = static_cast<std::uint32_t>(high);
  return true;
}

bool Decimals(const FilterConditionControls& in, const FormatOptions& options, Condition& c) {
  std::string low, high;
  if (!Decimal(in.lower, options.decimal_comma, "-1e308", low) ||
      !Decimal(in.upper, options.decimal_comma, "1e308", high))
    return false;
  PutCString(c.first.data(), c.first.size(), low);
  PutCString(c.second.data(), c.second.size(), high);
  return true;
}

std::string ScratchText(unsigned type, const std::uint8_t* bytes, std::size_t n,
                        const FormatOptions& options) {
  std::uint8_t definition[kFieldDefinitionSize] = {};
  FieldDefinition scratch(definition);
  scratch.set_type(type);
  return FormatValue(scratch, std::span<const std::uint8_t>(bytes, n), options);
}

// The limit boxes as the stored condition fills them.
void LimitTexts(ConstFieldDefinition field, const Condition& c, const FormatOptions& options,
                FilterConditionControls& k) {
  unsigned type = field.type();
  if (type == kCalculated) {
    int kind = CalculatedResultKind(field);
    type = kind == 1 ? kInteger : kind == 2 ? kTime : kind == 3 ? kDate : kFloat;
  }
  switch (type) {
    case kInteger:
      k.lower = std::to_string(static_cast<std::int32_t>(c.lower));
      k.upper = std::to_string(static_cast<std::int32_t>(c.upper));
      break;
    case kUnique:
      k.lower = std::to_string(c.lower);
      k.upper = std::to_string(c.upper);
      break;
    case kFloat:
      k.lower = std::string(CStringAt(c.first.data(), c.first.size()));
      k.upper = std::string(CStringAt(c.second.data(), c.second.size()));
      break;
    case kDate:
    case kTime: {
      std::uint8_t low[4] = {c.first[0], c.first[1], c.first[2],
                             type == kDate ? c.first[3] : std::uint8_t{0}};
      std::uint8_t high[4] = {c.second[0], c.second[1], c.second[2],
                              type == kDate ? c.second[3] : std::uint8_t{0}};
      k.lower = ScratchText(type, low, 4, options);
      // An open upper end (all bits set) shows as an empty box.
      bool open = type == kDate ? GetLE32(high) == 0xFFFFFFFF : GetLE24(high) == 0xFFFFFF;
      k.upper = open ? std::string() : ScratchText(type, high, 4, options);
      break;
    }
    default:
      break;
  }
}

}  // namespace

LimitDefaults FilterLimitDefaults(ConstFieldDefinition field) {
  switch (field.type()) {
    case kInteger:
    case kUnique:
      return {"0", "65535", 11};
    case kFloat:
    case kCalculated:
      return {"0.0", "99999.9999", 16};
    default:
      return {};
  }
}

bool ConditionFromTexts(const Database& db, const FilterConditionControls& in,
                        const FormatOptions& options, Condition& c, std::string& problem) {
  if (in.field < 0 || in.field >= kFieldSlots || !db.definition().field(in.field).used()) {
    problem = "no field is chosen";
    return false;
  }
  ConstFieldDefinition field = db.definition().field(in.field);
  c.field = static_cast<std::uint16_t>(in.field);
  c.first.fill(0);
  c.second.fill(0);
  c.lower = 0;
  c.upper = 0;
  bool ok = true;
  switch (field.type()) {
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
    case kLinked:
      ok = in.must_contain.size() < c.first.size();
      PutCString(c.first.data(), c.first.size(), in.must_contain);
      break;
    case kPopUp: {
      if (in.must_contain.empty() || in.must_contain == "No Value") break;
      auto value = ParseValue(field, db.schema.fields[in.field], in.must_contain, options);
      ok = value.has_value();
      if (ok) std::memcpy(c.first.data(), value->data(), std::min<std::size_t>(value->size(), 14));
      break;
    }
    case kInteger:
    case kUnique:
      ok = Ranges(field.type(), in, c);
      break;
    case kFloat:
      ok = Decimals(in, options, c);
      break;
    case kCheckBox:
      c.lower = in.checked ? 1 : 0;
      break;
    case kDate:
    case kTime:
      ok = DateOrTime(field.type(), in.lower, options, false, c.first) &&
           DateOrTime(field.type(), in.upper, options, true, c.second);
      break;
    case kCalculated:
      switch (CalculatedResultKind(field)) {
        case 1:
          ok = Ranges(kInteger, in, c);
          break;
        case 2:
          ok = DateOrTime(kTime, in.lower, options, false, c.first) &&
               DateOrTime(kTime, in.upper, options, true, c.second);
          break;
        case 3:
          ok = DateOrTime(kDate, in.lower, options, false, c.first) &&
               DateOrTime(kDate, in.upper, options, true, c.second);
          break;
        default:
          ok = Decimals(in, options, c);
          break;
      }
      break;
    default:
      break;
  }
  if (!ok)
    problem = StringPrintf("the limits for %s are not valid %s values", field.name().c_str(),
                           std::string(FieldTypeName(field.type())).c_str());
  return ok;
}

FilterDialogControls FilterControlsFromDatabase(const Database& db, const FormatOptions& options,
                                                int view) {
  FilterDialogControls out;
  for (int i = 0; i < kConditions; ++i) {
    Condition c = view < 0 ? db.definition().condition(i) : ViewCondition(db, view, i);
    FilterConditionControls& k = out.conditions[i];
    k.enabled = c.in_use != 0;
    k.field = c.field < kFieldSlots ? c.field : -1;
    k.not_box = c.join & kJoinNot;
    k.open_group = c.group & kGroupOpen;
    k.close_group = c.group & kGroupClose;
    k.checked = c.lower != 0;
    k.must_contain = std::string(CStringAt(c.first.data(), c.first.size()));
    if (i > 0) out.or_buttons[i - 1] = c.join & kJoinOr;
    if (k.field >= 0) LimitTexts(db.definition().field(k.field), c, options, k);
  }
  return out;
}

bool StoreFilterDialog(Database& db, const FilterDialogControls& controls,
                       const FormatOptions& options, std::string& problem, int view) {
  if (view >= kMaxViews) return false;
  std::array<Condition, kConditions> copy;
  for (int i = 0; i < kConditions; ++i)
    copy[i] = view < 0 ? db.definition().condition(i) : ViewCondition(db, view, i);
  // Which "OR" button each condition reads. Conditions 2 and 3 both read the first one, so the
  // choice between conditions 2 and 3 never reaches the filter; on purpose.
  constexpr int kOrButtonOf[kConditions] = {-1, 0, 0, 2, 3, 4};
  for (int i = 0; i < kConditions; ++i) {
    const FilterConditionControls& k = controls.conditions[i];
    Condition& c = copy[i];
    c.in_use = k.enabled ? 1 : 0;
    if (k.enabled) {
      std::string why;
      if (!ConditionFromTexts(db, k, options, c, why)) {
        problem = StringPrintf("Filter %d: %s", i + 1, why.c_str());
        return false;
      }
    }
    bool or_bit = kOrButtonOf[i] >= 0 && controls.or_buttons[kOrButtonOf[i]];
    c.join = static_cast<std::uint8_t>((k.not_box ? kJoinNot : 0) | (or_bit ? kJoinOr : 0));
    c.group = static_cast<std::uint8_t>((k.open_group ? kGroupOpen : 0) |
                                        (k.close_group ? kGroupClose : 0));
  }
  db.changed = true;
  if (view >= 0) {
    for (int i = 0; i < kConditions; ++i) SetViewCondition(db, view, i, copy[i]);
    return true;
  }
  for (int i = 0; i < kConditions; ++i) db.definition().set_condition(i, copy[i]);
  RebuildFilteredList(db);
  db.redraw = true;
  return true;
}

}  // namespace qv
