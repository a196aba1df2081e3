#include "cli/output.h"

#include <algorithm>
#include <ostream>

#include "engine/text.h"
#include "processing/csv_export.h"
#include "security/enciphered.h"

namespace qv::cli {

Table RecordTable(const Database& db, const std::vector<std::uint32_t>& records,
                  const std::vector<int>& slots, const FormatOptions& options, bool with_numbers) {
  Table table;
  if (with_numbers) table.headers.push_back("#");
  for (int slot : slots) table.headers.push_back(Cp1252ToUtf8(db.definition().field(slot).name()));
  for (std::uint32_t number : records) {
    std::vector<std::string> row;
    if (with_numbers) row.push_back(std::to_string(number + 1));
    for (int slot : slots) row.push_back(Cp1252ToUtf8(ShownValueText(db, number, slot, options)));
    table.rows.push_back(std::move(row));
  }
  return table;
}

namespace {

// Display width of UTF-8 text: code points, not bytes.
std::size_t Width(const std::string& s) {
  return static_cast<std::size_t>(std::count_if(
      s.begin(), s.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string OneLine(std::string s) {
  std::replace(s.begin(), s.end(), '\n', ' ');
  std::replace(s.begin(), s.end(), '\r', ' ');
  std::replace(s.begin(), s.end(), '\t', ' ');
  return s;
}

void WriteText(const Table& table, std::ostream& out) {
  std::vector<std::size_t> widths(table.headers.size(), 0);
  for (std::size_t c = 0; c < table.headers.size(); ++c) widths[c] = Width(table.headers[c]);
  for (const auto& row : table.rows)
    for (std::size_t c = 0; c < row.size(); ++c)
      widths[c] = std::min<std::size_t>(std::max(widths[c], Width(OneLine(row[c]))), 40);
  auto write_row = [&](const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t c = 0; c < cells.size(); ++c) {
      std::string cell = OneLine(cells[c]);
      line += cell;
      if (c + 1 < cells.size())
        line += std::string(widths[c] > Width(cell) ? widths[c] - Width(cell) : 0, ' ') + "  ";
    }
    out << line << '\n';
  };
  write_row(table.headers);
  for (const auto& row : table.rows) write_row(row);
}

}  // namespace

void WriteTable(const Table& table, TableFormat format, std::ostream& out) {
  if (format == TableFormat::Text) return WriteText(table, out);
  auto write_row = [&](const std::vector<std::string>& cells) {
    for (std::size_t c = 0; c < cells.size(); ++c) {
      if (format == TableFormat::Tsv)
        out << (c ? "\t" : "") << OneLine(cells[c]);
      else
        out << (c ? "," : "") << CsvQuote(cells[c], false);
    }
    out << '\n';
  };
  write_row(table.headers);
  for (const auto& row : table.rows) write_row(row);
}

}  // namespace qv::cli
