#pragma once
// 64-bit cipher feedback over SAFER SK-128, in place and without padding. The register starts
// from the first 8 bytes of the expanded key every time: there is no initialisation vector, so
// equal plaintexts give equal ciphertexts under one key. That is the file format's rule.

#include <cstddef>
#include <cstdint>

#include "engine/bytes.h"
#include "security/safer.h"

namespace qv {

// In place over `length` bytes; a length of 0 changes nothing.
void CfbEncrypt(std::uint8_t* data, std::size_t length, const ExpandedKey& key);
void CfbDecrypt(std::uint8_t* data, std::size_t length, const ExpandedKey& key);

// The same over bytes [start, start + length) of a stored record. False, and the record
// unchanged, when that range does not lie inside it.
bool CfbEncryptRecord(Bytes& record, std::size_t start, std::size_t length, const ExpandedKey& key);
bool CfbDecryptRecord(Bytes& record, std::size_t start, std::size_t length, const ExpandedKey& key);

}  // namespace qv
