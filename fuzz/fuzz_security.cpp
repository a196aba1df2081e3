// libFuzzer target: the security areas of a database from outside bytes — the permission word,
// the access password, the encryption mode and verifier — and records whose headers and
// enciphered bodies or fields (modes 0, 1 and 2) come from outside bytes. Reading, checking and
// deciphering them must never crash.

#include "fuzz/fuzz_database.h"
#include "security/access.h"
#include "security/database_crypt.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "security/safer.h"
#include "security/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qv::fuzz::FuzzBytes in(data, size);
  auto db = qv::fuzz::EveryTypeDatabase();
  qv::DatabaseDefinition& d = db->definition();
  in.Fill(d.data() + qv::def::kAccessPassword, qv::kAccessPasswordSize);
  in.Fill(d.data() + qv::def::kSecurityArea, 16);
  in.Fill(d.data() + qv::def::kAccessWord, 4);
  in.Fill(d.data() + qv::def::kSettingsFlags, 1);
  const std::uint8_t marks = in.Byte();
  for (int slot = 0; slot < 8; ++slot) d.field(slot).set_encrypted(marks >> slot & 1);
  d.set_record_header_on(in.Byte() & 1);
  qv::fuzz::AddRawRecords(*db, in);
  for (int action = 0; action < qv::kAccessActions; ++action) qv::GetAccess(d, action);
  qv::GetAccessPassword(d);
  qv::GetEncryptionMode(d);
  qv::CheckVerifier(d, "secret");
  const qv::ExpandedKey key = qv::MakeKey("secret");
  for (std::uint32_t r = 0; r < db->count(); ++r) {
    qv::ReadRecordHeader(db->records[r].data);
    qv::Bytes record = db->records[r].data;
    qv::DecryptRecordFields(d, record, key);
    qv::DecryptRecordBody(*db, r, key);
  }
  qv::AnyRecordEnciphered(*db);
  qv::DecryptDatabase(*db, "secret", true);
  return 0;
}
