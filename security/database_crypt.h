#pragma once
// Enciphering and deciphering a whole database under its encryption mode, and the password
// verifier that tells a wrong password before any record is touched.

#include <string_view>

#include "engine/database.h"
#include "security/settings.h"

namespace qv {

// Nine random bytes enciphered under the password's key, with the sum of the plain bytes;
// marks the verifier present.
void WriteVerifier(DatabaseDefinition& definition, std::string_view password);
// True when no verifier was ever written, or when the password deciphers it to its sum. The
// test is 8 bits wide (one wrong password in 256 passes); the record checksums catch the rest.
bool CheckVerifier(const DatabaseDefinition& definition, std::string_view password);
// Whether the password deciphers this verifier to its sum (present or not).
bool VerifierAccepts(const Verifier& verifier, std::string_view password);

// Enciphers every record per the database's mode: 0 the bodies, 1 the marked fields, 2 the
// marked fields of records marked for manual encryption (the mark is then cleared). Switches
// the record header on first when it is off. Then, when there was a record, marks the database
// changed and writes a fresh verifier (mode 0 also sets the database-enciphered bit).
// False in mode 3.
bool EncryptDatabase(Database& db, std::string_view password);

// Deciphers every record per the mode. -1 when the verifier refuses the password (nothing
// changed); 0 in mode 3 or when some record's checksum did not match (that record stays
// enciphered); 1 when done. Mode 2 touches records only with `include_manual`, and marks
// each deciphered record for manual encryption again.
int DecryptDatabase(Database& db, std::string_view password, bool include_manual);

// Whether any record of the database is enciphered (its body or its marked fields).
bool AnyRecordEnciphered(const Database& db);

}  // namespace qv
