#pragma once
// The record editor's controls for Link, Relationship and Linked fields: a Link shows the
// records it stands for with a button that opens them; a Linked field shows its parent record
// with a button that reassigns it.

#include "app/field_controls.h"

namespace qv::app {

FieldControl* CreateLinkControl(const Database& db, int slot, const FormatOptions& options,
                                QWidget* parent);

}  // namespace qv::app
