#pragma once
// Filter conditions from the command line, in the filter's own terms: text fields take
// "contains", Pop-Ups "equals", numbers, dates and times a "range", Check-Boxes "checked".
// `qvdb filter set` stores one; `--where` of the reading commands applies them to the output.

#include <QString>
#include <optional>
#include <string>

#include "engine/database.h"
#include "processing/filter_dialog.h"

namespace qv::cli {

class CliContext;

enum class Want { Contains, Equals, Range, Checked, Nothing };

// What a condition on this field tests.
Want WantedOption(ConstFieldDefinition field);
// How the filter command asks for it: "--contains TEXT", "--range LOW HIGH" ...
const char* WantText(Want want);
// A condition slot as a new database holds it.
Condition BlankCondition();

// A --where text: "[not] FIELD contains TEXT", "FIELD equals TEXT", "FIELD range LOW HIGH"
// ("*" for an open end), "FIELD checked 0|1". Nothing, with the problem reported, when the text
// does not say a condition; `usage` tells a malformed text from a field that is not there.
std::optional<Condition> ConditionFromWhere(CliContext& context, const Database& db,
                                            const QString& text, bool& usage);

}  // namespace qv::cli
