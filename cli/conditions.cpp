#include "cli/conditions.h"

#include <QStringList>

#include "cli/cli_context.h"
#include "engine/text.h"

namespace qv::cli {

Want WantedOption(ConstFieldDefinition field) {
  switch (field.type()) {
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
    case kLinked:
      return Want::Contains;
    case kPopUp:
      return Want::Equals;
    case kInteger:
    case kUnique:
    case kFloat:
    case kDate:
    case kTime:
    case kCalculated:
      return Want::Range;
    case kCheckBox:
      return Want::Checked;
    default:
      return Want::Nothing;
  }
}

const char* WantText(Want want) {
  switch (want) {
    case Want::Contains:
      return "--contains TEXT";
    case Want::Equals:
      return "--equals TEXT";
    case Want::Range:
      return "--range LOW HIGH";
    case Want::Checked:
      return "--checked 0|1";
    case Want::Nothing:
      return "no value (conditions on it always hold)";
  }
  return "";
}

Condition BlankCondition() {
  Condition c;
  c.upper = 65000;  // as in a new database
  return c;
}

namespace {

const char* WhereWord(Want want) {
  switch (want) {
    case Want::Contains:
      return "contains";
    case Want::Equals:
      return "equals";
    case Want::Range:
      return "range";
    case Want::Checked:
      return "checked";
    case Want::Nothing:
      return "";
  }
  return "";
}

std::optional<Want> WantOfWord(const QString& word) {
  for (Want w : {Want::Contains, Want::Equals, Want::Range, Want::Checked})
    if (word == WhereWord(w)) return w;
  return std::nullopt;
}

}  // namespace

std::optional<Condition> ConditionFromWhere(CliContext& context, const Database& db,
                                            const QString& text, bool& usage) {
  usage = true;
  QStringList words = text.split(' ', Qt::SkipEmptyParts);
  FilterConditionControls controls;
  controls.enabled = true;
  if (!words.isEmpty() && words.front() == "not") {
    controls.not_box = true;
    words.removeFirst();
  }
  // The field's name may hold blanks: it is everything before the first test word after it.
  qsizetype at = 1;
  while (at < words.size() && !WantOfWord(words[at])) ++at;
  if (at >= words.size()) {
    context.Error("--where takes \"FIELD contains|equals|range|checked ...\", not '" +
                  text.toStdString() + "'");
    return std::nullopt;
  }
  QString name = words.mid(0, at).join(' ');
  auto slot = db.definition().FindField(Utf8ToCp1252(name.toStdString()));
  if (!slot) {
    usage = false;
    context.Error("no field named '" + name.toStdString() + "'");
    return std::nullopt;
  }
  Want want = WantedOption(db.definition().field(*slot));
  QStringList values = words.mid(at + 1);
  if (*WantOfWord(words[at]) != want || (want == Want::Range && values.size() != 2) ||
      (want == Want::Checked && (values.size() != 1 || (values[0] != "0" && values[0] != "1")))) {
    context.Error(name.toStdString() + " is a " +
                  std::string(FieldTypeName(db.definition().field(*slot).type())) +
                  " field: say \"" + name.toStdString() + " " + WhereWord(want) +
                  (want == Want::Range     ? " LOW HIGH\" (* for an open end)"
                   : want == Want::Checked ? " 0|1\""
                                           : " TEXT\""));
    return std::nullopt;
  }
  controls.field = *slot;
  if (want == Want::Range) {
    controls.lower = values[0] == "*" ? "" : Utf8ToCp1252(values[0].toStdString());
    controls.upper = values[1] == "*" ? "" : Utf8ToCp1252(values[1].toStdString());
  } else if (want == Want::Checked) {
    controls.checked = values[0] == "1";
  } else {
    controls.must_contain = Utf8ToCp1252(values.join(' ').toStdString());
  }
  Condition c = BlankCondition();
  std::string problem;
  if (!ConditionFromTexts(db, controls, context.options(), c, problem)) {
    context.Error(Cp1252ToUtf8(problem));
    return std::nullopt;
  }
  c.in_use = 1;
  c.join = controls.not_box ? 0x01 : 0;
  return c;
}

}  // namespace qv::cli
