#include "security/record_crypt.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "engine/record_check.h"
#include "security/cfb.h"
#include "security/database_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv {

namespace {

bool IsStringType(unsigned type) {
  return type == kText || type == kFloat || type == kNote || type == kDbPopup ||
         type == kCalculated || type == kConditional;
}

// Texts other than Notes are framed with one length byte.
bool HasByteFrame(unsigned type) {
  return IsStringType(type) && type != kNote;
}

std::size_t TextLength(std::span<const std::uint8_t> bytes) {
  return CStringAt(bytes.data(), bytes.size()).size();
}

std::uint8_t SumOf(std::span<const std::uint8_t> bytes) {
  unsigned sum = 0;
  for (std::uint8_t b : bytes) sum += b;
  return static_cast<std::uint8_t>(sum);
}

// An Image is enciphered from byte 1 when byte 0 says one is present, and not at all otherwise.
void Encipher(unsigned type, Bytes& plain, const ExpandedKey& key) {
  if (type == kImage) {
    if (!plain.empty() && plain[0] != 0) CfbEncrypt(plain.data() + 1, plain.size() - 1, key);
    return;
  }
  CfbEncrypt(plain.data(), plain.size(), key);
}

void Decipher(unsigned type, Bytes& cipher, const ExpandedKey& key) {
  if (type == kImage) {
    if (!cipher.empty() && cipher[0] != 0) CfbDecrypt(cipher.data() + 1, cipher.size() - 1, key);
    return;
  }
  CfbDecrypt(cipher.data(), cipher.size(), key);
}

// The plaintext of a stored value as it is enciphered: texts without their NUL, a Linked
// value's 24-byte block with its text. Nothing for a Linked value too short to hold the block.
std::optional<Bytes> Plaintext(unsigned type, std::span<const std::uint8_t> value) {
  std::size_t n = value.size();
  if (IsStringType(type)) {
    n = TextLength(value);
  } else if (type == kLinked) {
    if (value.size() < 24) return std::nullopt;
    n = 24 + TextLength(value.subspan(24));
  }
  return Bytes(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(n));
}

// Ciphertext can hold zero bytes, so texts get a length in front: two bytes (low first) for a
// Note, one for the other texts, and one in front of a Linked value's text part.
Bytes Frame(unsigned type, const Bytes& cipher) {
  Bytes out;
  std::size_t n = cipher.size();
  if (type == kNote) {
    AppendLE16(out, static_cast<std::uint16_t>(n));
    AppendBytes(out, cipher.data(), n);
  } else if (HasByteFrame(type)) {
    // A longer text keeps all its bytes; the stored length, not this byte, says how many.
    out.push_back(static_cast<std::uint8_t>(n > 255 ? 255 : n));
    AppendBytes(out, cipher.data(), n);
  } else if (type == kLinked) {
    AppendBytes(out, cipher.data(), 24);
    out.push_back(static_cast<std::uint8_t>(n - 24 > 255 ? 255 : n - 24));
    AppendBytes(out, cipher.data() + 24, n - 24);
  } else {
    out = cipher;
  }
  return out;
}

enum class Unframed { Ok, Skip, Bad };

// The ciphertext of a framed value, taken by the value's stored length.
Unframed Unframe(unsigned type, std::span<const std::uint8_t> value, Bytes& cipher) {
  if (type == kNote) {
    if (value.size() < 2) return Unframed::Bad;
    cipher.assign(value.begin() + 2, value.end());
  } else if (HasByteFrame(type)) {
    if (value.empty()) return Unframed::Bad;
    cipher.assign(value.begin() + 1, value.end());
  } else if (type == kLinked) {
    if (value.size() < 25) return Unframed::Skip;  // was too short to encipher
    cipher.assign(value.begin(), value.begin() + 24);
    cipher.insert(cipher.end(), value.begin() + 25, value.end());
  } else {
    cipher.assign(value.begin(), value.end());
  }
  return Unframed::Ok;
}

}  // namespace

bool EncryptRecordBody(Database& db, std::uint32_t index, const ExpandedKey& key) {
  if (index >= db.count()) return false;
  if (db.records[index].data.size() < kRecordHeaderSize + 1) return false;
  auto header = ReadRecordHeader(db.records[index].data);
  if (!header || header->has(kRecordBodyEnciphered)) return false;
  Bytes& record = db.records[index].data.edit();
  CfbEncryptRecord(record, kRecordHeaderSize, record.size() - kRecordHeaderSize, key);
  header->set(kRecordBodyEnciphered, true);
  WriteRecordHeader(record, *header);
  return true;
}

