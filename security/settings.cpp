#include "security/settings.h"

#include <algorithm>

namespace qv {

namespace {
std::uint8_t* Area(DatabaseDefinition& d) {
  return d.data() + def::kSecurityArea;
}
const std::uint8_t* Area(const DatabaseDefinition& d) {
  return d.data() + def::kSecurityArea;
}
}  // namespace

std::string_view EncryptionModeLabel(int mode) {
  switch (mode) {
    case kEncryptEntireDatabase:
      return "Encrypt Entire Database on Close";
    case kEncryptMarkedFields:
      return "Encrypt Marked Fields on Record Close";
    case kManualEncryption:
      return "Manual Encryption of Records Only";
    case kEncryptionDisabled:
      return "Disable Encryption on this Database";
    default:
      return {};
  }
}

int GetEncryptionMode(const DatabaseDefinition& definition) {
  int stored = Area(definition)[security_area::kMode];
  // 0 (never set) and anything out of range read as disabled, so no prompt ever appears for
  // a database that did not ask for encryption.
  if (stored < 1 || stored > kEncryptionModes) return kEncryptionDisabled;
  return stored - 1;
}

void SetEncryptionMode(DatabaseDefinition& definition, int mode) {
  if (mode < 0 || mode >= kEncryptionModes) mode = kEncryptionDisabled;
  Area(definition)[security_area::kMode] = static_cast<std::uint8_t>(mode + 1);
}

std::string GetAccessPassword(const DatabaseDefinition& definition) {
  return std::string(CStringAt(definition.data() + def::kAccessPassword, kAccessPasswordSize));
}

void SetAccessPassword(DatabaseDefinition& definition, std::string_view password) {
  PutCString(definition.data() + def::kAccessPassword, kAccessPasswordSize, password);
}

std::uint32_t GetAccessWord(const DatabaseDefinition& definition) {
  return GetBE32(definition.data() + def::kAccessWord);
}

void SetAccessWord(DatabaseDefinition& definition, std::uint32_t word) {
  PutBE32(definition.data() + def::kAccessWord, word);
}

bool IsDatabaseEnciphered(const DatabaseDefinition& definition) {
  return (definition.settings_flags() & kDatabaseEnciphered) != 0;
}

void SetDatabaseEnciphered(DatabaseDefinition& definition, bool on) {
  std::uint8_t flags = definition.settings_flags();
  definition.set_settings_flags(on ? flags | kDatabaseEnciphered
                                   : flags & static_cast<std::uint8_t>(~kDatabaseEnciphered));
}

Verifier GetVerifier(const DatabaseDefinition& definition) {
  const std::uint8_t* area = Area(definition);
  Verifier v;
  std::copy(area + security_area::kVerifier, area + security_area::kVerifier + kVerifierSize,
            v.bytes.begin());
  v.sum = area[security_area::kVerifierSum];
  v.present = area[security_area::kVerifierPresent] != 0;
  return v;
}

void SetVerifier(DatabaseDefinition& definition, const Verifier& verifier) {
  std::uint8_t* area = Area(definition);
  std::copy(verifier.bytes.begin(), verifier.bytes.end(), area + security_area::kVerifier);
  area[security_area::kVerifierSum] = verifier.sum;
  area[security_area::kVerifierPresent] = verifier.present ? 1 : 0;
}

void SetVerifierPresent(DatabaseDefinition& definition, bool present) {
  Area(definition)[security_area::kVerifierPresent] = present ? 1 : 0;
}

bool AnyFieldMarked(const DatabaseDefinition& definition) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (definition.field(slot).encrypted()) return true;
  return false;
}

}  // namespace qv
