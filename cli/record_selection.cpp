#include "cli/record_selection.h"

#include <algorithm>

#include "cli/conditions.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/sort.h"

namespace qv::cli {

void AddSelectionOptions(QCommandLineParser& parser) {
  parser.addOption({"all", "Every record, not only those that pass the stored filter."});
  parser.addOption({"filtered", "Only the records that pass the stored filter (the default)."});
  parser.addOption({"sort",
                    "Order the output by FIELD[:reverse]; repeat for up to three keys. The file "
                    "keeps its own order.",
                    "key"});
  parser.addOption({"where",
                    "Only records where \"FIELD contains TEXT\", \"FIELD equals TEXT\", \"FIELD "
                    "range LOW HIGH\" or \"FIELD checked 0|1\" (\"not \" before it inverts); "
                    "repeat for up to six.",
                    "condition"});
  parser.addOption({"limit", "At most N records.", "N"});
}

namespace {

// Orders the selected records by the --sort keys, set in the open copy's definition. The record
// table keeps the file's order, so record numbers stay those that set and delete take.
bool ApplySort(CliContext& context, Database& db, const QStringList& texts,
               std::vector<std::uint32_t>& records, int& code) {
  code = kUsage;
  if (texts.size() > kSortKeys) {
    context.UsageError("--sort takes at most three keys");
    return false;
  }
  for (int k = 0; k < kSortKeys; ++k) {
    SortKey key;
    if (k < texts.size()) {
      QString name = texts[k];
      bool forward = true;
      qsizetype colon = name.lastIndexOf(':');
      if (colon > 0 && (name.mid(colon + 1) == "reverse" || name.mid(colon + 1) == "forward")) {
        forward = name.mid(colon + 1) == "forward";
        name = name.left(colon);
      }
      auto slot = db.definition().FindField(Utf8ToCp1252(name.toStdString()));
      if (!slot) {
        context.Error("no field named '" + name.toStdString() + "'");
        code = kFailed;
        return false;
      }
      if (!CanSortOnField(db, *slot, true, context.prompter)) {
        code = kFailed;
        return false;
      }
      key = SortKey{*slot, forward};
    }
    db.definition().set_sort_key(k, key);
  }
  std::stable_sort(records.begin(), records.end(), [&db](std::uint32_t a, std::uint32_t b) {
    return CompareRecords(db, a, b) < 0;
  });
  return true;
}

// Keeps the records that meet every --where condition: the open copy's filter is replaced by
// them for the test.
bool ApplyWhere(CliContext& context, Database& db, const QStringList& texts,
                std::vector<std::uint32_t>& records, int& code) {
  if (texts.size() > kConditions) {
    code = kUsage;
    context.UsageError("--where takes at most six conditions");
    return false;
  }
  std::vector<Condition> conditions;
  for (const QString& text : texts) {
    bool usage = true;
    auto c = ConditionFromWhere(context, db, text, usage);
    if (!c) {
      code = usage ? kUsage : kFailed;
      if (usage) context.UsageError("");
      return false;
    }
    conditions.push_back(*c);
  }
  for (int i = 0; i < kConditions; ++i)
    db.definition().set_condition(
        i, i < static_cast<int>(conditions.size()) ? conditions[i] : BlankCondition());
  std::erase_if(records, [&](std::uint32_t p) { return !RecordPassesFilter(db, p); });
  return true;
}

}  // namespace

std::optional<std::vector<std::uint32_t>> SelectRecords(CliContext& context, Database& db,
                                                        const QCommandLineParser& parser,
                                                        int& code) {
  code = kUsage;
  if (parser.isSet("all") && parser.isSet("filtered")) {
    context.UsageError("choose one of --all and --filtered");
    return std::nullopt;
  }
  std::optional<std::uint32_t> limit;
  if (parser.isSet("limit")) {
    bool ok = false;
    limit = parser.value("limit").toUInt(&ok);
    if (!ok) {
      context.UsageError("--limit takes a number of records, not '" +
                         parser.value("limit").toStdString() + "'");
      return std::nullopt;
    }
  }
  std::vector<std::uint32_t> records = db.visible;
  if (parser.isSet("all")) {
    records.resize(db.count());
    for (std::uint32_t i = 0; i < db.count(); ++i) records[i] = i;
  }
  if (parser.isSet("where") && !ApplyWhere(context, db, parser.values("where"), records, code))
    return std::nullopt;
  if (parser.isSet("sort") && !ApplySort(context, db, parser.values("sort"), records, code))
    return std::nullopt;
  if (limit && records.size() > *limit) records.resize(*limit);
  return records;
}

void ApplyAllOption(Database& db, const QCommandLineParser& parser) {
  if (!parser.isSet("all")) return;
  for (int i = 0; i < kConditions; ++i) db.definition().set_condition(i, BlankCondition());
  RebuildFilteredList(db);
}

std::optional<std::vector<int>> SelectFields(CliContext& context, const Database& db,
                                             const QCommandLineParser& parser, int& code) {
  if (!parser.isSet("fields")) return UsedFieldsInDisplayOrder(db.definition());
  std::vector<int> chosen;
  for (const QString& name : parser.value("fields").split(',')) {
    auto slot = db.definition().FindField(Utf8ToCp1252(name.trimmed().toStdString()));
    if (!slot) {
      context.Error("no field named '" + name.trimmed().toStdString() + "'");
      code = kFailed;
      return std::nullopt;
    }
    chosen.push_back(*slot);
  }
  return chosen;
}

}  // namespace qv::cli
