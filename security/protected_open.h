#pragma once
// The security steps around opening and closing databases and records: the Open Database
// check, the encryption password on open, enciphering on database close (mode 0) and on
// record close (mode 1), and deciphering a record as it is opened. The application and qvdb
// call these same operations with their own prompters.

#include <cstdint>
#include <string>

#include "engine/database.h"
#include "security/access.h"

namespace qv {

// Both wordings are the program's own: the open prompt has one space before "Please", the
// whole-database decrypt two.
inline constexpr const char* kWrongPasswordOnOpen =
    "ERROR: Password does not properly decrypt this data. Please Try again.";
inline constexpr const char* kWrongPasswordOnDecrypt =
    "ERROR: Password does not properly decrypt this data.  Please Try again.";
inline constexpr const char* kRecordPasswordMismatch =
    "Password entered does not seem to match last password given to a record in this database.";
inline constexpr const char* kContinueAnyway = " Continue anyway?";
inline constexpr const char* kRecordNotDecrypted =
    "Error: Supplied Password does not properly Decrypt Record!";

// The password to encipher under: the one given in this session, else asked for - checked
// against the verifier ("... Continue anyway?" when it does not match; No asks again), or,
// where the database has no verifier yet, a new password asked twice. It becomes the
// session's password. False on Cancel.
bool AskEncipherPassword(Database& db, SecurityUi& ui);

// The Open Database check on a database's settings: full access goes on, password required
// asks for the access password (Cancel stops), anything else says "Action Not Allowed for this
// Database!".
bool CheckOpenAccess(const DatabaseDefinition& definition, SecurityUi& ui);

// For a database whose enciphered bit is set: asks for the encryption password until the
// verifier accepts it and, in mode 0, every record body it deciphers reads as values (false on
// Cancel), keeps it as the session's password, then clears the enciphered bit and the
// verifier-present byte in memory; closing enciphers it again.
bool UnlockEncipheredDatabase(Database& db, SecurityUi& ui);

// Loads the file and runs both steps above. A database enciphered record by record (modes 1
// and 2) keeps its verifier present while open, so a mistyped password is still caught
// (docs/DIFFERENCES.md). On any failure or refusal `db` is untouched.
bool OpenProtectedDatabase(Database& db, const std::string& path, SecurityUi& ui,
                           LoadParts parts = LoadParts::All);

enum class EncipherResult { kNotNeeded, kEnciphered, kCancelled };

// In mode 0, before the database is saved and closed: enciphers every record body under the
// session's password (AskEncipherPassword), keeping the verifier the database opened with when
// that password matches it. Not needed in other modes or when the bodies are enciphered.
EncipherResult EncipherOnDatabaseClose(Database& db, SecurityUi& ui);

// Enciphers the marked fields of one record under a password the user gives, asking "Continue
// anyway?" when it does not match the verifier (No asks for the password again). Not needed
// when no field is marked or the record's fields are enciphered already.
EncipherResult EncipherRecord(Database& db, std::uint32_t index, SecurityUi& ui);
// EncipherRecord in mode 1 only.
EncipherResult EncipherOnRecordClose(Database& db, std::uint32_t index, SecurityUi& ui);

// Before a record is edited: a record whose marked fields are enciphered is deciphered under
// a password the user gives. False when cancelled or when the password does not decipher it
// ("Error: Supplied Password does not properly Decrypt Record!"); the record is unchanged then.
bool DecipherOnRecordOpen(Database& db, std::uint32_t index, SecurityUi& ui);

// Asks for the password and deciphers the whole database (DecryptDatabase), asking again after
// each password the verifier refuses. 1 done, 0 not done or cancelled.
int DecryptDatabaseWithPrompt(Database& db, bool include_manual, SecurityUi& ui);

// Asks for the password and enciphers the whole database (EncryptDatabase); in modes 1 and 2
// a password that does not match the verifier asks "Continue anyway?". False when cancelled or
// encryption is disabled.
bool EncryptDatabaseWithPrompt(Database& db, SecurityUi& ui);

}  // namespace qv
