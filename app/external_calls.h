#pragma once
// The application's calls into External field plug-ins: the record editor's record-time events
// and the External field's control (its value shown, a button that activates the plug-in).

#include "app/field_controls.h"
#include "exchange/external.h"

namespace qv::app {

// Plug-ins are looked for in the data folder the program uses.
PluginPlaces AppPluginPlaces();

// Runs `event` for every External field of `db` in slot order on the values of record `number`
// (kNewRecord for a new one); true when any plug-in changed them.
bool RunExternalFields(const Database& db, int event, std::uint32_t number, RecordValues& values);

// The record editor's control of an External field.
FieldControl* NewExternalControl(const Database& db, int slot, QWidget* parent);

}  // namespace qv::app
