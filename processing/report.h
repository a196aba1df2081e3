#pragma once
// Reports: count, minimum, maximum, sum, average and running totals of one field over the
// records that pass the filter, as the text the report window shows.

#include <optional>
#include <string>
#include <string_view>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"

namespace qv {

enum class ReportKind { None, Integer, Float, Check, Date, Time };

// The report a field gets. Calculated fields by result kind: 1 integer, 2 time, 3 date,
// 0 and 4 to 6 float; other kinds, like other field types, get none.
ReportKind ReportKindOf(ConstFieldDefinition field);
// The decimals of a float report: the Float field's own (4 when it keeps values as typed), or
// those of the Calculated result kind.
int ReportDecimals(ConstFieldDefinition field);

// The report text, lines ending in "\r\n". A slot below 0 (no field chosen) or a field without
// a report kind is refused with the system's message; nothing is returned then.
std::optional<std::string> RunReport(const Database& db, int slot, const FormatOptions& options,
                                     Prompter& prompter);

// Saves a report: each line of the text followed by a line feed. False when it cannot be written.
bool SaveReportText(std::string_view text, const std::string& path);

}  // namespace qv
