#pragma once
// External fields: the plug-in library an External field names is loaded at run time and
// handed the whole record (record-time events) or the field's plug-in settings (configuration).
// The parameter blocks are the ones include/quorvant/external.h gives plug-in authors.

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/database.h"
#include "engine/field_settings.h"
#include "engine/record.h"
#include "platform/prompter.h"

namespace qv {

inline constexpr int kInitExternal = 32001;    // the record editor sets up a record
inline constexpr int kSaveExternal = 32002;    // the record editor stores a record
inline constexpr int kSelectExternal = 32003;  // the user activates the External field

// Where plug-in libraries are looked for: `data_folder`/plugins/lib<name>.so, then the system's
// library path.
struct PluginPlaces {
  std::string data_folder;
};

// Whether `name` may name a plug-in: not empty, no path separator, fits the definition.
bool ValidPluginName(std::string_view name);

// Runs the entry point of `event` of field `field`'s plug-in on `record`: 1 when the plug-in
// accepted and said it changed the values (they are written back into `record`), else 0. A
// missing library, entry point or unknown event is silently a no-op. The library stays loaded.
// `position` is passed through to the plug-in (the record's number, kNewRecord for a new one).
int CallExternal(const PluginPlaces& places, int field, int event, const Database& db,
                 std::uint16_t position, RecordValues& record);

// Runs `event` for every External field of `db` in slot order, as the record editor does when
// it sets up and stores a record; true when any plug-in changed the values.
bool CallExternalFields(const PluginPlaces& places, int event, const Database& db,
                        std::uint16_t position, RecordValues& record);

// Lets plug-in `name` edit the settings of field `field`: 1 when the library could be loaded
// (`settings` then hold what CONFIGEXTERNAL accepted, or are unchanged), 0 after telling the
// user it could not. The library is unloaded again.
int ConfigureExternal(const PluginPlaces& places, int field, std::string_view name,
                      const Database& db, PluginSettings& settings, Prompter& prompter);

}  // namespace qv
