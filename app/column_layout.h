#pragma once
// Which fields are columns of the record list, in which order and how wide.

#include <vector>

#include "engine/schema.h"

namespace qv::app {

struct ListColumn {
  int slot = 0;
  unsigned stored_width = 0;
};

// A stored width w shows as w x 1.5 pixels; a dragged pixel width p is stored as p x 2/3, both
// truncated: a round trip may lose a pixel, on purpose.
inline int ShownWidth(unsigned stored) { return static_cast<int>(stored * 3 / 2); }
inline unsigned StoredWidth(int pixels) { return pixels > 0 ? static_cast<unsigned>(pixels) * 2 / 3 : 0; }

// Whether a field of this type can be a column at all.
bool IsListType(unsigned type);
// The visible fields in display order: a list type with a nonzero stored width.
std::vector<ListColumn> ListColumns(const DatabaseDefinition& definition);
// Stores a dragged width for the field of `slot` and marks nothing else.
void StoreDraggedWidth(DatabaseDefinition& definition, int slot, int pixels);
// "Hide Field": the stored width becomes 0.
void HideField(DatabaseDefinition& definition, int slot);

}  // namespace qv::app
