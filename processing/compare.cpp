// The field and record comparisons behind sorting and sorted placement.

#include <cmath>

#include "engine/record.h"
#include "engine/text.h"
#include "processing/numeric.h"
#include "processing/sort.h"
#include "security/enciphered.h"

namespace qv {

namespace {

int Sign(std::int64_t v) { return v < 0 ? -1 : (v > 0 ? 1 : 0); }

// The 32-bit difference wraps, so values more than 2^31 apart compare the wrong way round;
// kept on purpose.
int WrappingSign(std::uint32_t x, std::uint32_t y) {
  return Sign(static_cast<std::int32_t>(x - y));
}

int CompareDoubles(double x, double y) {
  if (x > y) return 1;
  if (x < y) return -1;
  return 0;
}

std::uint32_t Read24(std::span<const std::uint8_t> v) {
  std::uint32_t out = 0;
  for (std::size_t i = 0; i < 3 && i < v.size(); ++i) out |= std::uint32_t{v[i]} << (8 * i);
  return out;
}

std::uint32_t Read32(std::span<const std::uint8_t> v) {
  std::uint32_t out = 0;
  for (std::size_t i = 0; i < 4 && i < v.size(); ++i) out |= std::uint32_t{v[i]} << (8 * i);
  return out;
}

std::uint8_t FirstByte(std::span<const std::uint8_t> v) { return v.empty() ? 0 : v[0]; }

std::string_view PopupText(std::span<const std::uint8_t> v) {
  return CStringAt(v.data(), v.size() < 14 ? v.size() : 14);
}

// Linked values shorter than 25 bytes count as empty and go first forward, last reverse.
int CompareLinked(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b, bool forward) {
  bool a_empty = a.size() < 25, b_empty = b.size() < 25;
  if (a_empty && b_empty) return 0;
  if (a_empty) return forward ? -1 : 1;
  if (b_empty) return forward ? 1 : -1;
  std::string_view ta = ValueText(a.subspan(24)), tb = ValueText(b.subspan(24));
  return forward ? Stricmp(ta, tb) : Stricmp(tb, ta);
}

// x is the value that sorts first when it is smaller: A forward, B reverse.
int CompareTyped(ConstFieldDefinition field, std::span<const std::uint8_t> x,
                 std::span<const std::uint8_t> y, std::size_t length_of_b) {
  switch (field.type()) {
    case kNotUsed:
    case kImage:
    case kLink:
    case kHeading:
    case kRelationship:
    case kExternal: return 0;
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional: return Stricmp(ValueText(x), ValueText(y));
    case kInteger:
    case kUnique:
    case kDate: return WrappingSign(Read32(x), Read32(y));
    case kTime: return Sign(std::int64_t{Read24(x)} - Read24(y));
    case kFloat: return CompareDoubles(TextToDouble(ValueText(x)), TextToDouble(ValueText(y)));
    case kCheckBox: return int{FirstByte(x)} - int{FirstByte(y)};
    case kPopUp:
      if (SortPopups(field)) return Stricmp(PopupText(x), PopupText(y));
      return int{FirstByte(x)} - int{FirstByte(y)};
    case kCalculated: {
      int kind = CalculatedResultKind(field);
      if (kind == 0 || (kind >= 4 && kind <= 6))
        return CompareDoubles(TextToDouble(ValueText(x)), TextToDouble(ValueText(y)));
      if (kind >= 1 && kind <= 3)
        return WrappingSign(static_cast<std::uint32_t>(TextToLong(ValueText(x))),
                            static_cast<std::uint32_t>(TextToLong(ValueText(y))));
      // Unknown kinds answer B's length, which says "greater" whenever B is not empty; kept.
      return static_cast<int>(length_of_b);
    }
    default: return static_cast<int>(length_of_b);
  }
}

}  // namespace

int CompareField(const Database& db, std::span<const std::uint8_t> a,
                 std::span<const std::uint8_t> b, int slot, bool forward) {
  auto ra = LocateValue(a, slot);
  if (!ra) return -1;
  auto rb = LocateValue(b, slot);
  if (!rb) return 1;
  std::span<const std::uint8_t> va = a.subspan(ra->offset, ra->length);
  std::span<const std::uint8_t> vb = b.subspan(rb->offset, rb->length);
  ConstFieldDefinition field = db.definition().field(slot);
  if (field.type() == kLinked) return CompareLinked(va, vb, forward);
  return forward ? CompareTyped(field, va, vb, vb.size()) : CompareTyped(field, vb, va, vb.size());
}

SortKey EffectiveSortKey(const Database& db, int k) {
  SortKey key = db.definition().sort_key(k);
  if (key.field < 0 || key.field >= kFieldSlots) key.field = -1;
  return key;
}

namespace {

int CompareByKeys(const Database& db, const SortKey keys[kSortKeys],
                  std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
  if (a.empty() || b.empty() || keys[0].field < 0) return 0;
  // Enciphered values are no sort keys: such records go after the others, in their order.
  bool a_enciphered = IsRecordEnciphered(a), b_enciphered = IsRecordEnciphered(b);
  if (a_enciphered || b_enciphered) return int{a_enciphered} - int{b_enciphered};
  int r = CompareField(db, a, b, keys[0].field, keys[0].forward);
  if (r != 0 || keys[1].field < 0) return r;
  r = CompareField(db, a, b, keys[1].field, keys[1].forward);
  if (r != 0 || keys[2].field < 0) return r;
  return CompareField(db, a, b, keys[2].field, keys[2].forward);
}

}  // namespace

int CompareRecords(const Database& db, std::uint32_t i, std::uint32_t j) {
  if (i >= db.count() || j >= db.count()) return 0;
  SortKey keys[kSortKeys] = {EffectiveSortKey(db, 0), EffectiveSortKey(db, 1),
                             EffectiveSortKey(db, 2)};
  return CompareByKeys(db, keys, db.records[i].data, db.records[j].data);
}

// Shared with sort.cpp: the comparison with the keys read once per sort.
int CompareRecordData(const Database& db, const SortKey keys[kSortKeys],
                      std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
  return CompareByKeys(db, keys, a, b);
}

bool SortPopups(ConstFieldDefinition field) { return (field.settings()[0] & 0x01) != 0; }

void SetSortPopups(FieldDefinition field, bool on) {
  std::uint8_t& b = field.settings()[0];
  b = static_cast<std::uint8_t>(on ? (b | 0x01) : (b & ~0x01));
}

}  // namespace qv
