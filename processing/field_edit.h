#pragma once
// Changing a database's schema: adding, renaming, retyping, reordering and deleting fields, and
// their per-type settings. What a change would cost (values that cannot be kept, sort keys,
// conditions and formulas that must follow) is worked out before anything is changed, so the
// caller can ask first; the field editor and `qvdb field` share these rules.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/database.h"
#include "platform/prompter.h"

namespace qv {

inline constexpr std::size_t kMaxFieldName = 19;

// What a change would do, found before it is made.
struct FieldChangeImpact {
  std::string refusal;              // not empty: the change cannot be made; why
  std::uint32_t lost = 0;           // values that cannot be kept and become empty
  std::uint32_t altered = 0;        // values kept in part: texts cut, numbers rounded
  std::vector<std::string> fixups;  // sort keys, conditions, views and formulas that follow
  bool NeedsConsent() const { return lost > 0 || altered > 0; }
  // One paragraph naming the counts and the fix-ups (Windows-1252, like field names).
  std::string Describe(std::string_view field_name) const;
};

// Why a name cannot name field `slot` (empty, too long, or another field's), or "" when it can.
std::string FieldNameProblem(const DatabaseDefinition& definition, std::string_view name, int slot);

// Adds a field at `position` of the display order (0 first; past the end: last) in the first
// free slot; existing records take the field's default value (a Unique field numbers them).
// The new slot, or nothing with the reason in `problem`.
std::optional<int> AddField(Database& db, std::string_view name, FieldType type, unsigned length,
                            int position, std::string& problem);

std::string RenameField(Database& db, int slot, std::string_view name);

// Changing the type and length of a field (length 0 keeps it). Every value is converted as far
// as the two types allow, reading and writing texts in `options`' format.
FieldChangeImpact AssessTypeChange(const Database& db, int slot, FieldType type, unsigned length,
                                   const FormatOptions& options);
// Makes the change; values that cannot be kept become empty. Refused changes do nothing.
bool ChangeFieldType(Database& db, int slot, FieldType type, unsigned length,
                     const FormatOptions& options, Prompter& prompter);

FieldChangeImpact AssessDelete(const Database& db, int slot);
// Deletes the field: its values are removed from every record, its slot returns to the
// defaults of a fresh slot, and sort keys, filter conditions (the current ones and the views'),
// formulas and conditional fields that name it are cleared.
bool DeleteField(Database& db, int slot, Prompter& prompter);

// Moves a used field to `position` among the used fields in display order (0 first).
bool MoveField(Database& db, int slot, int position);
// The position of a used field among the used fields in display order, or -1.
int FieldPosition(const DatabaseDefinition& definition, int slot);

// Per-type settings.
void SetPopupItems(Database& db, int slot, const std::vector<std::string>& items);
// Parses `text` as a value of the field and keeps it as the default of new records ("" clears
// it). The problem, or "".
std::string SetDefaultText(Database& db, int slot, std::string_view text,
                           const FormatOptions& options);
std::string DefaultText(const Database& db, int slot, const FormatOptions& options);
// Marks or unmarks a field for encryption; refused while a record holds enciphered fields.
std::string SetFieldEncrypted(Database& db, int slot, bool on);
// After formulas or conditional settings changed: every computed value is brought up to date.
void RecalculateAll(Database& db, Prompter& prompter);

}  // namespace qv
