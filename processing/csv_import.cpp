#include "processing/csv_import.h"

#include <algorithm>
#include <numeric>

#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/formula.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "security/cipher_session.h"

namespace qv {

namespace {

// Fields whose cells are not read back: images, headings, values computed from others and
// values that point into other databases.
bool Importable(unsigned type) {
  switch (type) {
    case kText:
    case kInteger:
    case kFloat:
    case kPopUp:
    case kCheckBox:
    case kUnique:
    case kDate:
    case kTime:
    case kLink:
    case kNote:
    case kDbPopup:
    case kExternal:
      return true;
    default:
      return false;
  }
}

std::optional<int> FieldOfHeader(const Database& db, std::string_view cell) {
  if (auto slot = db.definition().FindField(cell)) return slot;
  return db.definition().FindField(HeaderName(cell));
}

// A header cell names a field or has the NAME:TYPE shape of one.
bool HeaderLike(const Database& db, std::string_view cell) {
  return FieldOfHeader(db, cell) || HeaderName(cell).size() != cell.size();
}

bool LooksLikeHeader(const Database& db, const CsvRow& row, TextEncoding encoding) {
  for (const std::string& cell : row.cells)
    if (!cell.empty() && HeaderLike(db, TrimBlanks(DecodeFromFile(cell, encoding)))) return true;
  return false;
}

std::string FieldNames(const DatabaseDefinition& d) {
  std::string out;
  for (int slot : UsedFieldsInDisplayOrder(d))
    out += (out.empty() ? "" : ", ") + d.field(slot).name();
  return out;
}

// The next free number of every Unique field, found once rather than per row.
std::array<std::uint32_t, kFieldSlots> NextUniqueNumbers(const Database& db) {
  std::array<std::uint32_t, kFieldSlots> next{};
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    if (db.definition().field(slot).type() != kUnique) continue;
    for (const RecordSlot& r : db.records) {
      auto v = ValueBytes(r.data, slot);
      if (v.size() >= 4) next[slot] = std::max(next[slot], ValueUInt32(v) + 1);
    }
  }
  return next;
}

// Why a cell was refused, in words a user can act on.
std::string RefusalReason(ConstFieldDefinition field, const std::string& stored) {
  std::string shown = Cp1252ToUtf8(stored);
  unsigned type = field.type();
  if ((type == kText || type == kDbPopup || type == kNote || type == kExternal) &&
      stored.size() + 1 > std::max<std::size_t>(LargestValueSize(field), 1))
    return StringPrintf(
        "the %s value is longer than %u characters", field.name().c_str(),
        static_cast<unsigned>(std::max<std::size_t>(LargestValueSize(field), 1) - 1));
  if (type == kPopUp)
    return StringPrintf("'%s' is not an item of the %s list", stored.c_str(), field.name().c_str());
  return StringPrintf("'%s' is not a valid %s value for %s", stored.c_str(),
                      std::string(FieldTypeName(type)).c_str(), field.name().c_str());
}

bool HasComputedFields(const DatabaseDefinition& d) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (d.field(slot).type() == kCalculated || d.field(slot).type() == kConditional) return true;
  return false;
}

// Places the appended records [old_count, count) in sort order with one stable sort and one
// merge, instead of one sorted insert per row. The records there already keep their order.
void MergeAppendedInSortOrder(Database& db, std::uint32_t old_count) {
  if (db.definition().sort_key(0).field < 0 || db.count() - old_count == 0) return;
  std::vector<std::uint32_t> order(db.count());
  std::iota(order.begin(), order.end(), 0u);
  auto less = [&db](std::uint32_t a, std::uint32_t b) { return CompareRecords(db, a, b) < 0; };
  std::stable_sort(order.begin() + old_count, order.end(), less);
  std::inplace_merge(order.begin(), order.begin() + old_count, order.end(), less);
  RecordTable sorted;
  sorted.reserve(db.count());
  for (std::uint32_t i : order) sorted.push_back(std::move(db.records[i]));
  db.records = std::move(sorted);
}

// What the record editor's store does for each record, done once for all appended ones: their
// own computed values (one may be a sort key), the sort order, then the values that depend on
// the records before them.
void FinishAppend(Database& db, std::uint32_t old_count, Prompter& prompter) {
  const std::uint32_t first_uid = db.records[old_count].uid;
  if (HasComputedFields(db.definition())) {
    for (std::uint32_t p = old_count; p < db.count(); ++p) {
      Bytes work = db.records[p].data;
      ComputeRecordFormulas(db, db.definition(), work, {}, prompter);
      db.records[p].data = std::move(work);
    }
  }
  MergeAppendedInSortOrder(db, old_count);
  if (!HasPositionDependentFields(db)) return;
  std::uint32_t first = old_count;
  for (std::uint32_t p = 0; p < db.count(); ++p) {
    if (db.records[p].uid >= first_uid) {
      first = p;
      break;
    }
  }
  RecalculateFrom(db, first, prompter);
}

}  // namespace

std::string_view TrimBlanks(std::string_view cell) {
  const std::size_t first = cell.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return cell.substr(first, cell.find_last_not_of(" \t") - first + 1);
}