bool DecryptRecordBody(Database& db, std::uint32_t index, const ExpandedKey& key) {
  if (index >= db.count()) return false;
  auto header = ReadRecordHeader(db.records[index].data);
  if (!header || !header->has(kRecordBodyEnciphered)) return false;
  Bytes& record = db.records[index].data.edit();
  CfbDecryptRecord(record, kRecordHeaderSize, record.size() - kRecordHeaderSize, key);
  header->set(kRecordBodyEnciphered, false);
  WriteRecordHeader(record, *header);
  return true;
}

int EncipherMarkedFields(const DatabaseDefinition& definition, Bytes& record,
                         const ExpandedKey& key) {
  auto header = ReadRecordHeader(record);
  // Without a header the flag and checksum could not be kept, and the values could never be
  // deciphered again; enciphering twice would lose them too.
  if (!header || header->has(kRecordFieldsEnciphered)) return 0;
  int done = 0;
  unsigned sum = 0;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    ConstFieldDefinition field = definition.field(slot);
    if (!field.encrypted()) continue;
    auto ref = LocateValue(record, slot);
    if (!ref) continue;
    unsigned type = field.type();
    auto value = std::span<const std::uint8_t>(record).subspan(ref->offset, ref->length);
    auto plain = Plaintext(type, value);
    if (!plain) continue;
    sum += SumOf(*plain);
    Encipher(type, *plain, key);
    record = ReplaceValue(record, definition, slot, Frame(type, *plain));
    ++done;
  }
  if (done > 0) {
    header->set(kRecordFieldsEnciphered, true);
    header->set_checksum(static_cast<std::uint8_t>(sum));
    WriteRecordHeader(record, *header);
  }
  return done;
}

bool EncryptRecordFields(DatabaseDefinition& definition, Bytes& record, std::string_view password) {
  if (!AnyFieldMarked(definition)) return false;
  ExpandedKey key = MakeKey(password);
  int done = EncipherMarkedFields(definition, record, key);
  WriteVerifier(definition, password);
  return done > 0;
}

int DecryptRecordFields(const DatabaseDefinition& definition, Bytes& record,
                        const ExpandedKey& key) {
  auto header = ReadRecordHeader(record);
  if (!header) return -1;
  if (!header->has(kRecordFieldsEnciphered)) return 1;
  // First pass: decipher copies and test the checksum before anything is written.
  std::vector<std::pair<int, Bytes>> plain_values;
  unsigned sum = 0;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    ConstFieldDefinition field = definition.field(slot);
    if (!field.encrypted()) continue;
    auto ref = LocateValue(record, slot);
    if (!ref) continue;
    unsigned type = field.type();
    Bytes plain;
    switch (Unframe(type, std::span<const std::uint8_t>(record).subspan(ref->offset, ref->length),
                    plain)) {
      case Unframed::Bad:
        return -1;
      case Unframed::Skip:
        continue;
      case Unframed::Ok:
        break;
    }
    Decipher(type, plain, key);
    sum += SumOf(plain);
    // The plaintext of a text was cut at its NUL: a NUL inside means a wrong password.
    std::size_t text_from = type == kLinked ? 24 : 0;
    if ((IsStringType(type) || type == kLinked) &&
        std::find(plain.begin() + static_cast<std::ptrdiff_t>(std::min(text_from, plain.size())),
                  plain.end(), 0) != plain.end())
      return 0;
    if (IsStringType(type) || type == kLinked) plain.push_back(0);
    plain_values.emplace_back(slot, std::move(plain));
  }
  if (static_cast<std::uint8_t>(sum) != header->checksum()) return 0;
  Bytes plain_record = record;
  for (const auto& [slot, plain] : plain_values)
    plain_record = ReplaceValue(plain_record, definition, slot, plain);
  // The checksum is 8 bits wide: values that do not read as values mean a wrong password too.
  if (!RecordDecodes(definition, plain_record)) return 0;
  header->set(kRecordFieldsEnciphered, false);
  WriteRecordHeader(plain_record, *header);
  record = std::move(plain_record);
  return 1;
}

}  // namespace qv
