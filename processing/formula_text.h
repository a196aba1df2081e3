#pragma once
// The formula of a Calculated field written back as the formula builder reads it, so the field
// editor can show a stored program for editing: "({Unit price} * {Qty}) + 2".

#include <string>

#include "engine/schema.h"

namespace qv {

// The infix text of slot's program; empty for an empty or malformed program.
std::string FormulaInfixText(const DatabaseDefinition& definition, int slot);

}  // namespace qv
