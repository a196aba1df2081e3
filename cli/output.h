#pragma once
// Writing records out: aligned text, TSV and JSON, UTF-8 on standard output.

#include <iosfwd>
#include <string>
#include <vector>

#include "engine/database.h"

namespace qv::cli {

enum class TableFormat { Text, Tsv, Json };

struct Table {
  std::vector<std::string> headers;             // UTF-8
  std::vector<std::vector<std::string>> rows;   // UTF-8
};

// The display texts of the given records, one column per used field in display order.
Table RecordTable(const Database& db, const std::vector<std::uint32_t>& records,
                  const FormatOptions& options, bool with_numbers);

void WriteTable(const Table& table, TableFormat format, std::ostream& out);
std::string JsonString(const std::string& utf8);

}  // namespace qv::cli
