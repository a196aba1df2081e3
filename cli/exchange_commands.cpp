// qvdb export, import.

#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/exchange_options.h"
#include "cli/record_selection.h"
#include "cli/standard_streams.h"
#include "engine/text.h"
#include "processing/csv_export.h"
#include "processing/csv_import.h"
#include "processing/json_export.h"
#include "processing/record_text.h"
#include "security/enciphered.h"

namespace qv::cli {

namespace {

const char* const kExportUsage =
    "export FILE OUT [--csv|--text|--json|--format csv|text|json|jsonl] [--raw] [--header] "
    "[--typed-header] [--quote-all] [--slot-order] [--separator C] [--encoding utf-8|cp1252] "
    "[--all|--filtered] [--sort FIELD[:reverse]] [--where CONDITION] [--limit N]";

// The format chosen by --csv, --text, --json or --format; nothing (reported) when two disagree.
std::optional<QString> ExportFormat(CliContext& context, const QCommandLineParser& parser) {
  QStringList chosen;
  for (const char* flag : {"csv", "text", "json"})
    if (parser.isSet(flag)) chosen << flag;
  if (parser.isSet("format")) chosen << parser.value("format");
  chosen.removeDuplicates();
  if (chosen.size() > 1) {
    context.UsageError("choose one of --csv, --text, --json and --format");
    return std::nullopt;
  }
  QString format = chosen.isEmpty() ? "csv" : chosen.front();
  if (!QStringList{"csv", "text", "json", "jsonl"}.contains(format)) {
    context.UsageError("unknown format '" + format.toStdString() + "' (csv, text, json or jsonl)");
    return std::nullopt;
  }
  return format;
}

std::string RecordsAsText(const Database& db, const std::vector<std::uint32_t>& records,
                          const FormatOptions& options, TextEncoding encoding) {
  std::string text;
  for (std::uint32_t p : records)
    if (!IsRecordEnciphered(db, p)) WriteRecordText(db, p, 0, options, text);
  return EncodeForFile(text, encoding);
}

int Export(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("OUT", "File to write; - for standard output.");
  parser.addOption({"csv", "Comma-separated values (the default)."});
  parser.addOption({"text", "Plain text, one block per record."});
  parser.addOption({"json", "A JSON array of objects keyed by field name."});
  parser.addOption({"format", "csv, text, json or jsonl (JSON Lines).", "format"});
  parser.addOption({"raw", "JSON: every value its display text, as a string."});
  parser.addOption({"header", "CSV: a first line of field names."});
  parser.addOption({"typed-header",
                    "CSV: a first line of NAME:TYPE:LENGTH, so that new --from-csv makes the same "
                    "fields again."});
  parser.addOption({"quote-all", "CSV: quote every value and field name."});
  parser.addOption({"slot-order", "CSV: columns in field slot order, not display order."});
  AddExchangeOptions(parser);
  AddSelectionOptions(parser);
  if (!context.Parse(parser, arguments, 2, kExportUsage)) return kUsage;
  auto format = ExportFormat(context, parser);
  if (!format) return kUsage;
  auto separator = SeparatorOption(context, parser);
  auto encoding = EncodingOption(context, parser);
  if (!separator || !encoding) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.at(0).toStdString());
  if (!db) return kFailed;
  int code = kFailed;
  auto records = SelectRecords(context, *db, parser, code);
  if (!records) return code;
  const std::string out = args.at(1).toStdString();
  context.ReportLeftOut(CountEnciphered(*db, *records));
  if (format == "text") {
    if (!WriteOutput(context, out, RecordsAsText(*db, *records, context.options(), *encoding)))
      return kFailed;
    if (!IsStandardStream(out))
      context.prompter.message("File Exported OK", "Update", Icon::Information);
    return kOk;
  }
  if (format->startsWith("json")) {
    JsonOptions json{.typed = !parser.isSet("raw"), .lines = format == "jsonl"};
    std::string text = RecordsAsJson(*db, *records, UsedFieldsInDisplayOrder(db->definition()),
                                     json, context.options());
    return WriteOutput(context, out, text) ? kOk : kFailed;
  }
  CsvExportOptions o;
  o.header = parser.isSet("header") || parser.isSet("typed-header");
  o.typed_header = parser.isSet("typed-header");
  o.quote_all_values = o.quote_all_names = parser.isSet("quote-all");
  o.slot_order = parser.isSet("slot-order");
  o.separator = *separator;
  o.encoding = *encoding;
  // A few thousand records at a time, so the export never holds its whole text.
  constexpr std::size_t kChunk = 4096;
  OutputStream output(context, out);
  int complete = 1;
  std::string text;
  for (std::size_t at = 0; at == 0 || at < records->size(); at += kChunk) {
    std::vector<std::uint32_t> chunk(records->begin() + static_cast<std::ptrdiff_t>(at),
                                     records->begin() + static_cast<std::ptrdiff_t>(
                                                            std::min(at + kChunk, records->size())));
    text.clear();
    complete &= WriteCsv(*db, o, chunk, context.options(), context.prompter, text);
    o.header = false;  // once, before the first records
    output.Write(text);
  }
  if (!output.Finish()) return kFailed;
  if (complete == 1) return kOk;
  context.Error("some records could not be read; the others were written");
  return kFailed;
}

const char* const kImportUsage =
    "import FILE IN.csv [--separator C] [--encoding utf-8|cp1252] [--header|--no-header] "
    "[--strict]";

int Import(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("IN", "CSV file to read.");
  parser.addOption({"header", "The first line names the fields."});
  parser.addOption({"no-header", "There is no header line: columns follow the display order."});
  AddExchangeOptions(parser);
  if (!context.Parse(parser, arguments, 2, kImportUsage)) return kUsage;
  auto separator = SeparatorOption(context, parser);
  auto encoding = EncodingOption(context, parser);
  if (!separator || !encoding) return kUsage;
  if (parser.isSet("header") && parser.isSet("no-header")) {
    return context.UsageError("choose one of --header and --no-header");
  }
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.at(0).toStdString());
  if (!db) return kFailed;
  CsvImportOptions o;
  o.separator = *separator;
  o.encoding = *encoding;
  o.header = parser.isSet("header")      ? CsvHeader::Present
             : parser.isSet("no-header") ? CsvHeader::Absent
                                         : CsvHeader::Auto;
  auto bytes = ReadInput(context, args.at(1).toStdString());
  if (!bytes) return kFailed;
  std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  ImportResult result = ImportCsvText(*db, text, o, context.options(), context.prompter);
  if (!result.ok) {
    context.Error(Cp1252ToUtf8(result.error));
    return kFailed;
  }
  return SaveImport(context, *db, result, false);
}

}  // namespace

std::vector<Command> ExchangeCommands() {
  return {
      {"export", kExportUsage, Export,
       "Writes the records that pass the stored filter (every record with --all) as CSV, "
       "text, JSON or JSON Lines; --sort, --where and --limit shape the output only. JSON "
       "values are typed: numbers, true/false, null, ISO 8601 dates and times.",
       "export Stock.PDB - --format json --sort Qty:reverse --limit 10"},
      {"import", kImportUsage, Import,
       "Adds the rows of a CSV file as records; refused rows are listed as \"line N: reason\" "
       "and the exit code is 1 when there were any.",
       "import Stock.PDB more.csv --header"},
  };
}

}  // namespace qv::cli
