#pragma once
// The record editor's controls for Link, Relationship and Linked fields: a Link shows the
// records it stands for with a button that opens them; a Linked field shows its parent record
// with a button that reassigns it.

#include "app/field_controls.h"

namespace qv::app {

FieldControl* CreateLinkControl(const Database& db, int slot, const FormatOptions& options,
                                QWidget* parent);

// A DB Popup: the values of the other database's field to choose from, or any text typed.
// Choosing one says linkRequested, so the paired DB Popup fields can be filled from the same
// record.
FieldControl* CreateDbPopupControl(const Database& db, int slot, const FormatOptions& options,
                                   QWidget* parent);
// The record of the other database chosen last in a DB Popup control; nothing for others.
std::optional<std::uint32_t> PickedRecord(const FieldControl* control);

}  // namespace qv::app
