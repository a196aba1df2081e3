// libFuzzer target: the settings of a Conditional field (test field, operator, value, results)
// from outside bytes, evaluated on records from outside bytes.

#include "fuzz/fuzz_database.h"
#include "processing/conditional.h"
#include "processing/formula.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qv::fuzz::FuzzBytes in(data, size);
  auto db = qv::fuzz::EveryTypeDatabase();
  qv::SilentPrompter quiet;
  in.Fill(db->definition().field(16).bytes() + 10, 106);  // the Conditional field's settings
  qv::fuzz::AddRawRecords(*db, in);
  qv::ConditionalDescription(db->definition(), 16);
  qv::ConditionalSettings settings = qv::ConditionalSettings::Read(db->definition().field(16));
  for (std::uint32_t r = 0; r < db->count(); ++r) {
    qv::ConditionalTestHolds(*db, settings, db->records[r].data);
    qv::ConditionalResult(*db, settings, db->records[r].data);
    qv::Bytes record = db->records[r].data;
    qv::UpdateConditionalField(*db, 16, db->definition(), record);
    qv::ComputeRecordFormulas(*db, db->definition(), record, {}, quiet);
  }
  return 0;
}
