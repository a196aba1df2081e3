// qvdb export, import.

#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/exchange_options.h"
#include "engine/text.h"
#include "processing/csv_export.h"
#include "processing/csv_import.h"
#include "processing/json_export.h"
#include "processing/record_text.h"
#include "security/enciphered.h"

namespace qv::cli {

namespace {

int Export(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("OUT", "File to write.");
  parser.addOption({"csv", "Comma-separated values (the default)."});
  parser.addOption({"text", "Plain text, one block per record that passes the filter."});
  parser.addOption({"json", "A JSON array of objects keyed by field name."});
  parser.addOption({"header", "CSV: a first line of field names."});
  parser.addOption({"quote-all", "CSV: quote every value and field name."});
  parser.addOption({"filtered", "Only the records that pass the filter."});
  parser.addOption({"slot-order", "CSV: columns in field slot order, not display order."});
  AddExchangeOptions(parser);
  const char* usage =
      "export FILE OUT [--csv|--text|--json] [--header] [--quote-all] [--filtered] "
      "[--slot-order] [--separator C] [--encoding utf-8|cp1252]";
  if (!context.Parse(parser, arguments, 2, usage)) return kUsage;
  if (parser.isSet("csv") + parser.isSet("text") + parser.isSet("json") > 1) {
    context.Error("choose one of --csv, --text and --json");
    return kUsage;
  }
  auto separator = SeparatorOption(context, parser);
  auto encoding = EncodingOption(context, parser);
  if (!separator || !encoding) return kUsage;
  QStringList args = parser.positionalArguments();
  auto db = context.Open(args.at(0).toStdString());
  if (!db) return kFailed;
  const std::string out = args.at(1).toStdString();
  context.ReportLeftOut(CountEnciphered(*db));
  if (parser.isSet("text"))
    return ExportRecordsAsText(*db, true, out, context.options, context.prompter, *encoding)
               ? kOk
               : kFailed;
  if (parser.isSet("json")) {
    if (ExportJson(*db, parser.isSet("filtered"), out, context.options)) return kOk;
    context.Error("cannot write '" + out + "'");
    return kFailed;
  }
  CsvExportOptions o;
  o.header = parser.isSet("header");
  o.quote_all_values = o.quote_all_names = parser.isSet("quote-all");
  o.filtered_only = parser.isSet("filtered");
  o.slot_order = parser.isSet("slot-order");
  o.separator = *separator;
  o.encoding = *encoding;
  if (ExportCsv(*db, o, out, context.options, context.prompter) == 1) return kOk;
  context.Error("'" + out + "' could not be written, or some records could not be read");
  return kFailed;
}

int Import(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addPositionalArgument("IN", "CSV file to read.");
  parser.addOption({"header", "The first line names the fields."});
  parser.addOption({"no-header", "There is no header line: columns follow the display order."});
  AddExchangeOptions(parser);
  const char* usage =
      "import FILE IN.csv [--separator C] [--encoding utf-8|cp1252] [--header|--no-header] "
      "[--strict]";
  if (!context.Parse(parser, arguments, 2, usage)) return kUsage;
  auto separator = SeparatorOption(context, parser);
  auto encoding = EncodingOption(context, parser);
  if (!separator || !encoding) return kUsage;
  if (parser.isSet("header") && parser.isSet("no-header")) {
    context.Error("choose one of --header and --no-header");
    return kUsage;
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
  ImportResult result =
      ImportCsvFile(*db, args.at(1).toStdString(), o, context.options, context.prompter);
  if (!result.ok) {
    context.Error(Cp1252ToUtf8(result.error));
    return kFailed;
  }
  return SaveImport(context, *db, result, false);
}

}  // namespace

std::vector<Command> ExchangeCommands() {
  return {
      {"export",
       "export FILE OUT [--csv|--text|--json] [--header] [--quote-all] [--filtered] "
       "[--slot-order] [--separator C] [--encoding utf-8|cp1252]",
       Export},
      {"import",
       "import FILE IN.csv [--separator C] [--encoding utf-8|cp1252] [--header|--no-header] "
       "[--strict]",
       Import},
  };
}

}  // namespace qv::cli
