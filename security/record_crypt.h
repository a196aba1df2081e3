#pragma once
// Enciphering the records of a database: the whole body after the header (mode 0), or the
// values of the fields marked for encryption with a per-record checksum (modes 1 and 2).

#include <cstdint>
#include <string_view>

#include "engine/database.h"
#include "security/safer.h"

namespace qv {

// Mode 0 on one record: bytes 23 to the end enciphered, flag 0x10 set. Records under 24 bytes,
// records without a header and records already enciphered are left alone (false).
bool EncryptRecordBody(Database& db, std::uint32_t index, const ExpandedKey& key);
// The reverse, for a record whose flag 0x10 is set; false when there is nothing to do.
bool DecryptRecordBody(Database& db, std::uint32_t index, const ExpandedKey& key);

// Enciphers the marked fields of one record under the key, re-framed so that zero bytes in the
// ciphertext cannot cut a text short, and stores the plaintext checksum in the header with flag
// 0x20. Returns how many values were enciphered; a record without a header, or one whose
// fields are enciphered already, is left alone (0).
int EncipherMarkedFields(const DatabaseDefinition& definition, Bytes& record,
                         const ExpandedKey& key);

// EncipherMarkedFields under the password's key, then a fresh verifier for the database.
// True when at least one value was enciphered.
bool EncryptRecordFields(DatabaseDefinition& definition, Bytes& record, std::string_view password);

// Deciphers the marked fields: 1 when done (or nothing was enciphered), 0 when the checksum
// does not match (a wrong password; the record is unchanged), -1 when the record's header or
// its framed values cannot be read.
int DecryptRecordFields(const DatabaseDefinition& definition, Bytes& record,
                        const ExpandedKey& key);

}  // namespace qv
