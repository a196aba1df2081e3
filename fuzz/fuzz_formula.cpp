// libFuzzer target: the stored formula program of a Calculated field and the recalculation
// that runs it. Any program bytes (kinds, operands, constants, count, result kind) and any
// records must evaluate and store without trouble.

#include "fuzz/fuzz_database.h"
#include "processing/formula.h"
#include "processing/recalc.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qv::fuzz::FuzzBytes in(data, size);
  auto db = qv::fuzz::EveryTypeDatabase();
  qv::SilentPrompter quiet;
  // Everything of the Calculated field's definition after its type and name (bytes 10 on).
  std::uint8_t* calculated = db->definition().field(14).bytes();
  in.Fill(calculated + 10, 106);
  if (in.Byte() & 1) db->definition().set_sort_key(0, {14, true});
  qv::fuzz::AddRawRecords(*db, in);
  qv::FormulaDisplayText(db->definition(), 14);
  qv::FormulaOperandSlots(db->definition(), 14);
  qv::FormulaProgram program = qv::LoadFormulaProgram(db->definition(), 14);
  for (std::uint32_t r = 0; r < db->count(); ++r)
    qv::EvaluateFormula(program, db->records[r].data, *db, qv::PreviousInDisplayOrder(*db, r),
                        quiet);
  qv::RecalculateFrom(*db, 0, quiet);
  qv::ResortAndRecalculate(*db, quiet);
  return 0;
}
