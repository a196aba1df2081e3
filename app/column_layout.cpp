#include "app/column_layout.h"

namespace qv::app {

bool IsListType(unsigned type) {
  switch (type) {
    case kNotUsed:
    case kImage:
    case kLink:
    case kHeading:
    case kExternal: return false;
    default: return type < kFieldTypeCount;
  }
}

std::vector<ListColumn> ListColumns(const DatabaseDefinition& definition) {
  std::vector<ListColumn> columns;
  bool seen[kFieldSlots] = {};
  for (int position = 0; position < kFieldSlots; ++position) {
    int slot = definition.display_slot(position);
    // A damaged order table must not show a field twice or index past the slots.
    if (slot >= kFieldSlots || seen[slot]) continue;
    seen[slot] = true;
    ConstFieldDefinition field = definition.field(slot);
    if (IsListType(field.type()) && field.width() != 0) columns.push_back({slot, field.width()});
  }
  return columns;
}

void StoreDraggedWidth(DatabaseDefinition& definition, int slot, int pixels) {
  if (slot < 0 || slot >= kFieldSlots) return;
  definition.field(slot).set_width(StoredWidth(pixels));
}

void HideField(DatabaseDefinition& definition, int slot) {
  if (slot < 0 || slot >= kFieldSlots) return;
  definition.field(slot).set_width(0);
}

}  // namespace qv::app
