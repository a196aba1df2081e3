#include "processing/csv_reader.h"

namespace qv {

void CsvReader::ReadQuoted(CsvRow& row, std::string& cell) {
  ++pos_;  // the opening quote
  while (true) {
    std::size_t quote = text_.find('"', pos_);
    if (quote == std::string_view::npos) {
      std::string_view rest = text_.substr(pos_);
      for (char c : rest) line_ += c == '\n';
      cell.append(rest);
      pos_ = text_.size();
      row.problem = "a quoted value is not closed before the end of the file";
      return;
    }
    std::string_view part = text_.substr(pos_, quote - pos_);
    for (char c : part) line_ += c == '\n';
    cell.append(part);
    pos_ = quote + 1;
    if (pos_ < text_.size() && text_[pos_] == '"') {
      cell += '"';
      ++pos_;
      continue;
    }
    return;
  }
}

bool CsvReader::Next(CsvRow& row) {
  row.cells.clear();
  row.problem.clear();
  if (pos_ >= text_.size()) return false;
  row.line = line_;
  std::string cell;
  while (true) {
    if (pos_ < text_.size() && text_[pos_] == '"') {
      ReadQuoted(row, cell);
      // Anything between the closing quote and the separator is kept but reported.
      std::size_t end = pos_;
      while (end < text_.size() && text_[end] != separator_ && text_[end] != '\n' &&
             !(text_[end] == '\r' && (end + 1 == text_.size() || text_[end + 1] == '\n')))
        ++end;
      if (end > pos_ && row.problem.empty())
        row.problem = "text follows the closing quote of value " + std::to_string(row.cells.size() + 1);
      cell.append(text_.substr(pos_, end - pos_));
      pos_ = end;
    } else {
      std::size_t end = pos_;
      while (end < text_.size() && text_[end] != separator_ && text_[end] != '\n') ++end;
      std::size_t stop = end;
      if (stop > pos_ && text_[stop - 1] == '\r' &&
          (stop == text_.size() || text_[stop] == '\n'))
        --stop;  // the CR of a CR LF line end
      cell.append(text_.substr(pos_, stop - pos_));
      pos_ = end;
    }
    row.cells.push_back(std::move(cell));
    cell.clear();
    if (pos_ >= text_.size()) return true;
    char c = text_[pos_];
    if (c == separator_) {
      ++pos_;
      if (pos_ >= text_.size()) {  // a separator at the very end opens one last empty cell
        row.cells.emplace_back();
        return true;
      }
      continue;
    }
    if (c == '\r') ++pos_;
    if (pos_ < text_.size() && text_[pos_] == '\n') {
      ++pos_;
      ++line_;
    }
    return true;
  }
}

std::vector<CsvRow> ReadCsv(std::string_view text, char separator) {
  std::vector<CsvRow> rows;
  CsvReader reader(text, separator);
  CsvRow row;
  while (reader.Next(row)) rows.push_back(row);
  return rows;
}

}  // namespace qv
