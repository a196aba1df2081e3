// libFuzzer target: the filter conditions, sort keys and views stored in a database, read from
// outside bytes and applied to records from outside bytes.

#include "fuzz/fuzz_database.h"
#include "processing/filter.h"
#include "processing/filter_dialog.h"
#include "processing/sort.h"
#include "processing/views.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qv::fuzz::FuzzBytes in(data, size);
  auto db = qv::fuzz::EveryTypeDatabase();
  qv::SilentPrompter quiet;
  std::uint8_t* d = db->definition().data();
  in.Fill(d + qv::def::kFilter, 6 * qv::kConditionSize);
  in.Fill(d + qv::def::kSort, 6);
  const std::size_t views = in.Byte() % 4;
  in.Fill(d + qv::def::kViews, views * qv::kViewSize);
  in.Fill(d + qv::def::kViewCount, 4);
  qv::fuzz::AddRawRecords(*db, in, 12);
  qv::RebuildFilteredList(*db);
  qv::StepPassingRecords(*db, 0, 3);
  qv::SortDatabase(*db, true, quiet);
  for (const std::string& name : qv::ViewNames(*db)) (void)name;
  const int count = qv::ViewCount(*db);
  for (int v = 0; v < count && v < 4; ++v) qv::ApplyView(*db, v, quiet);
  qv::CurrentView(*db);
  return 0;
}
