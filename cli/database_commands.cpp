// qvdb info, list, new, check.

#include <QFileInfo>
#include <ctime>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "cli/exchange_options.h"
#include "cli/output.h"
#include "engine/text.h"
#include "processing/csv_new_database.h"

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

int Info(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  if (!context.Parse(parser, arguments, 1, "info FILE")) return kUsage;
  auto db = context.OpenSchema(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
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

int List(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption({"format", "text, tsv or json.", "format", "text"});
  parser.addOption({"numbers", "Show record numbers (text and tsv)."});
  parser.addOption({"all", "Every record, not only those that pass the filter."});
  if (!context.Parse(parser, arguments, 1, "list FILE [--format text|tsv|json] [--numbers] [--all]"))
    return kUsage;
  QString format = parser.value("format");
  TableFormat table_format = format == "tsv"    ? TableFormat::Tsv
                             : format == "json" ? TableFormat::Json
                                                : TableFormat::Text;
  if (format != "text" && format != "tsv" && format != "json") {
    context.Error("unknown format '" + format.toStdString() + "' (text, tsv or json)");
    return kUsage;
  }
  auto db = context.Open(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  bool numbers = parser.isSet("numbers") && table_format != TableFormat::Json;
  std::vector<std::uint32_t> shown = db->visible;
  if (parser.isSet("all")) {
    shown.resize(db->count());
    for (std::uint32_t i = 0; i < db->count(); ++i) shown[i] = i;
  }
  WriteTable(RecordTable(*db, shown, context.options, numbers), table_format, std::cout);
  return kOk;
}

struct FieldSpec {
  std::string name;
  FieldType type;
  unsigned length = 40;
};

std::optional<FieldSpec> ParseFieldSpec(const QString& text, std::string& problem) {
  QStringList parts = text.split(':');
  if (parts.size() < 2 || parts.size() > 3 || parts[0].isEmpty()) {
    problem = "a field is NAME:TYPE[:LENGTH], not '" + text.toStdString() + "'";
    return std::nullopt;
  }
  FieldSpec spec;
  spec.name = Utf8ToCp1252(parts[0].toStdString());
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
  std::string csv_path = parser.value("from-csv").toStdString();
  auto bytes = ReadWholeFile(csv_path);
  if (!bytes) {
    context.Error("cannot read '" + csv_path + "'");
    return kFailed;
  }
  CsvImportOptions o;
  o.separator = *separator;
  o.encoding = *encoding;
  ImportResult result;
  std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  auto db = NewDatabaseFromCsv(name, text, o, context.options, context.clock, context.prompter, result);
  if (!db) {
    context.Error(Cp1252ToUtf8(result.error));
    return kFailed;
  }
  bytes.reset();  // the records hold their own bytes: the text's memory is free for the save
  ReportImportProblems(result.problems);
  db->path = path;
  if (!context.Save(*db)) return kFailed;
  std::cout << "imported " << result.imported << " records";
  if (!result.problems.empty()) std::cout << ", refused " << result.problems.size() << " rows";
  std::cout << '\n';
  return result.problems.empty() ? kOk : kFailed;
}

int New(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file to create.");
  parser.addOption({"name", "Database name (default: the file name).", "name"});
  parser.addOption({"field", "A field NAME:TYPE[:LENGTH]; repeat for more.", "spec"});
  parser.addOption({"from-csv", "Make the fields and records from a CSV file.", "csv"});
  parser.addOption({"force", "Replace an existing file."});
  AddExchangeOptions(parser);
  const char* usage =
      "new FILE [--name NAME] (--field NAME:TYPE[:LENGTH] ... | --from-csv IN.csv [--separator C]) "
      "[--force]";
  if (!context.Parse(parser, arguments, 1, usage)) return kUsage;
  if (parser.isSet("from-csv") && parser.isSet("field")) {
    context.Error("give either --field or --from-csv");
    return kUsage;
  }
  std::string path = parser.positionalArguments().at(0).toStdString();
  if (TestForFile(path) && !parser.isSet("force")) {
    context.Error("'" + path + "' exists already (use --force to replace it)");
    return kFailed;
  }
  QStringList specs = parser.values("field");
  if (specs.size() > kFieldSlots) {
    context.Error("a database holds at most 100 fields");
    return kUsage;
  }
  std::string name = parser.isSet("name") ? parser.value("name").toStdString()
                                          : QFileInfo(QString::fromStdString(path)).completeBaseName().toStdString();
  name = Utf8ToCp1252(name);
  if (name.empty() || name.size() > 31) {
    context.Error("the database name must be 1 to 31 characters");
    return kUsage;
  }
  if (parser.isSet("from-csv")) return NewFromCsv(context, parser, path, name);
  auto db = NewDatabase(name, context.clock);
  for (int slot = 0; slot < specs.size(); ++slot) {
    std::string problem;
    auto spec = ParseFieldSpec(specs[slot], problem);
    if (!spec) {
      context.Error(problem);
      return kUsage;
    }
    if (db->definition().FindField(spec->name)) {
      context.Error("two fields are named '" + Cp1252ToUtf8(spec->name) + "'");
      return kUsage;
    }
    FieldDefinition f = db->definition().field(slot);
    f.set_type(spec->type);
    f.set_name(spec->name);
    f.set_length(spec->length);
  }
  db->path = path;
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
  Bytes written = SerializeDatabase(*db);
  if (original && *original == written) {
    std::cout << "round trip OK\n";
    return kOk;
  }
  std::size_t at = 0;
  std::size_t n = std::min(original ? original->size() : 0, written.size());
  while (at < n && (*original)[at] == written[at]) ++at;
  std::cout << "round trip differs at offset " << at << " (file " << (original ? original->size() : 0)
            << " bytes, written " << written.size() << " bytes)\n";
  return kFailed;
}

}  // namespace

std::vector<Command> DatabaseCommands() {
  return {
      {"info", "info FILE", Info},
      {"list", "list FILE [--format text|tsv|json] [--numbers] [--all]", List},
      {"new",
       "new FILE [--name NAME] (--field NAME:TYPE[:LENGTH] ... | --from-csv IN.csv [--separator C]) "
       "[--force]",
       New},
      {"check", "check FILE", Check},
  };
}

}  // namespace qv::cli
