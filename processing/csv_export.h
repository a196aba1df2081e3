#pragma once
// Writing a database's records as comma-separated text: one line per record, one column per
// used field, values as the user sees them.

#include <string>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "processing/text_encoding.h"

namespace qv {

// The quoting rule: an empty text gives nothing (or "" when forced); otherwise double quotes
// are doubled, and the text is put between quotes when forced or when it holds a quote, the
// separator, a carriage return or a line feed.
std::string CsvQuote(std::string_view source, bool force, char separator = ',');
// The same, appended to `out`.
void AppendCsvQuoted(std::string& out, std::string_view source, bool force, char separator);

struct CsvExportOptions {
  bool quote_all_values = false;
  bool header = false;
  bool filtered_only = false;
  bool slot_order = false;       // columns in slot order 0..99 instead of the display order
  char separator = ',';          // the program-wide separator (Preferences::csv_separator)
  bool quote_all_names = false;  // the program-wide quote-all setting, for the header
  TextEncoding encoding = TextEncoding::Utf8;
  // Header cells NAME:TYPE:LENGTH (a Pop-Up's items after another colon, "|" between them) for
  // the types a database made from CSV can take again; the plain name for the others.
  bool typed_header = false;
};

// The header cell of one field under these options.
std::string CsvHeaderCell(const Database& db, int slot, const CsvExportOptions& export_options);

// Appends the header (when asked for) and the lines of the records given, in that order;
// 1 when every record and value could be read, else 0.
int WriteCsv(const Database& db, const CsvExportOptions& export_options,
             const std::vector<std::uint32_t>& records, const FormatOptions& options,
             Prompter& prompter, std::string& out);

// Writes the file; 1 when every record was written, 0 when the file could not be opened or
// any record or value could not be read (the rest is written all the same).
int ExportCsv(const Database& db, const CsvExportOptions& export_options, const std::string& path,
              const FormatOptions& options, Prompter& prompter);

}  // namespace qv
