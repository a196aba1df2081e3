#include "processing/csv_reader.h"

namespace qv {

namespace {
// Line breaks in quoted text, each of LF, CR LF and a lone CR counting once.
std::size_t LineBreaks(std::string_view text) {
  std::size_t n = 0;
  for (std::size_t i = 0; i < text.size(); ++i)
    n += text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
  return n;
}
}  // namespace

void CsvReader::ReadQuoted(CsvRow& row, std::string& cell) {
  ++pos_;  // the opening quote
  while (true) {
    std::size_t quote = text_.find('"', pos_);
    if (quote == std::string_view::npos) {
      std::string_view rest = text_.substr(pos_);
      line_ += LineBreaks(rest);
      cell.append(rest);
      pos_ = text_.size();
      row.problem = "a quoted value is not closed before the end of the file";
      return;
    }
    std::string_view part = text_.substr(pos_, quote - pos_);
    line_ += LineBreaks(part);
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
  row.problem.clear();
  if (pos_ >= text_.size()) {
    row.cells.clear();
    return false;
  }
  row.line = line_;
  // The row's cell strings are reused from one row to the next, so reading a large file does
  // not allocate for every cell.
  std::size_t count = 0;
  auto next_cell = [&row, &count]() -> std::string& {
    if (count == row.cells.size()) row.cells.emplace_back();
    std::string& cell = row.cells[count++];
    cell.clear();
    return cell;
  };
  while (true) {
    std::string& cell = next_cell();
    if (text_[pos_] == '"') {
      ReadQuoted(row, cell);
      // Anything between the closing quote and the separator is kept but reported.
      std::size_t end = pos_;
      while (end < text_.size() && text_[end] != separator_ && text_[end] != '\n' &&
             text_[end] != '\r')
        ++end;
      if (end > pos_ && row.problem.empty())
        row.problem = "text follows the closing quote of value " + std::to_string(count);
      cell.append(text_.substr(pos_, end - pos_));
      pos_ = end;
    } else {
      std::size_t end = pos_;
      while (end < text_.size() && text_[end] != separator_ && text_[end] != '\n' &&
             text_[end] != '\r')
        ++end;
      cell.append(text_.substr(pos_, end - pos_));
      pos_ = end;
    }
    if (pos_ < text_.size() && text_[pos_] == separator_) {
      ++pos_;
      if (pos_ < text_.size()) continue;
      next_cell();  // a separator at the very end opens one last empty cell
      break;
    }
    // A line ends with LF, CR LF or CR.
    const std::size_t before = pos_;
    if (pos_ < text_.size() && text_[pos_] == '\r') ++pos_;
    if (pos_ < text_.size() && text_[pos_] == '\n') ++pos_;
    line_ += pos_ > before;
    break;
  }
  row.cells.resize(count);
  return true;
}

std::vector<CsvRow> ReadCsv(std::string_view text, char separator) {
  std::vector<CsvRow> rows;
  CsvReader reader(text, separator);
  CsvRow row;
  while (reader.Next(row)) rows.push_back(row);
  return rows;
}

}  // namespace qv
