#include "cli/record_edit.h"

#include <algorithm>

#include "engine/format.h"
#include "engine/text.h"
#include "processing/store.h"

namespace qv::cli {

bool ApplyAssignments(CliContext& context, const Database& db, const QStringList& assignments,
                      std::uint32_t number, RecordValues& values) {
  for (const QString& assignment : assignments) {
    qsizetype eq = assignment.indexOf('=');
    if (eq <= 0) {
      context.Error("expected FIELD=VALUE, not '" + assignment.toStdString() + "'");
      return false;
    }
    std::string field = Utf8ToCp1252(assignment.left(eq).toStdString());
    auto slot = db.definition().FindField(field);
    if (!slot) {
      context.Error("no field named '" + Cp1252ToUtf8(field) + "'");
      return false;
    }
    ConstFieldDefinition f = db.definition().field(*slot);
    const bool fresh = number == kNewRecord;
    std::string text =
        context.Stored(assignment.mid(eq + 1), {fresh ? nullptr : "record", number + 1, f.name()});
    auto value = ParseValue(f, db.schema.fields[*slot], text, context.options);
    if (!value) {
      context.Error(StringPrintf("'%s' is not a valid %s value for %s", Cp1252ToUtf8(text).c_str(),
                                 std::string(FieldTypeName(f.type())).c_str(),
                                 Cp1252ToUtf8(f.name()).c_str()));
      return false;
    }
    values.Set(*slot, std::move(*value));
  }
  return true;
}

std::optional<std::uint32_t> StoreEditedRecord(CliContext& context, Database& db,
                                               const RecordValues& values, std::uint32_t number) {
  auto stored = StoreRecordSorted(db, values, number, true, context.prompter);
  if (!stored) context.Error("the database holds 65,000 records already");
  return stored;
}

bool DeleteEditedRecords(CliContext& context, Database& db, std::vector<std::uint32_t> numbers) {
  DeleteRecordsAndRecalculate(db, std::move(numbers), context.prompter);
  return true;
}

}  // namespace qv::cli
