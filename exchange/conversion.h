#pragma once
// Conversion of 2.x databases to the current layout: the new database takes the old one's name
// and path, the old file is kept beside it as "<name>-Old.PDB", and failures converting the
// pop-up lists or the records are reported without stopping the save.

#include <memory>
#include <optional>
#include <string>

#include "engine/workspace.h"
#include "exchange/older_format.h"
#include "platform/clock.h"
#include "platform/prompter.h"

namespace qv {

// The offer made while a file is opened; "to updated" is the program's own wording, kept.
inline constexpr const char* kConversionOffer =
    "This database file is not in the current Quorvant database format.  Would you like to "
    "updated the database to the latest format? (Y/N)";
inline constexpr const char* kConvertParentFirst =
    "This database file cannot be converted until the file %s is converted to 3.0, as the "
    "relationship between them requires the Parent database to be converted first.";
inline constexpr const char* kKeepUniqueData =
    "Use the existing data in this field for the unique values?";
inline constexpr const char* kKeepLinkData =
    "Use the existing data in this field for the link values?";
inline constexpr const char* kKeepLinkedData =
    "Use the existing data in this field for the linked values?";
inline constexpr const char* kNotOlderFormat =
    "Error: File is not a Quorvant 2.x file, cannot convert.";

// The file of the parent database that must be converted before this one: the database a
// Relationship field names, found in the same folder and still in the older layout.
std::optional<std::string> ParentToConvertFirst(const std::string& path);

// Converts the 2.x database at `path`, asking through the prompter whether Unique, Link and
// Linked fields keep their data. 1 when the new database was saved (also after a failed pop-up
// or record step, whose partial result is kept on purpose), 0 when nothing changed on disk.
// `complete`, when given, tells whether every step succeeded.
int ConvertOldDatabase(const std::string& path, Prompter& prompter, const Clock& clock,
                       bool* complete = nullptr);

struct ConvertedDatabase {
  std::unique_ptr<Database> db;
  bool popups_ok = false;
  bool records_ok = false;
};
// Steps 4 to 7 of a conversion, in memory: the settings and field definitions (asking about
// Unique, Link and Linked data), the pop-up lists and the records, each failed step reported.
ConvertedDatabase ConvertInMemory(const OldDatabase& old, Prompter& prompter, const Clock& clock);

// Where the old file is kept: its folder, then "<database name>-Old.PDB".
std::string OldCopyPath(const std::string& path, const std::string& name);

// The whole offer of the open flow: asks, checks the parent, converts. True when the file at
// `path` is now a current-format database.
bool OfferConversion(const std::string& path, Prompter& prompter, const Clock& clock);

}  // namespace qv
