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

// Whether every cell parses as a value of `type` under the user's formats.
bool AllParse(const std::vector<std::string_view>& cells, FieldType type,
              const FormatOptions& options) {
  std::array<std::uint8_t, kFieldDefinitionSize> bytes{};
  FieldDefinition scratch(bytes.data());
  scratch.set_type(type);
  scratch.set_length(kLongestLength);
  const FieldRecord no_items;
  // A lone number reads as a time of whole hours; only a written separator makes a time.
  const char time_separator = options.time_code == 4 || options.time_code == 5 ? '.'
                              : options.time_code == 8                         ? ','
                                                                               : ':';
  for (std::string_view cell : cells) {
    if (type == kTime && cell.find(time_separator) == std::string_view::npos) return false;
    if (!ParseValue(scratch, no_items, cell, options)) return false;
    if (type == kInteger || type == kFloat) {
      // Numbers written with leading zeros (codes, postcodes) would lose them as numbers.
      std::string_view digits = cell.substr(cell.find_first_not_of("+- ") == std::string_view::npos
                                                ? 0
                                                : cell.find_first_not_of("+- "));
      if (digits.size() > 1 && digits[0] == '0' && digits[1] != '.' && digits[1] != ',')
        return false;
    }
  }
  return true;
}

bool AllCheckWords(const std::vector<std::string_view>& cells) {
  for (std::string_view cell : cells) {
    std::string t = ToLowerAscii(cell);
    if (t != "yes" && t != "no" && t != "true" && t != "false" && t != "x") return false;
  }
  return true;
}

// The most decimals any cell carries, so values keep the digits they were written with.
int DecimalsOf(const std::vector<std::string_view>& cells, bool decimal_comma) {
  int most = 0;
  for (std::string_view cell : cells) {
    std::size_t point = cell.find(decimal_comma ? ',' : '.');
    if (point == std::string_view::npos) continue;
    std::size_t end = cell.find_first_not_of("0123456789", point + 1);
    if (end == std::string_view::npos) end = cell.size();
    most = std::max(most, static_cast<int>(end - point - 1));
  }
  return std::min(most, 10);
}

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
FieldType GuessWithEmpties(const std::vector<std::string_view>& cells, bool empties,
                           const FormatOptions& options, std::string& note) {
  FieldType guess = GuessFieldType(cells, options);
  FieldType type = guess;
  if (empties && guess == kInteger) type = kFloat;
  if (empties && guess == kCheckBox) type = kText;
  note = std::string(FieldTypeName(type)) + " (guessed";
  if (type != guess)
    note += "; " + std::string(FieldTypeName(guess)) + " cannot hold its empty cells";
  note += ")";
  return type;
}

void DefineField(FieldDefinition field, const ColumnSpec& spec,
                 const std::vector<std::string_view>& cells, bool empties,
                 const FormatOptions& options, std::string& note) {
  FieldType type = spec.type ? *spec.type : GuessWithEmpties(cells, empties, options, note);
  std::size_t longest = 0;
  for (std::string_view cell : cells) longest = std::max(longest, cell.size());
  field.set_type(type);
  field.set_name(spec.name);
  unsigned length =
      static_cast<unsigned>(std::clamp<std::size_t>(longest, kDefaultLength, kLongestLength));
  field.set_length(spec.length ? *spec.length : length);
  if (type == kFloat)
    field.settings()[0] = static_cast<std::uint8_t>(DecimalsOf(cells, options.decimal_comma));
  // A list column wide enough for the name and typical values (about 7 pixels a character,
  // stored as two thirds of the pixels), never narrower than the default.
  std::size_t shown = std::max(spec.name.size(), std::min<std::size_t>(longest, 28));
  field.set_width(static_cast<unsigned>(std::max<std::size_t>(58, (shown * 7 + 12) * 2 / 3)));
}

}  // namespace

FieldType GuessFieldType(const std::vector<std::string_view>& cells, const FormatOptions& options) {
  if (cells.empty()) return kText;
  if (AllParse(cells, kInteger, options)) return kInteger;
  if (AllParse(cells, kFloat, options)) return kFloat;
  if (AllParse(cells, kDate, options)) return kDate;
  if (AllParse(cells, kTime, options)) return kTime;
  if (AllCheckWords(cells)) return kCheckBox;
  for (std::string_view cell : cells)
    if (cell.size() > kLongestText) return kNote;
  return kText;
}

std::unique_ptr<Database> NewDatabaseFromCsv(std::string_view name, std::string_view text,
                                             const CsvImportOptions& import_options,
                                             const FormatOptions& options, const Clock& clock,
                                             Prompter& prompter, ImportResult& result) {
  result = ImportResult{};
  std::vector<CsvRow> rows = ReadCsv(text, import_options.separator);
  std::size_t first = 0;
  while (first < rows.size() && rows[first].cells.size() == 1 && rows[first].cells[0].empty())
    ++first;  // blank lines before the header
  rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(first));
  if (rows.empty() || rows[0].cells.empty()) {
    result.error = "the file has no header line naming the fields";
    return nullptr;
  }
  const std::vector<std::string>& header = rows[0].cells;
  if (header.size() > static_cast<std::size_t>(kFieldSlots)) {
    result.error = StringPrintf("the file has %zu columns; a database holds at most 100 fields",
                                header.size());
    return nullptr;
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
    std::vector<std::string> stored;
    bool empties = false;
    for (std::size_t r = 1; r < rows.size(); ++r) {
      const bool blank = rows[r].cells.size() == 1 && rows[r].cells[0].empty() && header.size() > 1;
      if (!rows[r].problem.empty() || blank) continue;
      if (c >= rows[r].cells.size() || rows[r].cells[c].empty())
        empties = true;
      else
        stored.push_back(DecodeFromFile(rows[r].cells[c], import_options.encoding));
    }
    std::vector<std::string_view> cells(stored.begin(), stored.end());
    std::string note;
    const int slot = static_cast<int>(c);
    DefineField(db->definition().field(slot), spec, cells, empties, options, note);
    if (!note.empty()) result.notes.push_back(spec.name + ": " + note);
    if (!spec.items.empty()) db->schema.fields[c].SetItems(spec.items);
  }
  // One field for each column, in order: the header maps by position here alone.
  ColumnMap map;
  MapColumns(*db, nullptr, CsvHeader::Absent, import_options.encoding, map, result.error);
  map.header = true;
  ImportResult imported = ImportCsvRows(*db, rows, map, import_options, options, prompter);
  imported.text.Merge(result.text);
  imported.notes = std::move(result.notes);
  result = std::move(imported);
  return db;
}

}  // namespace qv
