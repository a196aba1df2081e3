#include "processing/csv_new_database.h"

#include <algorithm>
#include <array>

#include "engine/format.h"
#include "engine/text.h"

namespace qv {

namespace {

constexpr std::size_t kLongestText = 255;  // longer cells make a Note
constexpr unsigned kDefaultLength = 40;
constexpr unsigned kLongestLength = 2000;
constexpr std::size_t kLongestName = 19;

// What a column's cells allow, learnt one cell at a time so a file is read in one pass: the
// types every cell so far reads as, the longest cell and the most decimals.
class ColumnGuess {
 public:
  explicit ColumnGuess(const FormatOptions& options) : options_(options) {}

  void Add(std::string_view cell) {
    for (std::size_t i = 0; i < kCandidates.size(); ++i) {
      if (possible_[i] && !Parses(cell, kCandidates[i])) possible_[i] = false;
      // A cell that reads as an Integer reads as a Float as well: no need to try.
      if (i == 0 && possible_[0]) ++i;
    }
    if (check_words_) check_words_ = IsCheckWord(cell);
    longest_ = std::max(longest_, cell.size());
    decimals_ = std::max(decimals_, DecimalsOf(cell, options_.decimal_comma));
    ++count_;
  }

  FieldType Type() const {
    if (count_ == 0) return kText;
    for (std::size_t i = 0; i < kCandidates.size(); ++i)
      if (possible_[i]) return kCandidates[i];
    if (check_words_) return kCheckBox;
    return longest_ > kLongestText ? kNote : kText;
  }
  std::size_t longest() const { return longest_; }
  int decimals() const { return std::min(decimals_, 10); }

 private:
  static constexpr std::array<FieldType, 4> kCandidates = {kInteger, kFloat, kDate, kTime};

  // Whether the cell parses as a value of `type` under the user's formats.
  bool Parses(std::string_view cell, FieldType type) {
    // A lone number reads as a time of whole hours; only a written separator makes a time.
    const char time_separator = options_.time_code == 4 || options_.time_code == 5 ? '.'
                                : options_.time_code == 8                          ? ','
                                                                                   : ':';
    if (type == kTime && cell.find(time_separator) == std::string_view::npos) return false;
    FieldDefinition scratch(bytes_.data());
    scratch.set_type(type);
    scratch.set_length(kLongestLength);
    if (!ParseValueInto(scratch, no_items_, cell, options_, value_)) return false;
    if (type == kInteger || type == kFloat) {
      // Numbers written with leading zeros (codes, postcodes) would lose them as numbers.
      std::size_t sign = cell.find_first_not_of("+- ");
      std::string_view digits = cell.substr(sign == std::string_view::npos ? 0 : sign);
      if (digits.size() > 1 && digits[0] == '0' && digits[1] != '.' && digits[1] != ',')
        return false;
    }
    return true;
  }

  static bool IsCheckWord(std::string_view cell) {
    for (std::string_view word : {"yes", "no", "true", "false", "x"})
      if (EqualsNoCase(cell, word)) return true;
    return false;
  }

  // The decimals a cell carries, so values keep the digits they were written with.
  static int DecimalsOf(std::string_view cell, bool decimal_comma) {
    std::size_t point = cell.find(decimal_comma ? ',' : '.');
    if (point == std::string_view::npos) return 0;
    std::size_t end = cell.find_first_not_of("0123456789", point + 1);
    if (end == std::string_view::npos) end = cell.size();
    return static_cast<int>(end - point - 1);
  }

