#include "processing/filter.h"

#include <array>
#include <cstring>

#include "engine/record.h"
#include "engine/text.h"
#include "processing/numeric.h"
#include "security/enciphered.h"

namespace qv {

namespace {

constexpr std::uint8_t kJoinNot = 0x01;
constexpr std::uint8_t kJoinOr = 0x02;
constexpr std::uint8_t kGroupOpen = 0x01;
constexpr std::uint8_t kGroupClose = 0x02;

std::string_view LimitText(const std::array<std::uint8_t, 40>& text) {
  return CStringAt(text.data(), text.size());
}

// The six conditions decoded once, so a rebuild over 65,000 records does not decode them
// again for every record.
struct Conditions {
  std::array<Condition, kConditions> c;
  std::array<unsigned, kConditions> type{};                // the type of the field each one tests
  std::array<int, kConditions + 1> next_used{};            // the first condition in use from i on
  std::array<std::string_view, kConditions> must_contain;  // views into c: not copyable
  bool all_joined_by_and = true;  // no OR and no group: a plain conjunction
  Conditions(const Conditions&) = delete;
  Conditions& operator=(const Conditions&) = delete;
  explicit Conditions(const Database& db) {
    for (int i = 0; i < kConditions; ++i) {
      c[i] = db.definition().condition(i);
      if (!c[i].in_use) continue;  // built for every record by RecordPassesFilter: kept short
      type[i] = db.definition().field_type(c[i].field);
      must_contain[i] = LimitText(c[i].first);
      if ((c[i].join & kJoinOr) || c[i].group) all_joined_by_and = false;
    }
    next_used[kConditions] = kConditions;
    for (int i = kConditions - 1; i >= 0; --i) next_used[i] = c[i].in_use ? i : next_used[i + 1];
  }
};

// Text conditions: an empty "Must Contain" text asks for an empty value.
int TextTest(std::span<const std::uint8_t> value, std::string_view needle) {
  // The stored bytes as they are: the text ends at the first NUL, which the search stops at.
  std::string_view stored(reinterpret_cast<const char*>(value.data()), value.size());
  const bool empty = stored.empty() || stored.front() == '\0';
  if (needle.empty()) return empty ? 1 : 0;
  if (empty) return 0;
  return CStringContainsNoCase(stored, needle) ? 1 : 0;
}

int FloatTest(std::span<const std::uint8_t> value, const Condition& c) {
  double v = TextToDouble(ValueText(value));
  return v >= TextToDouble(LimitText(c.first)) && v <= TextToDouble(LimitText(c.second)) ? 1 : 0;
}

int CalculatedTest(ConstFieldDefinition field, std::span<const std::uint8_t> value,
                   const Condition& c) {
  switch (CalculatedResultKind(field)) {
    case 1: {
      std::int32_t v = TextToLong(ValueText(value));
      return v >= static_cast<std::int32_t>(c.lower) && v <= static_cast<std::int32_t>(c.upper);
    }
    case 2: {
      std::int32_t v = TextToLong(ValueText(value));
      return v >= TimeBytesToSeconds(c.first.data()) && v <= TimeBytesToSeconds(c.second.data());
    }
    case 3: {
      std::int32_t v = TextToLong(ValueText(value));
      return v >= static_cast<std::int64_t>(GetLE32(c.first.data())) &&
             v <= static_cast<std::int64_t>(GetLE32(c.second.data()));
    }
    case 0:
    case 4:
    case 5:
    case 6:
      return FloatTest(value, c);
    default:
      return 0;
  }
}

// `must_contain` is the condition's text, found once for a whole pass.
int Test(const Database& db, const Condition& c, unsigned type, std::string_view must_contain,
         std::span<const std::uint8_t> record) {
  auto ref = LocateValue(record, c.field);
  if (!ref) return 0;
  std::span<const std::uint8_t> value = record.subspan(ref->offset, ref->length);
  switch (type) {
    case kNotUsed:
    case kImage:
    case kLink:
    case kHeading:
    case kRelationship:
    case kExternal:
      return 1;
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
      return TextTest(value, must_contain);
    case kInteger: {
      if (value.size() < 4) return 0;
      std::int32_t v = ValueInt32(value);
      return v >= static_cast<std::int32_t>(c.lower) && v <= static_cast<std::int32_t>(c.upper);
    }
    case kUnique: {
      if (value.size() < 4) return 0;
      std::uint32_t v = ValueUInt32(value);
      return v >= c.lower && v <= c.upper;
    }
    case kFloat:
      return FloatTest(value, c);
    case kPopUp: {
      std::uint8_t stored[14] = {};
      std::memcpy(stored, value.data(), value.size() < 14 ? value.size() : 14);
      return std::memcmp(stored, c.first.data(), 14) == 0 ? 1 : 0;
    }
    case kCheckBox:
      return !value.empty() && value[0] == c.lower ? 1 : 0;
    case kDate: {
      if (value.size() < 4) return 0;
      std::uint32_t v = ValueUInt32(value);
      return v <= GetLE32(c.second.data()) && v >= GetLE32(c.first.data()) ? 1 : 0;
    }
    case kTime: {
      if (value.size() < 3) return 0;
      std::uint32_t v = GetLE24(value.data());
      return v >= GetLE24(c.first.data()) && v <= GetLE24(c.second.data()) ? 1 : 0;
    }
    case kLinked:
      if (value.size() < 25) return 0;
      return TextTest(value.subspan(24), must_contain);
    case kCalculated:
      return CalculatedTest(db.definition().field(c.field), value, c);
    default:
      return 0;
  }
}

int TestWithNot(const Database& db, const Conditions& all, int i,
                std::span<const std::uint8_t> record) {
  const Condition& c = all.c[i];
  int r = Test(db, c, all.type[i], all.must_contain[i], record);
  return (c.join & kJoinNot) ? 1 - (r > 0) : r;
}

int Evaluate(const Database& db, const Conditions& all, int first, int& last_used,
             std::span<const std::uint8_t> record, bool top_level, bool nested) {
  if (first >= kConditions) {
    last_used = first - 1;
    return -1;
  }
  int acc = -1;
  int i = first;
  while ((i = all.next_used[i]) < kConditions) {  // conditions not in use are passed over
    const Condition& c = all.c[i];
    // The ")" bit closes the group before the condition that carries it; on purpose.
    if (acc != -1 && nested && (c.group & kGroupClose)) break;
    int r;
    int used = i;
    if (acc == -1 && !top_level) {
      r = TestWithNot(db, all, i, record);
    } else if (c.group & kGroupOpen) {
      r = Evaluate(db, all, i, used, record, false, true);
    } else if (acc != -1 && (c.join & kJoinOr) == (acc > 0 ? kJoinOr : 0)) {
      r = acc;  // the outcome is settled (false AND x, true OR x); tests have no side effects
    } else {
      r = TestWithNot(db, all, i, record);
    }
    if (acc == -1)
      acc = r;
    else if (c.join & kJoinOr)
      acc = (acc > 0 || r > 0) ? 1 : 0;
    else
      acc = (acc > 0 && r > 0) ? 1 : 0;
    i = used + 1;
  }
  last_used = i - 1;
  return acc;
}

bool AnyInUse(const Conditions& all) {
  for (const Condition& c : all.c)
    if (c.in_use) return true;
  return false;
}

bool MatchesRestriction(const Database& db, std::span<const std::uint8_t> record) {
  auto ref = LocateValue(record, db.restriction_field);
  if (!ref || ref->length < 4) return false;
  return GetLE32(record.data() + ref->offset) == db.restriction_key;
}

bool Passes(const Database& db, const Conditions& all, bool any_in_use, std::uint32_t number) {
  if (number >= db.count()) return false;
  std::span<const std::uint8_t> record = db.records[number].data;
  if (record.empty()) return false;
  bool restricted = db.restriction_field >= 0;
  if (!any_in_use && !restricted) return true;
  // Enciphered values cannot be tested: the record is left out.
  if (IsRecordEnciphered(record)) return false;
  if (restricted && !MatchesRestriction(db, record)) return false;
  if (all.all_joined_by_and) {  // the common case, without the walk through groups
    for (int i = all.next_used[0]; i < kConditions; i = all.next_used[i + 1])
      if (TestWithNot(db, all, i, record) <= 0) return false;
    return true;
  }
  int last = 0;
  return Evaluate(db, all, 0, last, record, true, false) != 0;
}

}  // namespace

int TestCondition(const Database& db, int index, std::span<const std::uint8_t> record) {
  if (index < 0 || index >= kConditions) return 0;
  const Condition c = db.definition().condition(index);
  return Test(db, c, db.definition().field_type(c.field), LimitText(c.first), record);
}

int EvaluateConditions(const Database& db, int first, int& last_used,
                       std::span<const std::uint8_t> record, bool top_level, bool nested) {
  Conditions all(db);
  return Evaluate(db, all, first < 0 ? 0 : first, last_used, record, top_level, nested);
}

bool FilterActive(const Database& db) {
  return db.restriction_field >= 0 || AnyInUse(Conditions(db));
}

bool RecordPassesFilter(const Database& db, std::uint32_t number) {
  Conditions all(db);
  return Passes(db, all, AnyInUse(all), number);
}

void RebuildFilteredList(Database& db) {
  Conditions all(db);
  bool any = AnyInUse(all);
  db.visible.clear();
  for (std::uint32_t i = 0; i < db.count(); ++i)
    if (Passes(db, all, any, i)) db.visible.push_back(i);
}

int StepPassingRecords(const Database& db, int position, int steps) {
  Conditions all(db);
  bool any = AnyInUse(all);
  int count = static_cast<int>(db.count());
  if (steps == 0)
    return position >= 0 && Passes(db, all, any, static_cast<std::uint32_t>(position)) ? position
                                                                                       : -1;
  int direction = steps > 0 ? 1 : -1;
  int remaining = steps > 0 ? steps : -steps;
  int p = position < -1 ? -1 : (position > count ? count : position);
  while (true) {
    p += direction;
    if (p < 0 || p >= count) return -1;
    if (Passes(db, all, any, static_cast<std::uint32_t>(p)) && --remaining == 0) return p;
  }
}

}  // namespace qv
