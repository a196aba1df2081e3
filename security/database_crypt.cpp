#include "security/database_crypt.h"

#include "security/cfb.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv {

namespace {

std::uint8_t SumOf(std::span<const std::uint8_t> bytes) {
  unsigned sum = 0;
  for (std::uint8_t b : bytes) sum += b;
  return static_cast<std::uint8_t>(sum);
}

}  // namespace

void WriteVerifier(DatabaseDefinition& definition, std::string_view password) {
  ExpandedKey key = MakeKey(password);
  RandomBytes random;
  Verifier v;
  random.Fill(v.bytes);
  v.sum = SumOf(v.bytes);
  CfbEncrypt(v.bytes.data(), v.bytes.size(), key);
  v.present = true;
  SetVerifier(definition, v);
}

bool VerifierAccepts(const Verifier& verifier, std::string_view password) {
  Verifier v = verifier;
  CfbDecrypt(v.bytes.data(), v.bytes.size(), MakeKey(password));
  return SumOf(v.bytes) == v.sum;
}

bool CheckVerifier(const DatabaseDefinition& definition, std::string_view password) {
  Verifier v = GetVerifier(definition);
  return !v.present || VerifierAccepts(v, password);
}

bool EncryptDatabase(Database& db, std::string_view password) {
  int mode = GetEncryptionMode(db.definition());
  if (mode == kEncryptionDisabled) return false;
  EnableRecordHeaders(db);
  ExpandedKey key = MakeKey(password);
  for (std::uint32_t i = 0; i < db.count(); ++i) {
    RecordData& record = db.records[i].data;
    if (mode == kEncryptEntireDatabase) {
      EncryptRecordBody(db, i, key);
    } else if (mode == kEncryptMarkedFields) {
      EncipherMarkedFields(db.definition(), record.edit(), key);
    } else {
      auto header = ReadRecordHeader(record);
      if (!header || !header->has(kRecordManualEncrypt)) continue;
      EncipherMarkedFields(db.definition(), record.edit(), key);
      header = ReadRecordHeader(record);
      header->set(kRecordManualEncrypt, false);
      WriteRecordHeader(record.edit(), *header);
    }
  }
  if (db.count() > 0) {
    if (mode == kEncryptEntireDatabase) SetDatabaseEnciphered(db.definition(), true);
    db.changed = true;
    WriteVerifier(db.definition(), password);
  }
  return true;
}

int DecryptDatabase(Database& db, std::string_view password, bool include_manual) {
  int mode = GetEncryptionMode(db.definition());
  if (mode == kEncryptionDisabled) return 0;
  if (!CheckVerifier(db.definition(), password)) return -1;
  ExpandedKey key = MakeKey(password);
  if (mode == kEncryptEntireDatabase) {
    for (std::uint32_t i = 0; i < db.count(); ++i)
      if (DecryptRecordBody(db, i, key)) db.changed = true;
    if (IsDatabaseEnciphered(db.definition())) {
      SetDatabaseEnciphered(db.definition(), false);
      db.changed = true;
    }
    return 1;
  }
  if (mode == kManualEncryption && !include_manual) return 1;
  bool all = true;
  for (RecordSlot& slot : db.records) {
    auto header = ReadRecordHeader(slot.data);
    if (!header || !header->has(kRecordFieldsEnciphered)) continue;
    Bytes copy = slot.data;
    if (DecryptRecordFields(db.definition(), copy, key) != 1) {
      all = false;
      continue;
    }
    if (mode == kManualEncryption) {
      // Stays marked, so the next encryption takes it again.
      header = ReadRecordHeader(copy);
      header->set(kRecordManualEncrypt, true);
      WriteRecordHeader(copy, *header);
    }
    slot.data = std::move(copy);
    db.changed = true;
  }
  return all ? 1 : 0;
}

bool AnyRecordEnciphered(const Database& db) {
  for (const RecordSlot& slot : db.records) {
    auto header = ReadRecordHeader(slot.data);
    if (header && (header->has(kRecordBodyEnciphered) || header->has(kRecordFieldsEnciphered)))
      return true;
  }
  return false;
}

}  // namespace qv
