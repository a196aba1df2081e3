#pragma once
// The "Edit Filters" dialog's rule for storing what the user set: which control each condition
// bit is read from, the limit boxes' defaults, and typed limits turned into condition bytes.

#include <array>
#include <string>

#include "engine/database.h"
#include "platform/locale.h"

namespace qv {

// One condition's controls.
struct FilterConditionControls {
  bool enabled = false;      // "Filter N Enabled"
  int field = -1;            // "Select Field": a slot, -1 for none
  std::string must_contain;  // text fields and Linked; the value of a Pop-Up
  std::string lower, upper;  // "Lower Limit" / "Upper Limit" as typed; empty = open end
  bool checked = false;      // the state wanted of a Check-Box
  bool not_box = false;      // "NOT"
  bool open_group = false;   // "("
  bool close_group = false;  // ")"
};

struct FilterDialogControls {
  std::array<FilterConditionControls, kConditions> conditions;
  // The "OR" radio buttons between conditions k+1 and k+2: controls 1024, (the second pair),
  // 1076, 1052, 1072.
  std::array<bool, kConditions - 1> or_buttons{};
};

// The defaults and length limit put in the limit boxes when a field is chosen: Integer (and
// Unique) "0" and "65535" with at most 11 characters; Float and Calculated "0.0" and
// "99999.9999" with at most 16; other types empty boxes of 39 characters.
struct LimitDefaults {
  std::string lower, upper;
  int max_chars = 39;
};
LimitDefaults FilterLimitDefaults(ConstFieldDefinition field);

// The controls as they stand when the dialog opens on the current conditions (view -1) or on
// those of view `view`.
FilterDialogControls FilterControlsFromDatabase(const Database& db, const FormatOptions& options,
                                                int view = -1);

// Sets `c`'s field and values from typed texts, by the field's type (dates and times parsed as
// typed entry parses them). False with `problem` set when a text is not a valid limit.
bool ConditionFromTexts(const Database& db, const FilterConditionControls& controls,
                        const FormatOptions& options, Condition& c, std::string& problem);

// On OK: writes the six conditions (values only from enabled ones) and rebuilds the filtered
// list; with a view (not -1) the conditions go into that view and the list stays as it is.
// False with `problem` naming the condition when a limit is invalid; nothing is stored.
bool StoreFilterDialog(Database& db, const FilterDialogControls& controls,
                       const FormatOptions& options, std::string& problem, int view = -1);

}  // namespace qv
