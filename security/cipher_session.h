#pragma once
// Enciphered records while a database is open: readers get them deciphered in memory under
// the password given once per command or session, and every save enciphers them again, with
// the records stored since the open, as the database's encryption mode says.

#include <cstdint>
#include <optional>

#include "engine/database.h"
#include "security/access.h"

namespace qv {

// The store operation's step for the encryption mode: a record just stored (added, edited,
// imported, received) is enciphered before the next save - in mode 1 always, in mode 2 when it
// is marked for manual encryption. Mode 0 enciphers every body on close anyway.
void NoteStoredRecord(Database& db, std::uint32_t number);

// Deciphers in memory every record whose marked fields are enciphered, under the session's
// password or one asked for (the verifier refusing it says so and asks again). Records whose
// checksum or values do not fit that password stay enciphered; readers leave them out. The
// deciphered ones are enciphered again before a save. Returns how many stay enciphered.
std::size_t DecipherForReading(Database& db, SecurityUi& ui);

// Before the file is written: in mode 0 every record body, in modes 1 and 2 the records
// deciphered in memory or noted as stored, enciphered under the session's password (asked
// when there is none, AskEncipherPassword). The verifier is kept when it matches that password,
// else written afresh. False when a password was needed and none was given: nothing may be
// written then.
bool EncipherBeforeSave(Database& db, SecurityUi& ui);

// The bytes a save would write now, the database itself untouched: what was deciphered in
// memory is enciphered again under the session's password (without one nothing was deciphered).
Bytes SavedImage(const Database& db);

}  // namespace qv