std::string_view HeaderName(std::string_view cell) {
  std::size_t colon = cell.find(':');
  if (colon == std::string_view::npos || colon == 0) return cell;
  std::string_view rest = cell.substr(colon + 1);
  std::string_view type = rest.substr(0, rest.find(':'));
  return FieldTypeByName(type) ? cell.substr(0, colon) : cell;
}

bool MapColumns(const Database& db, const CsvRow* first, CsvHeader header, TextEncoding encoding,
                ColumnMap& map, std::string& error) {
  map = ColumnMap{};
  bool use_header = header == CsvHeader::Present ||
                    (header == CsvHeader::Auto && first && LooksLikeHeader(db, *first, encoding));
  if (!use_header) {
    for (int slot : UsedFieldsInDisplayOrder(db.definition()))
      map.fields.push_back(Importable(db.definition().field(slot).type()) ? slot : -1);
    return true;
  }
  map.header = true;
  if (!first) return true;
  std::array<bool, kFieldSlots> taken{};
  std::string unknown;
  for (const std::string& file_cell : first->cells) {
    const std::string cell(TrimBlanks(DecodeFromFile(file_cell, encoding)));
    auto slot = cell.empty() ? std::nullopt : FieldOfHeader(db, cell);
    if (!cell.empty() && !slot) unknown += (unknown.empty() ? "'" : ", '") + cell + "'";
    if (slot && taken[*slot]) {
      error = StringPrintf("the field '%s' is named twice in the header", cell.c_str());
      return false;
    }
    if (slot) taken[*slot] = true;
    map.fields.push_back(slot && Importable(db.definition().field(*slot).type()) ? *slot : -1);
  }
  if (unknown.empty()) return true;
  error = StringPrintf("the header names fields the database does not have: %s; its fields are %s",
                       unknown.c_str(), FieldNames(db.definition()).c_str());
  return false;
}

bool IsBlankRow(const CsvRow& row) {
  return row.problem.empty() && row.cells.size() == 1 && row.cells[0].empty();
}

namespace {

// Turns rows into appended records one at a time, so a file is imported while it is read.
class RowImporter {
 public:
  RowImporter(Database& db, const ColumnMap& map, const CsvImportOptions& import_options,
              const FormatOptions& options, Prompter& prompter)
      : db_(db),
        d_(db.definition()),
        map_(map),
        import_options_(import_options),
        options_(options),
        prompter_(prompter),
        defaults_(DefaultValues(db)),
        next_unique_(NextUniqueNumbers(db)),
        old_count_(db.count()),
        values_(defaults_) {
    result_.ok = true;
    prompter_.busy(true);
    prompter_.progress("Importing from .CSV File...");
    for (int slot = 0; slot < kFieldSlots; ++slot)
      if (d_.field(slot).type() == kUnique) unique_slots_.push_back(slot);
  }

  // False once the database is full: the rest of the file is not read.
  bool Add(const CsvRow& row) {
    if (!row.problem.empty()) return Refuse(row, row.problem);
    // The one empty cell of a blank line; in a one-column file it is an empty value.
    if (map_.fields.size() != 1 && row.cells.size() == 1 && row.cells[0].empty()) return true;
    const std::size_t columns = map_.fields.size();
    if (row.cells.size() > columns &&
        std::any_of(row.cells.begin() + static_cast<std::ptrdiff_t>(columns), row.cells.end(),
                    [](const std::string& c) { return !c.empty(); }))
      return Refuse(
          row, StringPrintf("%zu values, but the file has %zu columns", row.cells.size(), columns));
    if (db_.count() >= kMaxDataRecords) {
      Refuse(row, StringPrintf("the database holds %u records already; this row and the rest "
                               "were not imported",
                               kMaxDataRecords));
      return false;
    }
    std::string reason;
    if (!ReadValues(row, reason)) return Refuse(row, reason);
    // Appended here, its bytes to the import's one buffer; the records view that buffer and
    // the sort order is restored once for all rows in Finish.
    const std::size_t start = encoded_.size();
    AppendEncodedRecord(d_, values_, encoded_);
    spans_.push_back({start, encoded_.size() - start});
    db_.records.push_back({RecordData(), TakeRecordUid(db_), 0});
    ++result_.imported;
    return true;
  }

  // Room for the records' bytes of a text this long, taken at once rather than by doubling.
  void Expect(std::size_t text_size) { encoded_.reserve(text_size + text_size / 2); }

  ImportResult Finish() {
    if (!spans_.empty()) {
      auto image = std::make_shared<const FileBytes>(std::move(encoded_));
      for (std::size_t k = 0; k < spans_.size(); ++k) {
        db_.records[old_count_ + k].data = RecordData(image, spans_[k].first, spans_[k].second);
        NoteStoredRecord(db_, static_cast<std::uint32_t>(old_count_ + k));
      }
    }
    if (result_.imported > 0) {
      db_.changed = true;
      FinishAppend(db_, old_count_, prompter_);
    }
    RebuildFilteredList(db_);
    prompter_.busy(false);
    return std::move(result_);
  }

