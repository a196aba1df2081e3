#include "cli/output.h"

#include <algorithm>
#include <ostream>
#include <string_view>

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
std::size_t Width(std::string_view s) {
  return static_cast<std::size_t>(std::count_if(
      s.begin(), s.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string OneLine(std::string s) {
  std::replace(s.begin(), s.end(), '\n', ' ');
  std::replace(s.begin(), s.end(), '\r', ' ');
  std::replace(s.begin(), s.end(), '\t', ' ');
  return s;
}

// One line of aligned text: each cell but the last padded to its column's width.
template <typename Cells>
void WriteAligned(const Cells& cells, const std::vector<std::size_t>& widths, std::ostream& out) {
  std::string line;
  for (std::size_t c = 0; c < cells.size(); ++c) {
    std::string_view cell = cells[c];
    line += cell;
    const std::size_t width = Width(cell);
    if (c + 1 < cells.size())
      line += std::string(widths[c] > width ? widths[c] - width : 0, ' ') + "  ";
  }
  out << line << '\n';
}

void WriteDelimited(const std::vector<std::string>& cells, TableFormat format, std::ostream& out) {
  for (std::size_t c = 0; c < cells.size(); ++c) {
    if (format == TableFormat::Tsv)
      out << (c ? "\t" : "") << OneLine(cells[c]);
    else
      out << (c ? "," : "") << CsvQuote(cells[c], false);
  }
  out << '\n';
}

void WriteText(const Table& table, std::ostream& out) {
  std::vector<std::size_t> widths(table.headers.size(), 0);
  for (std::size_t c = 0; c < table.headers.size(); ++c) widths[c] = Width(table.headers[c]);
  for (const auto& row : table.rows)
    for (std::size_t c = 0; c < row.size(); ++c)
      widths[c] = std::min<std::size_t>(std::max(widths[c], Width(OneLine(row[c]))), 40);
  std::vector<std::string> cells;
  auto write_row = [&](const std::vector<std::string>& row) {
    cells.clear();
    for (const std::string& cell : row) cells.push_back(OneLine(cell));
    WriteAligned(cells, widths, out);
  };
  write_row(table.headers);
  for (const auto& row : table.rows) write_row(row);
}

// Calls `row` with the display texts of each record in turn, one vector reused.
template <typename Row>
void ForEachRow(const Database& db, const std::vector<std::uint32_t>& records,
                const std::vector<int>& slots, const FormatOptions& options, bool with_numbers,
                Row row) {
  std::vector<std::string> cells;
  for (std::uint32_t number : records) {
    cells.clear();
    if (with_numbers) cells.push_back(std::to_string(number + 1));
    for (int slot : slots) cells.push_back(Cp1252ToUtf8(ShownValueText(db, number, slot, options)));
    row(cells);
  }
}

}  // namespace

void WriteRecordTable(const Database& db, const std::vector<std::uint32_t>& records,
                      const std::vector<int>& slots, const FormatOptions& options,
                      bool with_numbers, TableFormat format, std::ostream& out) {
  Table heads = RecordTable(db, {}, slots, options, with_numbers);
  if (format != TableFormat::Text) {
    WriteDelimited(heads.headers, format, out);
    ForEachRow(db, records, slots, options, with_numbers,
               [&](const std::vector<std::string>& cells) { WriteDelimited(cells, format, out); });
    return;
  }
  // The widths need every row first: the cells are kept in one buffer, not a string each, each
  // ended by a tab (which OneLine has taken out of every cell).
  std::vector<std::size_t> widths(heads.headers.size(), 0);
  for (std::size_t c = 0; c < widths.size(); ++c) widths[c] = Width(heads.headers[c]);
  std::string text;
  std::size_t rows = 0;
  ForEachRow(db, records, slots, options, with_numbers, [&](const std::vector<std::string>& cells) {
    if (++rows == 1024)  // sized once from the first rows, not doubled as it grows
      text.reserve(text.size() / 1023 * records.size() * 9 / 8);
    for (std::size_t c = 0; c < cells.size(); ++c) {
      std::string cell = OneLine(cells[c]);
      widths[c] = std::min<std::size_t>(std::max(widths[c], Width(cell)), 40);
      text += cell;
      text += '\t';
    }
  });
  WriteAligned(heads.headers, widths, out);
  if (widths.empty()) {  // no columns: an empty line a record, as a table of them shows
    for (std::size_t i = 0; i < records.size(); ++i) out << '\n';
    return;
  }
  std::vector<std::string_view> row(widths.size());
  const std::string_view all(text);
  for (std::size_t start = 0; start < all.size();) {
    for (std::size_t c = 0; c < row.size(); ++c) {
      std::size_t end = all.find('\t', start);
      row[c] = all.substr(start, end - start);
      start = end + 1;
    }
    WriteAligned(row, widths, out);
  }
}

void WriteTable(const Table& table, TableFormat format, std::ostream& out) {
  if (format == TableFormat::Text) return WriteText(table, out);
  WriteDelimited(table.headers, format, out);
  for (const auto& row : table.rows) WriteDelimited(row, format, out);
}

}  // namespace qv::cli
