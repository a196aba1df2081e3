#pragma once
// The records as JSON for scripts: an array of objects (or JSON Lines, one object a line), one
// per record, keyed by field name. Typed by default: numbers as numbers, check boxes as
// true/false, empty values as null, dates and times as ISO 8601 texts; or the display texts.
// Always UTF-8.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "platform/locale.h"

namespace qv {

// A JSON string literal of UTF-8 text.
std::string JsonQuote(std::string_view utf8);

struct JsonOptions {
  bool typed = true;   // false: every value its display text, as a string
  bool lines = false;  // JSON Lines instead of one array
};

// One value as JSON: Integer, Unique, Float and numeric Calculated values as numbers (a
// Calculated time a duration "H:MM:SS", a Calculated date like a Date), Check-Box true/false,
// Date "YYYY-MM-DD", Time "HH:MM:SS", texts as strings; null for an empty text, "NO DATE",
// "No Time", and fields that show nothing.
std::string TypedJsonValue(const Database& db, std::uint32_t number, int slot,
                           const FormatOptions& options);

// The records given, in that order, with the given fields (slots) in that order.
std::string RecordsAsJson(const Database& db, const std::vector<std::uint32_t>& records,
                          const std::vector<int>& slots, const JsonOptions& json,
                          const FormatOptions& options);

// The application's JSON export: the records that pass the filter (or every record), typed, in
// display order, written beside `path` and renamed over it. False when it could not be written.
bool ExportJson(const Database& db, bool filtered_only, const std::string& path,
                const FormatOptions& options);

}  // namespace qv