 private:
  bool Refuse(const CsvRow& row, std::string reason) {
    result_.problems.push_back({row.line, std::move(reason)});
    return true;
  }

  bool ReadValues(const CsvRow& row, std::string& reason) {
    for (int slot : map_.fields)
      if (slot >= 0) values_.values[slot] = defaults_.values[slot];  // keeps the buffers
    std::array<bool, kFieldSlots> unique_given{};
    for (std::size_t c = 0; c < row.cells.size() && c < map_.fields.size(); ++c) {
      int slot = map_.fields[c];
      if (slot < 0 || row.cells[c].empty()) continue;  // an empty cell keeps the default
      ConstFieldDefinition field = d_.field(slot);
      std::string_view stored = row.cells[c];
      if (NeedsConversion(stored, import_options_.encoding)) {
        converted_ =
            result_.text.Store(stored, import_options_.encoding, {"line", row.line, field.name()});
        stored = converted_;
      }
      // Parsed into the value's own buffer, so a row costs no allocation per cell.
      if (!ParseValueInto(field, db_.schema.fields[slot], stored, options_, values_.values[slot])) {
        reason = RefusalReason(field, std::string(stored));
        return false;
      }
      if (field.type() == kUnique) unique_given[slot] = true;
      values_.present[slot] = true;
    }
    for (int slot : unique_slots_) {
      if (!unique_given[slot]) {
        Bytes& v = values_.values[slot];
        v.resize(4);
        PutLE32(v.data(), next_unique_[slot]);
      }
      next_unique_[slot] = std::max(next_unique_[slot], ValueUInt32(values_.values[slot]) + 1);
    }
    return true;
  }

  Database& db_;
  const DatabaseDefinition& d_;
  const ColumnMap& map_;
  const CsvImportOptions& import_options_;
  const FormatOptions& options_;
  Prompter& prompter_;
  const RecordValues defaults_;
  std::array<std::uint32_t, kFieldSlots> next_unique_;
  const std::uint32_t old_count_;
  RecordValues values_;
  std::vector<int> unique_slots_;
  std::string converted_;
  Bytes encoded_;  // the imported records' bytes, end to end
  std::vector<std::pair<std::size_t, std::size_t>> spans_;  // each record's offset and length
  ImportResult result_;
};

}  // namespace

ImportResult ImportCsvRows(Database& db, const std::vector<CsvRow>& rows, const ColumnMap& map,
                           const CsvImportOptions& import_options, const FormatOptions& options,
                           Prompter& prompter) {
  RowImporter importer(db, map, import_options, options, prompter);
  std::size_t r = 0;
  while (r < rows.size() && IsBlankRow(rows[r])) ++r;
  for (r += map.header ? 1 : 0; r < rows.size(); ++r)
    if (!importer.Add(rows[r])) break;
  return importer.Finish();
}

namespace {

// The rows of a text into the database: the columns mapped from its first row that is not blank,
// or, `by_position`, that row a header and column c the field in slot c.
ImportResult ImportText(Database& db, std::string_view text,
                        const CsvImportOptions& import_options, const FormatOptions& options,
                        Prompter& prompter, bool by_position) {
  // One slot per line at most, taken at once rather than by doubling.
  db.records.reserve(std::min<std::size_t>(
      kMaxDataRecords, db.count() + std::count(text.begin(), text.end(), '\n') + 1));
  CsvReader reader(text, import_options.separator);
  CsvRow row;
  bool any = reader.Next(row);
  while (any && IsBlankRow(row)) any = reader.Next(row);  // blank lines before the first row
  ColumnMap map;
  ImportResult result;
  if (by_position) {
    MapColumns(db, nullptr, CsvHeader::Absent, import_options.encoding, map, result.error);
    map.header = true;
  } else if (!MapColumns(db, any ? &row : nullptr, import_options.header,
                         import_options.encoding, map, result.error)) {
    return result;
  }
  RowImporter importer(db, map, import_options, options, prompter);
  importer.Expect(text.size());
  bool more = any;
  if (more && map.header) more = reader.Next(row);
  while (more && importer.Add(row)) more = reader.Next(row);
  return importer.Finish();
}

}  // namespace

ImportResult ImportCsvText(Database& db, std::string_view text,
                           const CsvImportOptions& import_options, const FormatOptions& options,
                           Prompter& prompter) {
  return ImportText(db, text, import_options, options, prompter, false);
}

ImportResult ImportCsvTextByPosition(Database& db, std::string_view text,
                                     const CsvImportOptions& import_options,
                                     const FormatOptions& options, Prompter& prompter) {
  return ImportText(db, text, import_options, options, prompter, true);
}

ImportResult ImportCsvFile(Database& db, const std::string& path,
                           const CsvImportOptions& import_options, const FormatOptions& options,
                           Prompter& prompter) {
  auto bytes = ReadInputFile(path);
  if (!bytes) {
    ImportResult result;
    result.error = StringPrintf("ERROR: Cannot Open File: %s for reading", path.c_str());
    return result;
  }
  std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  return ImportCsvText(db, text, import_options, options, prompter);
}

}  // namespace qv
