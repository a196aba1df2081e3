#include "cli/exchange_options.h"

#include <iostream>

#include "cli/command.h"
#include "engine/text.h"

namespace qv::cli {

void AddExchangeOptions(QCommandLineParser& parser) {
  parser.addOption({"separator", "Column separator: one character, or tab.", "C", ","});
  parser.addOption(
      {"encoding", "utf-8 (default) or cp1252 (the bytes as stored).", "name", "utf-8"});
}

std::optional<char> SeparatorOption(CliContext& context, const QCommandLineParser& parser) {
  std::string text = parser.value("separator").toStdString();
  if (text == "tab" || text == "\\t") return '\t';
  if (text.size() != 1 || text[0] == '"' || text[0] == '\n' || text[0] == '\r') {
    context.UsageError("the separator must be one character other than a quote or a line break");
    return std::nullopt;
  }
  return text[0];
}

std::optional<TextEncoding> EncodingOption(CliContext& context, const QCommandLineParser& parser) {
  QString name = parser.value("encoding").toLower();
  if (name == "utf-8" || name == "utf8") return TextEncoding::Utf8;
  if (name == "cp1252" || name == "windows-1252") return TextEncoding::Cp1252;
  context.UsageError("unknown encoding '" + name.toStdString() + "' (utf-8 or cp1252)");
  return std::nullopt;
}

void ReportImportProblems(const std::vector<ImportProblem>& problems) {
  for (const ImportProblem& p : problems)
    std::cerr << "line " << p.line << ": " << Cp1252ToUtf8(p.reason) << '\n';
}

int SaveImport(CliContext& context, Database& db, const ImportResult& result, bool new_file) {
  ReportImportProblems(result.problems);
  context.text.Merge(result.text);
  const std::size_t refused = result.problems.size();
  if (context.strict && refused > 0) {
    context.Error(StringPrintf("nothing was imported: %zu of %zu rows were refused (--strict)",
                               refused, refused + result.imported));
    return kFailed;
  }
  if ((result.imported > 0 || new_file) && !context.Save(db)) return kFailed;
  std::cout << "imported " << result.imported << " records";
  if (refused > 0) std::cout << ", refused " << refused << " rows";
  std::cout << '\n';
  return refused == 0 ? kOk : kFailed;
}

}  // namespace qv::cli
