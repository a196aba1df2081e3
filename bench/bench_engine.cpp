// Open, save and store-record on a 65,000-record database, beside a plain file copy of the
// same file (what `cp` does) as the floor for open and save.

#include <benchmark/benchmark.h>

#include <filesystem>

#include "bench/support/sample_database.h"
#include "engine/database.h"
#include "platform/system_clock.h"

namespace qv::bench {
namespace {

constexpr std::uint32_t kRecords = 65000;

const std::string& SampleFile() {
  static const std::string path = SavedSampleFile("qv-bench-engine.PDB", kRecords);
  return path;
}

void BM_Open(benchmark::State& state) {
  const std::string& path = SampleFile();
  SilentPrompter quiet;
  for (auto _ : state) {
    Database db;
    benchmark::DoNotOptimize(LoadDatabase(db, path, quiet));
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * std::filesystem::file_size(path)));
}
BENCHMARK(BM_Open)->Unit(benchmark::kMillisecond);

void BM_Save(benchmark::State& state) {
  Database db;
  SilentPrompter quiet;
  LoadDatabase(db, SampleFile(), quiet);
  db.path = SampleFile() + ".copy";
  SystemClock clock;
  for (auto _ : state) benchmark::DoNotOptimize(SaveDatabase(db, clock));
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * std::filesystem::file_size(db.path)));
}
BENCHMARK(BM_Save)->Unit(benchmark::kMillisecond);

void BM_CopyFile(benchmark::State& state) {
  const std::string& path = SampleFile();
  std::string copy = path + ".cp";
  for (auto _ : state)
    std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * std::filesystem::file_size(path)));
}
BENCHMARK(BM_CopyFile)->Unit(benchmark::kMillisecond);

void BM_StoreNewRecord(benchmark::State& state) {
  auto db = MakeSampleDatabase(kRecords - 1000);
  std::uint32_t n = 0;
  for (auto _ : state) {
    if (db->count() >= kRecords) {
      state.PauseTiming();
      db->records.resize(kRecords - 1000);
      state.ResumeTiming();
    }
    benchmark::DoNotOptimize(StoreRecord(*db, SampleRecordValues(*db, n++), kNewRecord));
  }
}
BENCHMARK(BM_StoreNewRecord);

void BM_StoreEditedRecord(benchmark::State& state) {
  auto db = MakeSampleDatabase(kRecords);
  std::uint32_t n = 0;
  for (auto _ : state) {
    std::uint32_t number = (n * 7919) % kRecords;
    benchmark::DoNotOptimize(StoreRecord(*db, SampleRecordValues(*db, n++), number));
  }
}
BENCHMARK(BM_StoreEditedRecord);

}  // namespace
// Says in the output what is compared with what.
const bool kComparison =
    (benchmark::AddCustomContext(
         "comparison",
         "in-process: open and save against std::filesystem::copy_file, both in this process"),
     true);

}  // namespace qv::bench
