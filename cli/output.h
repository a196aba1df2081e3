#pragma once
// Writing records out as tables: aligned text, TSV and CSV, UTF-8.

#include <iosfwd>
#include <string>
#include <vector>

#include "engine/database.h"

namespace qv::cli {

enum class TableFormat { Text, Tsv, Csv };

struct Table {
  std::vector<std::string> headers;            // UTF-8
  std::vector<std::vector<std::string>> rows;  // UTF-8
};

// The display texts of the given records, one column per given field (slot).
Table RecordTable(const Database& db, const std::vector<std::uint32_t>& records,
                  const std::vector<int>& slots, const FormatOptions& options, bool with_numbers);

void WriteTable(const Table& table, TableFormat format, std::ostream& out);

// RecordTable written out without holding a string per cell: TSV and CSV row by row, aligned
// text from one buffer of all the cells (its widths need every row first).
void WriteRecordTable(const Database& db, const std::vector<std::uint32_t>& records,
                      const std::vector<int>& slots, const FormatOptions& options,
                      bool with_numbers, TableFormat format, std::ostream& out);

}  // namespace qv::cli
