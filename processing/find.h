#pragma once
// Find: the first record, in table order from a starting record, whose chosen field (or any
// field) matches a search text, among the records that pass the filter.

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"

namespace qv {

// The search settings, kept per database in record 0 (find field, case flag, text, option).
struct FindSettings {
  std::string text;  // at most 34 characters are kept
  int field = -1;    // slot searched, -1 for all fields
  bool case_sensitive = false;
  bool begins_with = false;
};

FindSettings LoadFindSettings(const DatabaseDefinition& definition);
void StoreFindSettings(DatabaseDefinition& definition, const FindSettings& settings);

struct FindMatch {
  int position = -1;  // table position of the record
  int slot = -1;      // the field that matched
  int column = -1;    // its column in the record list, -1 when it is not a column
};

// Fields the user's access settings hide; such a field never matches. Empty: nothing hidden.
using FieldHidden = std::function<bool(const Database& db, int slot)>;

// Whether one field of a record matches. `search` is compared as given when case sensitive and
// in lower case otherwise.
bool FieldMatches(const Database& db, std::span<const std::uint8_t> record, int slot,
                  std::string_view search, bool case_sensitive, bool begins_with,
                  const FormatOptions& options, const FieldHidden& hidden = {});

// Searches from table position `start` (below 0 counts as 0), in that record from field slot
// `start_field` (later records from slot 0). Nothing when no record matches; with `report` the
// user is told "Not Found in Database!". There is no wrap-around.
std::optional<FindMatch> FindRecord(const Database& db, const FindSettings& settings, int start,
                                    int start_field, bool report, const FormatOptions& options,
                                    Prompter& prompter, const FieldHidden& hidden = {});

// Find Again: continues after the last match - with all fields searched, at the next field of
// the same record; with one field, at the next record.
std::optional<FindMatch> FindAgain(const Database& db, const FindSettings& settings,
                                   const FindMatch& last, bool report, const FormatOptions& options,
                                   Prompter& prompter, const FieldHidden& hidden = {});

// The column a field takes in the record list: its rank among the shown columns in display
// order; -1 when it is not a column.
int FieldColumn(const DatabaseDefinition& definition, int slot);

}  // namespace qv
