#pragma once
// The records as JSON for scripts: an array of objects, one per record, keyed by field name,
// holding the display texts. Always UTF-8.

#include <string>
#include <string_view>

#include "engine/database.h"
#include "platform/locale.h"

namespace qv {

// A JSON string literal of UTF-8 text.
std::string JsonQuote(std::string_view utf8);

// The whole document; `filtered_only` keeps the records that pass the filter.
std::string RecordsAsJson(const Database& db, bool filtered_only, const FormatOptions& options);

// Writes RecordsAsJson to `path`; false when the file could not be written.
bool ExportJson(const Database& db, bool filtered_only, const std::string& path,
                const FormatOptions& options);

}  // namespace qv
