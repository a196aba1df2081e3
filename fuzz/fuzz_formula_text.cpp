// libFuzzer target: formula text as a user types it. Parsing must refuse or build a program of
// at most 11 tokens without deep recursion, and a built program must show and evaluate.

#include "fuzz/fuzz_database.h"
#include "processing/formula.h"
#include "processing/formula_builder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto db = qv::fuzz::EveryTypeDatabase();
  qv::SilentPrompter quiet;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  if (!qv::BuildFormula(db->definition(), 14, text, quiet)) return 0;
  qv::FormulaDisplayText(db->definition(), 14);
  qv::RecordValues values = qv::DefaultValues(*db);
  db->records.push_back({qv::EncodeRecord(db->definition(), values), 1, 0});
  qv::Bytes record = db->records[0].data;
  qv::UpdateCalculatedField(*db, 14, db->definition(), &record, 0u, quiet);
  return 0;
}
