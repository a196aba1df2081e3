#pragma once
// Drop-down lists of a database's fields, in display order, each entry carrying its slot.

#include <QComboBox>
#include <QString>
#include <functional>

#include "engine/schema.h"

namespace qv::app {

// A field's name as the screens show it.
QString FieldName(const DatabaseDefinition& definition, int slot);
// Adds the used fields that `wanted` accepts (all used fields without it), in display order.
void AddFieldItems(QComboBox* box, const DatabaseDefinition& definition,
                   const std::function<bool(int slot)>& wanted = {});
// Selects the entry of `slot`, or the first entry when it is not listed.
void SelectSlot(QComboBox* box, int slot);
// The slot of the chosen entry; -1 for an entry without one ("No Field", "Search All Fields").
int ChosenSlot(const QComboBox* box);

}  // namespace qv::app
