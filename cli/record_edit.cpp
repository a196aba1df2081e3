#include "cli/record_edit.h"

#include <algorithm>

#include "engine/format.h"
#include "engine/text.h"
#include "exchange/alarm_settings.h"
#include "exchange/alarms.h"
#include "exchange/external.h"
#include "platform/qt/qt_paths.h"
#include "platform/qt/qt_settings.h"
#include "processing/store.h"

namespace qv::cli {

namespace {

// Outside text quoted in a message: long values are cut, so a message stays a line.
std::string Quoted(const std::string& utf8) {
  constexpr std::size_t kShown = 40;
  if (utf8.size() <= kShown) return "'" + utf8 + "'";
  std::size_t cut = kShown;
  while (cut > 0 && (static_cast<unsigned char>(utf8[cut]) & 0xC0) == 0x80) --cut;
  return "'" + utf8.substr(0, cut) + "...'";
}

// Texts longer than the field takes, told as such rather than as a bad value.
bool TooLong(ConstFieldDefinition f, const std::string& stored) {
  switch (f.type()) {
    case kText:
    case kDbPopup:
    case kNote:
    case kExternal:
      return stored.size() + 1 > std::max<std::size_t>(LargestValueSize(f), 1);
    default:
      return false;
  }
}

}  // namespace

int ApplyAssignments(CliContext& context, const Database& db, const QStringList& assignments,
                     std::uint32_t number, RecordValues& values) {
  for (const QString& assignment : assignments) {
    qsizetype eq = assignment.indexOf('=');
    if (eq <= 0)
      return context.UsageError("expected FIELD=VALUE, not " + Quoted(assignment.toStdString()));
    std::string field = Utf8ToCp1252(assignment.left(eq).toStdString());
    auto slot = db.definition().FindField(field);
    if (!slot) {
      context.Error("no field named " + Quoted(Cp1252ToUtf8(field)));
      return kFailed;
    }
    ConstFieldDefinition f = db.definition().field(*slot);
    const bool fresh = number == kNewRecord;
    std::string text =
        context.Stored(assignment.mid(eq + 1), {fresh ? nullptr : "record", number + 1, f.name()});
    auto value = ParseValue(f, db.schema.fields[*slot], text, context.options());
    if (!value && TooLong(f, text)) {
      context.Error(
          StringPrintf("the value for %s is %zu characters long, longer than the "
                       "field's limit of %zu",
                       Cp1252ToUtf8(f.name()).c_str(), text.size(),
                       std::max<std::size_t>(LargestValueSize(f), 1) - 1));
      return kFailed;
    }
    if (!value) {
      context.Error(StringPrintf(
          "%s is not a valid %s value for %s", Quoted(Cp1252ToUtf8(text)).c_str(),
          std::string(FieldTypeName(f.type())).c_str(), Cp1252ToUtf8(f.name()).c_str()));
      return kFailed;
    }
    values.Set(*slot, std::move(*value));
  }
  return kOk;
}

std::optional<std::uint32_t> RecordNumber(CliContext& context, const Database& db,
                                          const QString& text, int& code) {
  bool ok = false;
  uint n = text.toUInt(&ok);
  if (!ok || n == 0) {
    code = context.UsageError("a record number counts from 1, not '" + text.toStdString() + "'");
    return std::nullopt;
  }
  if (n > db.count()) {
    context.Error("no record " + text.toStdString() + " (the database holds " +
                  std::to_string(db.count()) + ")");
    code = kFailed;
    return std::nullopt;
  }
  return n - 1;
}

std::optional<std::uint32_t> StoreEditedRecord(CliContext& context, Database& db,
                                               const RecordValues& values, std::uint32_t number) {
  // External fields' plug-ins see the record before it is stored, as in the record editor.
  RecordValues plugged = values;
  CallExternalFields({QtPaths().DataFolder()}, kSaveExternal, db,
                     static_cast<std::uint16_t>(number), plugged);
  auto stored = StoreRecordSorted(db, plugged, number, true, context.prompter);
  if (!stored) context.Error("the database holds 65,000 records already");
  // As in the record editor: with automatic alarms the record's date and time set its alarm.
  if (stored && ReadAlarmSettings(db.definition()).automatic) {
    QtSettings settings;
    ApplyAutomaticAlarm(settings, db, *stored, context.clock.LocalNow());
  }
  return stored;
}

bool DeleteEditedRecords(CliContext& context, Database& db, std::vector<std::uint32_t> numbers) {
  DeleteRecordsAndRecalculate(db, std::move(numbers), context.prompter);
  return true;
}

}  // namespace qv::cli
