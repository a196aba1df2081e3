#pragma once
// The result kind of a Calculated field (field definition byte 43, a small signed number) and
// the decimals its stored result carries: 0 -> 4, 4 -> 3, 5 -> 2, 6 -> 1, any other -> 0.

#include <cstdint>

#include "engine/schema.h"

namespace qv {

inline int CalculatedResultKind(ConstFieldDefinition field) {
  return static_cast<std::int8_t>(field.bytes()[43]);
}

inline int CalculatedDecimals(int kind) {
  switch (kind) {
    case 0: return 4;
    case 4: return 3;
    case 5: return 2;
    case 6: return 1;
    default: return 0;
  }
}

}  // namespace qv
