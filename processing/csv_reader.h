#pragma once
// Reading comma-separated text: quoted cells may hold the separator, doubled quotes and line
// breaks; lines end with LF, CR LF or CR; a UTF-8 byte-order mark at the start is skipped.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

struct CsvRow {
  std::size_t line = 0;  // the line (from 1) on which the row starts
  std::vector<std::string> cells;
  // Set when the row ends inside an open quote (the file ended first) or a quoted cell has
  // text after its closing quote.
  std::string problem;
};

class CsvReader {
 public:
  CsvReader(std::string_view text, char separator) : text_(text), separator_(separator) {
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") pos_ = 3;
  }
  // Reads the next row; false at the end of the text. A blank line is a row of one empty cell
  // (a one-column file may hold empty values); the line end after the last row opens none.
  bool Next(CsvRow& row);

 private:
  void ReadQuoted(CsvRow& row, std::string& cell);
  std::string_view text_;
  char separator_;
  std::size_t pos_ = 0;
  std::size_t line_ = 1;
};

// Every row of a text at once.
std::vector<CsvRow> ReadCsv(std::string_view text, char separator);

}  // namespace qv