  const FormatOptions& options_;
  std::array<std::uint8_t, kFieldDefinitionSize> bytes_{};
  const FieldRecord no_items_;
  Bytes value_;  // reused from cell to cell
  std::array<bool, kCandidates.size()> possible_{true, true, true, true};
  bool check_words_ = true;
  std::size_t longest_ = 0;
  int decimals_ = 0;
  std::size_t count_ = 0;
};

struct ColumnSpec {
  std::string name;
  std::optional<FieldType> type;
  std::optional<unsigned> length;
  std::vector<std::string> items;  // a Pop-Up's list: NAME:Pop-Up:LENGTH:ITEM|ITEM...
};

bool ParseHeaderCell(std::string_view cell, std::size_t column, ColumnSpec& spec,
                     std::string& error) {
  std::string_view name = HeaderName(cell);
  spec.name = std::string(name.empty() ? StringPrintf("Field %zu", column + 1) : name);
  if (name.size() == cell.size()) return true;
  std::string_view rest = cell.substr(name.size() + 1);
  std::size_t colon = rest.find(':');
  spec.type = FieldTypeByName(rest.substr(0, colon));
  if (*spec.type == kNotUsed) {
    error = StringPrintf("the field '%s' cannot be of type Not-Used", spec.name.c_str());
    return false;
  }
  if (colon != std::string_view::npos) {
    std::string_view after = rest.substr(colon + 1);
    std::size_t items_at = *spec.type == kPopUp ? after.find(':') : std::string_view::npos;
    if (items_at != std::string_view::npos) {
      for (std::string_view list = after.substr(items_at + 1); !list.empty();) {
        std::size_t bar = list.find('|');
        spec.items.emplace_back(list.substr(0, bar));
        list = bar == std::string_view::npos ? std::string_view() : list.substr(bar + 1);
      }
      after = after.substr(0, items_at);
    }
    std::string digits(after);
    char* end = nullptr;
    unsigned long n = std::strtoul(digits.c_str(), &end, 10);
    if (digits.empty() || *end != '\0' || n == 0 || n > kLongestLength) {
      error = StringPrintf("the length of '%s' must be 1 to %u, not '%s'", spec.name.c_str(),
                           kLongestLength, digits.c_str());
      return false;
    }
    spec.length = static_cast<unsigned>(n);
  }
  return true;
}

// A name the database does not have yet, at most 19 characters: "Field" again becomes
// "Field~2", a long name loses its end.
std::string UniqueName(const DatabaseDefinition& d, const std::string& wanted) {
  auto cut = [&wanted](std::size_t size) {
    std::string part = wanted.substr(0, size);
    part.erase(part.find_last_not_of(' ') + 1);
    return part;
  };
  std::string name = cut(kLongestName);
  for (int n = 2; d.FindField(name); ++n) {
    std::string suffix = "~" + std::to_string(n);
    name = cut(kLongestName - suffix.size()) + suffix;
  }
  return name;
}

// The guessed type, made one that can hold an empty cell when the column has any: an empty
// cell must not become a number or an unticked box.
FieldType GuessWithEmpties(const ColumnGuess& cells, bool empties, std::string& note) {
  FieldType guess = cells.Type();
  FieldType type = guess;
  if (empties && guess == kInteger) type = kFloat;
  if (empties && guess == kCheckBox) type = kText;
  note = std::string(FieldTypeName(type)) + " (guessed";
  if (type != guess)
    note += "; " + std::string(FieldTypeName(guess)) + " cannot hold its empty cells";
  note += ")";
  return type;
}

void DefineField(FieldDefinition field, const ColumnSpec& spec, const ColumnGuess& guess,
                 bool empties, std::string& note) {
  FieldType type = spec.type ? *spec.type : GuessWithEmpties(guess, empties, note);
  field.set_type(type);
  field.set_name(spec.name);
  unsigned length = static_cast<unsigned>(
      std::clamp<std::size_t>(guess.longest(), kDefaultLength, kLongestLength));
  field.set_length(spec.length ? *spec.length : length);
  if (type == kFloat) field.settings()[0] = static_cast<std::uint8_t>(guess.decimals());
  // A list column wide enough for the name and typical values (about 7 pixels a character,
  // stored as two thirds of the pixels), never narrower than the default.
  std::size_t shown = std::max(spec.name.size(), std::min<std::size_t>(guess.longest(), 28));
  field.set_width(static_cast<unsigned>(std::max<std::size_t>(58, (shown * 7 + 12) * 2 / 3)));
}

}  // namespace

FieldType GuessFieldType(const std::vector<std::string_view>& cells, const FormatOptions& options) {
  ColumnGuess guess(options);
  for (std::string_view cell : cells) guess.Add(cell);
  return guess.Type();
}

std::unique_ptr<Database> NewDatabaseFromCsv(std::string_view name, std::string_view text,
                                             const CsvImportOptions& import_options,
                                             const FormatOptions& options, const Clock& clock,
                                             Prompter& prompter, ImportResult& result) {
  result = ImportResult{};
  // Two passes over the text, one row in memory at a time: the first learns the fields' types
  // from the cells, the second imports the rows.
  CsvReader reader(text, import_options.separator);
  CsvRow row;
  bool any = reader.Next(row);
  while (any && row.cells.size() == 1 && row.cells[0].empty()) any = reader.Next(row);
  if (!any || row.cells.empty()) {  // nothing but blank lines before it
    result.error = "the file has no header line naming the fields";
    return nullptr;
  }
  const std::vector<std::string> header = row.cells;
  if (header.size() > static_cast<std::size_t>(kFieldSlots)) {
    result.error = StringPrintf("the file has %zu columns; a database holds at most 100 fields",
                                header.size());
    return nullptr;
  }
  std::vector<ColumnGuess> guesses(header.size(), ColumnGuess(options));
  std::vector<bool> empties(header.size(), false);
  std::string converted;
  while (reader.Next(row)) {
    const bool blank = row.cells.size() == 1 && row.cells[0].empty() && header.size() > 1;
    if (!row.problem.empty() || blank) continue;
    for (std::size_t c = 0; c < header.size(); ++c) {
      if (c >= row.cells.size() || row.cells[c].empty()) {
        empties[c] = true;
        continue;
      }
      std::string_view cell = row.cells[c];
      if (import_options.encoding == TextEncoding::Utf8 && !IsAscii(cell)) {
        converted = DecodeFromFile(cell, import_options.encoding);
        cell = converted;
      }
      guesses[c].Add(cell);
    }
  }
  auto db = NewDatabase(name, clock);
  for (std::size_t c = 0; c < header.size(); ++c) {
    ColumnSpec spec;
    std::string cell =
        result.text.Store(header[c], import_options.encoding, {nullptr, 0, "field name"});
    if (!ParseHeaderCell(TrimBlanks(cell), c, spec, result.error)) return nullptr;
    std::string wanted = spec.name;
    spec.name = UniqueName(db->definition(), wanted);
    if (spec.name != wanted)
      result.notes.push_back(
          StringPrintf("the column '%s' is the field '%s' (%s)", wanted.c_str(), spec.name.c_str(),
                       wanted.size() > kLongestName ? "a field name is at most 19 characters"
                                                    : "the name was given before"));
    std::string note;
    const int slot = static_cast<int>(c);
    DefineField(db->definition().field(slot), spec, guesses[c], empties[c], note);
    if (!note.empty()) result.notes.push_back(spec.name + ": " + note);
    if (!spec.items.empty()) db->schema.fields[c].SetItems(spec.items);
  }
  // One field for each column, in order: the header maps by position here alone.
  ImportResult imported =
      ImportCsvTextByPosition(*db, text, import_options, options, prompter);
  imported.text.Merge(result.text);
  imported.notes = std::move(result.notes);
  result = std::move(imported);
  return db;
}

}  // namespace qv
