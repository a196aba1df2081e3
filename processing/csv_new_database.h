#pragma once
// A new database made from a CSV file: the header line names the fields (NAME, or
// NAME:TYPE[:LENGTH] to fix a type), the types of the others are guessed from the data, and the
// rows are imported.

#include <memory>
#include <string>
#include <string_view>

#include "engine/database.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "processing/csv_import.h"

namespace qv {

// The type a column's cells suggest: Integer, Float, Date, Time or Check-Box when every
// non-empty cell reads as one (numbers with leading zeros stay text), else Text, or Note for
// cells longer than 255 characters. Cells as stored (Windows-1252).
FieldType GuessFieldType(const std::vector<std::string_view>& cells, const FormatOptions& options);

// Builds the database named `name` from the CSV text and imports its rows. Names longer than 19
// characters are shortened and names given twice made unique; result.notes says so, and which
// types were guessed (a column with empty cells gets a type that can hold them). Nothing (with
// result.error set) when the header cannot make fields: no header, more than 100 columns, an
// unknown type or a bad length.
std::unique_ptr<Database> NewDatabaseFromCsv(std::string_view name, std::string_view text,
                                             const CsvImportOptions& import_options,
                                             const FormatOptions& options, const Clock& clock,
                                             Prompter& prompter, ImportResult& result);

}  // namespace qv
