#include "processing/csv_export.h"

#include <cstdio>
#include <memory>

#include "engine/field_types.h"
#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/output_file.h"
#include "security/enciphered.h"

namespace qv {

void AppendCsvQuoted(std::string& out, std::string_view source, bool force, char separator) {
  if (source.empty()) {
    if (force) out += "\"\"";
    return;
  }
  bool needs_quotes = force;
  for (char c : source) {
    if (c == '"' || c == separator || c == '\r' || c == '\n') {
      needs_quotes = true;
      break;
    }
  }
  if (!needs_quotes) {
    out += source;
    return;
  }
  out += '"';
  for (char c : source) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

std::string CsvQuote(std::string_view source, bool force, char separator) {
  std::string out;
  AppendCsvQuoted(out, source, force, separator);
  return out;
}

namespace {

// Whether every value entry of the record lies inside it; a record cut short cannot give the
// values after the cut.
bool EntriesIntact(std::span<const std::uint8_t> record) {
  std::size_t at = ValuesOffset(record);
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    if (at + 2 > record.size()) return at == record.size();
    std::uint16_t length = GetLE16(record.data() + at);
    if (length == kEndMarker) return true;
    at += 2 + std::size_t{length};
    if (at > record.size()) return false;
  }
  return true;
}

// Types a new database can be made with from a header cell and take the exported texts back.
bool TypeSurvivesCsv(unsigned type) { return HoldsTypedValue(type); }

// The header line always follows the display order, whatever the column order of the records.
void WriteHeader(const Database& db, const CsvExportOptions& o, std::string& line) {
  bool first = true;
  for (int position = 0; position < kFieldSlots; ++position) {
    int slot = db.definition().display_slot(position);
    if (slot >= kFieldSlots || !db.definition().field(slot).used()) continue;
    if (!first) line += o.separator;
    first = false;
    AppendCsvQuoted(line, CsvHeaderCell(db, slot, o), o.quote_all_names, o.separator);
  }
  line += '\n';
}

// One record's line; false when a value could not be read.
bool WriteRecordLine(const Database& db, std::uint32_t number, const CsvExportOptions& o,
                     const FormatOptions& options, Prompter& prompter, std::string& line) {
  std::span<const std::uint8_t> record = db.records[number].data;
  bool ok = true;
  for (int i = 0; i < kFieldSlots; ++i) {
    int slot = o.slot_order ? i : db.definition().display_slot(i);
    if (slot >= kFieldSlots) continue;
    ConstFieldDefinition field = db.definition().field(slot);
    if (!field.used()) continue;
    // The test is on the position, not on whether a column was written before, so a line
    // whose first position holds a Not-Used field starts with a separator; kept on purpose.
    if (i > 0) line += o.separator;
    if (field.type() == kImage) continue;
    auto located = LocateValue(record, slot);
    // A value after the end marker is simply empty; one cut off by damage cannot be had.
    if (!located && !EntriesIntact(record)) {
      prompter.progress(StringPrintf("ERROR:%d!\n", i));
      ok = false;
      continue;
    }
    std::span<const std::uint8_t> value;
    if (located)
      value = std::span<const std::uint8_t>(record).subspan(located->offset, located->length);
    std::string text = FormatValue(field, value, options);
    if (text.size() > 4095) text.resize(4095);
    if (o.encoding == TextEncoding::Utf8 && !IsAscii(text)) text = Cp1252ToUtf8(text);
    AppendCsvQuoted(line, text, o.quote_all_values, o.separator);
  }
  line += '\n';
  return ok;
}

}  // namespace

std::string CsvHeaderCell(const Database& db, int slot, const CsvExportOptions& o) {
  ConstFieldDefinition field = db.definition().field(slot);
  std::string cell(field.name());
  if (o.typed_header && TypeSurvivesCsv(field.type())) {
    cell +=
        StringPrintf(":%s:%u", std::string(FieldTypeName(field.type())).c_str(), field.length());
    const FieldRecord& items = db.schema.fields[slot];
    if (field.type() == kPopUp && !items.texts.empty()) {
      cell += ':';
      for (std::size_t i = 0; i < items.texts.size(); ++i) cell += (i ? "|" : "") + items.texts[i];
    }
  }
  return EncodeForFile(cell, o.encoding);
}

namespace {

// One record's part of WriteCsv: the progress texts, the filter test and the line.
int WriteCsvRecord(const Database& db, const CsvExportOptions& o, std::uint32_t p,
                   const FormatOptions& options, Prompter& prompter, std::string& out) {
  const bool shown = prompter.shows_progress();
  if (shown) prompter.progress(StringPrintf("Reading and Writing Record %u...", p));
  if (o.filtered_only && !RecordPassesFilter(db, p)) return 1;
  if (p < db.count() && IsRecordEnciphered(db, p)) return 1;  // never exported as values
  // The offset of 102 (the first data record's place in the file) is the program's own.
  if (shown) prompter.progress(StringPrintf("Reading Record: %d:", static_cast<int>(p) - 102));
  if (p >= db.count() || db.records[p].data.empty()) {
    prompter.progress(StringPrintf("ERROR:Reading Record: %u", p));
    return 0;
  }
  return WriteRecordLine(db, p, o, options, prompter, out) ? 1 : 0;
}

}  // namespace

int WriteCsv(const Database& db, const CsvExportOptions& o,
             const std::vector<std::uint32_t>& records, const FormatOptions& options,
             Prompter& prompter, std::string& out) {
  int result = 1;
  if (o.header) WriteHeader(db, o, out);
  for (std::uint32_t p : records)
    if (!WriteCsvRecord(db, o, p, options, prompter, out)) result = 0;
  return result;
}

int ExportCsv(const Database& db, const CsvExportOptions& o, const std::string& path,
              const FormatOptions& options, Prompter& prompter) {
  OutputFile file(path);
  if (!file.ok()) return 0;
  prompter.progress("Exporting to .CSV File...");
  int result = 1;
  std::string lines;
  if (o.header) {
    WriteHeader(db, o, lines);
    file.Write(lines);
  }
  // One record at a time, so a large export never holds the whole text.
  for (std::uint32_t p = 0; p < db.count(); ++p) {
    lines.clear();
    if (!WriteCsvRecord(db, o, p, options, prompter, lines)) result = 0;
    file.Write(lines);
  }
  if (!file.Close()) result = 0;
  return result;
}

}  // namespace qv
