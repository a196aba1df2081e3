#pragma once
// Typed access to the security settings kept in record 0: the access password, the access
// permission word, the database-enciphered bit, and the security area (encryption mode and
// password verifier). docs/FORMAT.md, "Security", gives the byte layout.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/schema.h"

namespace qv {

// The encryption modes in the order of the security settings dialog's radio buttons.
enum EncryptionMode : int {
  kEncryptEntireDatabase = 0,  // "Encrypt Entire Database on Close"
  kEncryptMarkedFields = 1,    // "Encrypt Marked Fields on Record Close"
  kManualEncryption = 2,       // "Manual Encryption of Records Only"
  kEncryptionDisabled = 3,     // "Disable Encryption on this Database"
};
inline constexpr int kEncryptionModes = 4;
// The dialog label of a mode; empty for anything else.
std::string_view EncryptionModeLabel(int mode);

namespace security_area {
inline constexpr std::size_t kMode = 0;          // mode + 1; 0 = never set (disabled)
inline constexpr std::size_t kVerifier = 1;      // 9 enciphered bytes
inline constexpr std::size_t kVerifierSum = 10;  // sum of the 9 plaintext bytes, mod 256
inline constexpr std::size_t kVerifierPresent = 11;
}  // namespace security_area

inline constexpr std::size_t kAccessPasswordSize = 40;  // with its NUL
inline constexpr std::size_t kMaxPasswordLength = kAccessPasswordSize - 1;
inline constexpr std::uint8_t kDatabaseEnciphered = 0x10;
inline constexpr std::size_t kVerifierSize = 9;

struct Verifier {
  std::array<std::uint8_t, kVerifierSize> bytes{};
  std::uint8_t sum = 0;
  bool present = false;
};

// A new database reads as mode 3 (disabled): the stored byte is 0 until a mode is chosen.
int GetEncryptionMode(const DatabaseDefinition& definition);
void SetEncryptionMode(DatabaseDefinition& definition, int mode);

std::string GetAccessPassword(const DatabaseDefinition& definition);
// Cut to 39 characters, the edit field's limit.
void SetAccessPassword(DatabaseDefinition& definition, std::string_view password);

std::uint32_t GetAccessWord(const DatabaseDefinition& definition);
void SetAccessWord(DatabaseDefinition& definition, std::uint32_t word);

bool IsDatabaseEnciphered(const DatabaseDefinition& definition);
void SetDatabaseEnciphered(DatabaseDefinition& definition, bool on);

Verifier GetVerifier(const DatabaseDefinition& definition);
void SetVerifier(DatabaseDefinition& definition, const Verifier& verifier);
void SetVerifierPresent(DatabaseDefinition& definition, bool present);

// Whether any of the 100 field definitions has its encrypt flag set.
bool AnyFieldMarked(const DatabaseDefinition& definition);

}  // namespace qv
