#pragma once
// Reading comma-separated text into a database: each cell parsed as typed entry parses it, the
// records appended in sort order, and every refused row reported with its line and reason while
// the others are imported.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "processing/csv_reader.h"
#include "processing/text_encoding.h"
#include "processing/text_report.h"

namespace qv {

enum class CsvHeader {
  Auto,     // the first line is a header when a cell in it names a field or reads NAME:TYPE
  Present,  // the first line names the fields
  Absent,   // columns follow the used fields in display order
};

struct CsvImportOptions {
  char separator = ',';  // the program-wide separator (Preferences::csv_separator)
  CsvHeader header = CsvHeader::Auto;
  TextEncoding encoding = TextEncoding::Utf8;
};

struct ImportProblem {
  std::size_t line = 0;  // from 1
  std::string reason;    // as stored (Windows-1252)
};

struct ImportResult {
  // False when nothing could be imported at all (unreadable file, unknown column); `error`
  // says why. Refused rows alone leave it true.
  bool ok = false;
  std::string error;
  std::uint32_t imported = 0;
  std::vector<ImportProblem> problems;
  TextReport text;                 // values stored other than as the file gave them
  std::vector<std::string> notes;  // what was decided for the user (as stored)
};

// How the columns of a file meet the fields: one slot per column, -1 for a column whose cells
// are not imported (Image, Heading, computed and linked fields, or an empty header cell).
struct ColumnMap {
  std::vector<int> fields;
  bool header = false;  // the first row was a header
};

// Maps the columns from the file's first row (nullptr for an empty file); false (with the
// reason) when the header names fields the database lacks (all of them listed, with the
// database's own) or a field twice. A header maps by name, never by position.
bool MapColumns(const Database& db, const CsvRow* first, CsvHeader header, TextEncoding encoding,
                ColumnMap& map, std::string& error);

// Imports rows already read (blank lines before the first one skipped); the columns mapped by
// MapColumns.
ImportResult ImportCsvRows(Database& db, const std::vector<CsvRow>& rows, const ColumnMap& map,
                           const CsvImportOptions& import_options, const FormatOptions& options,
                           Prompter& prompter);

ImportResult ImportCsvText(Database& db, std::string_view text,
                           const CsvImportOptions& import_options, const FormatOptions& options,
                           Prompter& prompter);
// The rows after the text's header line (the first that is not blank), column c into the field
// in slot c: for a database just made from the same text.
ImportResult ImportCsvTextByPosition(Database& db, std::string_view text,
                                     const CsvImportOptions& import_options,
                                     const FormatOptions& options, Prompter& prompter);
ImportResult ImportCsvFile(Database& db, const std::string& path,
                           const CsvImportOptions& import_options, const FormatOptions& options,
                           Prompter& prompter);

// The header cell's field name: "Qty" of "Qty" and of "Qty:Integer[:LENGTH]".
std::string_view HeaderName(std::string_view cell);
// A header cell without the blanks around it ("Name, Qty" names Qty).
std::string_view TrimBlanks(std::string_view cell);

}  // namespace qv
