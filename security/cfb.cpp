#include "security/cfb.h"

#include <cstring>

namespace qv {

namespace {

// The register's first 8 bytes: the round count and the first 7 bytes of subkey 1.
inline void StartRegister(std::uint8_t* reg, const ExpandedKey& key) {
  std::memcpy(reg, key.data(), kSaferBlockSize);
}

}  // namespace

void CfbEncrypt(std::uint8_t* data, std::size_t length, const ExpandedKey& key) {
  std::uint8_t reg[kSaferBlockSize];
  StartRegister(reg, key);
  while (length > 0) {
    std::size_t chunk = length < kSaferBlockSize ? length : kSaferBlockSize;
    EncryptBlock(reg, key);
    for (std::size_t i = 0; i < chunk; ++i) reg[i] = data[i] ^= reg[i];
    data += chunk;
    length -= chunk;
  }
}

void CfbDecrypt(std::uint8_t* data, std::size_t length, const ExpandedKey& key) {
  std::uint8_t reg[kSaferBlockSize];
  StartRegister(reg, key);
  while (length > 0) {
    std::size_t chunk = length < kSaferBlockSize ? length : kSaferBlockSize;
    EncryptBlock(reg, key);
    for (std::size_t i = 0; i < chunk; ++i) {
      std::uint8_t cipher = data[i];
      data[i] = cipher ^ reg[i];
      reg[i] = cipher;
    }
    data += chunk;
    length -= chunk;
  }
}

bool CfbEncryptRecord(Bytes& record, std::size_t start, std::size_t length,
                      const ExpandedKey& key) {
  if (start > record.size() || length > record.size() - start) return false;
  CfbEncrypt(record.data() + start, length, key);
  return true;
}

bool CfbDecryptRecord(Bytes& record, std::size_t start, std::size_t length,
                      const ExpandedKey& key) {
  if (start > record.size() || length > record.size() - start) return false;
  CfbDecrypt(record.data() + start, length, key);
  return true;
}

}  // namespace qv
