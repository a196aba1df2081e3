// qvdb info, list, new, check.

#include <QFileInfo>
#include <ctime>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/exchange_options.h"
#include "cli/output.h"
#include "cli/record_selection.h"
#include "cli/standard_streams.h"
#include "engine/text.h"
#include "processing/csv_new_database.h"
#include "security/cipher_session.h"
#include "security/enciphered.h"
#include "processing/json_export.h"

namespace qv::cli {

namespace {

std::string FileDateText(std::uint32_t seconds_since_1904) {
  if (seconds_since_1904 == 0) return "never";
  std::time_t t = static_cast<std::time_t>(seconds_since_1904 - kEpoch1904To1970);
  std::tm tm{};
  gmtime_r(&t, &tm);  // the stored value is local time already
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &tm);
  return buffer;
}

std::string FourChars(const std::array<std::uint8_t, 4>& code) {
  return std::string(reinterpret_cast<const char*>(code.data()), 4);
}

// The schema for scripts: the header's facts and one object per used field.
std::string InfoJson(const Database& db) {
  const Header& h = db.header;
  std::string out = "{\"name\": " + JsonQuote(Cp1252ToUtf8(h.Name())) +
                    ", \"created\": " + JsonQuote(FileDateText(h.creation_date)) +
                    ", \"modified\": " + JsonQuote(FileDateText(h.modification_date)) +
                    ", \"type\": " + JsonQuote(FourChars(h.type)) +
                    ", \"creator\": " + JsonQuote(FourChars(h.creator)) +
                    ", \"records\": " + std::to_string(db.count()) + ",\n \"fields\": [";
  bool first = true;
  for (int slot : UsedFieldsInDisplayOrder(db.definition())) {
    ConstFieldDefinition f = db.definition().field(slot);
    out += first ? "\n  " : ",\n  ";
    first = false;
    out += "{\"slot\": " + std::to_string(slot + 1) +
           ", \"name\": " + JsonQuote(Cp1252ToUtf8(f.name())) +
           ", \"type\": " + JsonQuote(std::string(FieldTypeName(f.type()))) +
           ", \"length\": " + std::to_string(f.length());
    const auto& items = db.schema.fields[slot].texts;
    if (f.type() == kPopUp) {
      out += ", \"items\": [";
      for (std::size_t i = 0; i < items.size(); ++i)
        out += (i ? ", " : "") + JsonQuote(Cp1252ToUtf8(items[i]));
      out += "]";
    }
    out += "}";
  }
  return out + (first ? "]}\n" : "\n ]}\n");
}

int Info(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption({"format", "text or json.", "format", "text"});
  if (!context.Parse(parser, arguments, 1, "info FILE [--format text|json]")) return kUsage;
  QString format = parser.value("format");
  if (format != "text" && format != "json")
    return context.UsageError("unknown format '" + format.toStdString() + "' (text or json)");
  auto db = context.OpenSchema(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  if (format == "json") {
    std::cout << InfoJson(*db);
    return kOk;
  }
  const Header& h = db->header;
  std::cout << "Name:          " << Cp1252ToUtf8(h.Name()) << '\n'
            << "Created:       " << FileDateText(h.creation_date) << '\n'
            << "Modified:      " << FileDateText(h.modification_date) << '\n'
            << "Backed up:     " << FileDateText(h.backup_date) << '\n'
            << "Type:          " << FourChars(h.type) << '\n'
            << "Creator:       " << FourChars(h.creator) << '\n'
            << "Records:       " << h.record_count << " in the file, "
            << h.record_count - kSchemaRecords << " data records\n\nFields:\n";
  Table fields;
  fields.headers = {"Slot", "Name", "Type", "Length"};
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    ConstFieldDefinition f = db->definition().field(slot);
    if (!f.used()) continue;
    fields.rows.push_back({std::to_string(slot + 1), Cp1252ToUtf8(f.name()),
                           std::string(FieldTypeName(f.type())), std::to_string(f.length())});
  }
  WriteTable(fields, TableFormat::Text, std::cout);
  return kOk;
}

const char* const kListUsage =
    "list FILE [--format text|tsv|csv|json|jsonl] [--raw] [--fields A,B,...] [--numbers] "
    "[--all|--filtered] [--sort FIELD[:reverse]] [--where CONDITION] [--limit N]";

int List(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption({"format", "text, tsv, csv, json or jsonl (JSON Lines).", "format", "text"});
  parser.addOption({"raw", "JSON: every value its display text, as a string."});
  parser.addOption({"fields", "Only these fields, in this order (names between commas).", "A,B"});
  parser.addOption({"numbers", "Show record numbers (text, tsv and csv)."});
  AddSelectionOptions(parser);
  if (!context.Parse(parser, arguments, 1, kListUsage)) return kUsage;
  static const QStringList kFormats = {"text", "tsv", "csv", "json", "jsonl"};
  const QString format = parser.value("format");
  if (!kFormats.contains(format))
    return context.UsageError("unknown format '" + format.toStdString() +
                              "' (text, tsv, csv, json or jsonl)");
  auto db = context.Open(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  int code = kFailed;
  auto fields = SelectFields(context, *db, parser, code);
  auto records = fields ? SelectRecords(context, *db, parser, code) : std::nullopt;
  if (!records) return code;
  if (format.startsWith("json")) {
    JsonOptions json{.typed = !parser.isSet("raw"), .lines = format == "jsonl"};
    std::cout << RecordsAsJson(*db, *records, *fields, json, context.options());
    context.ReportLeftOut(CountEnciphered(*db, *records));
    return kOk;
  }
  TableFormat table_format = format == "tsv"   ? TableFormat::Tsv
                             : format == "csv" ? TableFormat::Csv
                                               : TableFormat::Text;
  WriteRecordTable(*db, *records, *fields, context.options(), parser.isSet("numbers"),
                   table_format, std::cout);
  if (std::size_t n = CountEnciphered(*db, *records))
    std::cerr << "Note: " << n << " record" << (n == 1 ? " shows" : "s show") << " "
              << kEncipheredValueText << " for values no password given deciphers\n";
  return kOk;
}

struct FieldSpec {
  std::string name;
  FieldType type;
  unsigned length = 40;
};

std::optional<FieldSpec> ParseFieldSpec(const QString& text, TextReport& report,
                                        std::string& problem) {
  QStringList parts = text.split(':');
  if (parts.size() < 2 || parts.size() > 3 || parts[0].isEmpty()) {
    problem = "a field is NAME:TYPE[:LENGTH], not '" + text.toStdString() + "'";
    return std::nullopt;
  }
  FieldSpec spec;
  spec.name = report.Store(parts[0].toStdString(), TextEncoding::Utf8, {nullptr, 0, "field name"});
  if (spec.name.size() > 19) {
    problem = "field name '" + parts[0].toStdString() + "' is longer than 19 characters";
    return std::nullopt;
  }
  auto type = FieldTypeByName(parts[1].toStdString());
  if (!type || *type == kNotUsed) {
    problem = "unknown field type '" + parts[1].toStdString() + "'";
    return std::nullopt;
  }
  spec.type = *type;
  if (parts.size() == 3) {
    bool ok = false;
    spec.length = parts[2].toUInt(&ok);
    if (!ok || spec.length == 0 || spec.length > 2000) {
      problem = "field length must be 1 to 2000, not '" + parts[2].toStdString() + "'";
      return std::nullopt;
    }
  }
  return spec;
}

// The fields come from the CSV file's header line (NAME or NAME:TYPE[:LENGTH], other types
// guessed from the data) and its rows become the records.
int NewFromCsv(CliContext& context, const QCommandLineParser& parser, const std::string& path,
               const std::string& name) {
  auto separator = SeparatorOption(context, parser);
  auto encoding = EncodingOption(context, parser);
  if (!separator || !encoding) return kUsage;
  auto bytes = ReadInput(context, parser.value("from-csv").toStdString());
  if (!bytes) return kFailed;
  CsvImportOptions o;
  o.separator = *separator;
  o.encoding = *encoding;
  ImportResult result;
  std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  auto db =
      NewDatabaseFromCsv(name, text, o, context.options(), context.clock, context.prompter, result);
  if (!db) {
    context.Error(Cp1252ToUtf8(result.error));
    return kFailed;
  }
  bytes.reset();  // the records hold their own bytes: the text's memory is free for the save
  for (const std::string& note : result.notes) std::cout << Cp1252ToUtf8(note) << '\n';
  db->path = path;
  db->disk = StampOf(path);  // a file made meanwhile by another command is not replaced
  return SaveImport(context, *db, result, true);
}

const char* const kNewUsage =
    "new FILE [--name NAME] (--field NAME:TYPE[:LENGTH] ... | --from-csv IN.csv [--separator C] "
    "[--encoding utf-8|cp1252]) [--force] [--strict]";

int New(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file to create.");
  parser.addOption({"name", "Database name (default: the file name).", "name"});
  parser.addOption({"field", "A field NAME:TYPE[:LENGTH]; repeat for more.", "spec"});
  parser.addOption({"from-csv", "Make the fields and records from a CSV file.", "csv"});
  parser.addOption({"force", "Replace an existing file."});
  AddExchangeOptions(parser);
  if (!context.Parse(parser, arguments, 1, kNewUsage)) return kUsage;
  if (parser.isSet("from-csv") && parser.isSet("field")) {
    return context.UsageError("give either --field or --from-csv");
  }
  std::string path = parser.positionalArguments().at(0).toStdString();
  if (TestForFile(path) && !parser.isSet("force")) {
    context.Error("'" + path + "' exists already (use --force to replace it)");
    return kFailed;
  }
  // Replacing a database is guarded as the program guards adding records to it (from a CSV
  // file) or deleting it: its own settings say who may.
  Header existing;
  if (ReadHeader(path, existing) == 1 &&
      !context.Open(path, parser.isSet("from-csv") ? "into" : "replace"))
    return kFailed;
  QStringList specs = parser.values("field");
  if (specs.size() > kFieldSlots) {
    return context.UsageError("a database holds at most 100 fields");
  }
  std::string name = context.Stored(
      parser.isSet("name") ? parser.value("name")
                           : QFileInfo(QString::fromStdString(path)).completeBaseName(),
      {nullptr, 0, "database name"});
  if (name.empty() || name.size() > 31) {
    return context.UsageError("the database name must be 1 to 31 characters");
  }
  if (parser.isSet("from-csv")) return NewFromCsv(context, parser, path, name);
  auto db = NewDatabase(name, context.clock);
  for (int slot = 0; slot < specs.size(); ++slot) {
    std::string problem;
    auto spec = ParseFieldSpec(specs[slot], context.text, problem);
    if (!spec) {
      return context.UsageError(problem);
    }
    if (db->definition().FindField(spec->name)) {
      return context.UsageError("two fields are named '" + Cp1252ToUtf8(spec->name) + "'");
    }
    FieldDefinition f = db->definition().field(slot);
    f.set_type(spec->type);
    f.set_name(spec->name);
    f.set_length(spec->length);
  }
  db->path = path;
  db->disk = StampOf(path);  // a file made meanwhile by another command is not replaced
  return context.Save(*db) ? kOk : kFailed;
}

int Check(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  if (!context.Parse(parser, arguments, 1, "check FILE")) return kUsage;
  std::string path = parser.positionalArguments().at(0).toStdString();
  auto db = context.Open(path);
  if (!db) return kFailed;
  auto original = ReadWholeFile(path);
  // Like with like: what was deciphered as the database opened is enciphered again, as a save
  // would write it.
  Bytes written = SavedImage(*db);
  if (original && *original == written) {
    std::cout << "round trip OK\n";
    return kOk;
  }
  std::size_t at = 0;
  std::size_t n = std::min(original ? original->size() : 0, written.size());
  while (at < n && (*original)[at] == written[at]) ++at;
  std::cout << "round trip differs at offset " << at << " (file "
            << (original ? original->size() : 0) << " bytes, written " << written.size()
            << " bytes)\n";
  return kFailed;
}

}  // namespace

std::vector<Command> DatabaseCommands() {
  return {
      {"info", "info FILE [--format text|json]", Info,
       "Shows the database's name, dates, record count and fields; --format json gives the "
       "schema to scripts.",
       "info Stock.PDB --format json"},
      {"list", kListUsage, List,
       "Prints the records that pass the stored filter (every record with --all) as a table, "
       "CSV, JSON or JSON Lines. --sort, --where and --limit shape the output only; the file "
       "is not changed.",
       "list Stock.PDB --fields Item,Qty --sort Qty:reverse --where \"Qty range 100 *\""},
      {"new", kNewUsage, New,
       "Creates a database with the fields given, or with fields and records from a CSV file "
       "(its header names the fields, NAME:TYPE[:LENGTH] fixes a type; - reads standard "
       "input).",
       "new Stock.PDB --field Item:Text --field Qty:Integer --field Bought:Date"},
      {"check", "check FILE", Check,
       "Reads the database and writes it again in memory; says whether every byte is the same.",
       "check Stock.PDB"},
  };
}

}  // namespace qv::cli
