#pragma once
// One record as plain text, the layout printing and the text export share: a line
// "<indent><name>: <value>" per used, shown field in display order, then 40 hyphens.

#include <cstdint>
#include <functional>
#include <string>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "processing/text_encoding.h"

namespace qv {

// Writes what a Link field stands for (the linked database's records, one level deeper).
// Printing supplies it; without one a Link field writes nothing.
using LinkedRecordsWriter = std::function<void(const Database& db, std::uint32_t number, int slot,
                                               int level, std::string& out)>;

// Whether a field is marked to be shown (field definition byte 5, 1 in a new field).
bool FieldShown(ConstFieldDefinition field);

// Appends record `number` at nesting `level` (three blanks of indent per level). The text is
// as stored (Windows-1252).
void WriteRecordText(const Database& db, std::uint32_t number, int level,
                     const FormatOptions& options, std::string& out,
                     const LinkedRecordsWriter& linked = {});

// The "Text Files" export: every record that passes the filter (all_filtered) or only the
// current record, then "File Exported OK", or "ERROR: Unable to open file for writing.".
// Nothing happens when no database is loaded. True when the file was written.
bool ExportRecordsAsText(const Database& db, bool all_filtered, const std::string& path,
                         const FormatOptions& options, Prompter& prompter,
                         TextEncoding encoding = TextEncoding::Utf8,
                         const LinkedRecordsWriter& linked = {});

}  // namespace qv
