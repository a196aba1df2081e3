// CSV import and export of 65,000 rows inside this one warm process, from and to files on disk:
// Quorvant reads the CSV, stores the records and saves the database; the export opens the
// database file and writes the CSV. The comparison with the sqlite3 shell is a whole-process one
// and lives in bench/compare.py (make bench-compare): timing a process against a function call
// would not compare like with like.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "engine/database.h"
#include "platform/system_clock.h"
#include "processing/csv_export.h"
#include "processing/csv_import.h"

namespace {

constexpr int kRows = 65000;

std::unique_ptr<qv::Database> EmptyStock(const qv::Clock& clock) {
  auto db = qv::NewDatabase("Stock", clock);
  const std::pair<const char*, qv::FieldType> fields[] = {{"Name", qv::kText},
                                                          {"Qty", qv::kInteger},
                                                          {"Price", qv::kFloat},
                                                          {"Bought", qv::kDate},
                                                          {"Notes", qv::kText}};
  for (int slot = 0; slot < 5; ++slot) {
    qv::FieldDefinition f = db->definition().field(slot);
    f.set_type(fields[slot].second);
    f.set_name(fields[slot].first);
  }
  db->definition().field(2).settings()[0] = 2;
  return db;
}

qv::FormatOptions Options() {
  qv::FormatOptions o;
  o.locale.short_date = "d/M/yyyy";
  return o;
}

struct Files {
  std::string folder;
  std::string csv, pdb, out;
  Files() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qvbench-XXXXXX").string();
    folder = mkdtemp(pattern.data()) ? pattern : "/tmp";
    csv = folder + "/data.csv";
    pdb = folder + "/data.PDB";
    out = folder + "/out.csv";
    std::ofstream f(csv, std::ios::binary);
    f << "Name,Qty,Price,Bought,Notes\n";
    for (int i = 0; i < kRows; ++i) {
      f << "Item " << i << ',' << (i * 37) % 1000 - 200 << ',' << (i % 997) << '.' << (i % 89 + 10)
        << ',' << (i % 28 + 1) << '/' << (i % 12 + 1) << '/' << 1990 + i % 30 << ','
        << (i % 5 == 0 ? "\"Boxed, with \"\"spare\"\" parts\"" : "plain note") << '\n';
    }
    f.close();
    // Each benchmark can run alone: the databases to export exist from the start.
    qv::SystemClock clock;
    qv::SilentPrompter prompter;
    auto db = EmptyStock(clock);
    db->path = pdb;
    qv::ImportCsvFile(*db, csv, {}, Options(), prompter);
    qv::SaveDatabase(*db, clock);
  }
  ~Files() {
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
  }
};

Files& TheFiles() {
  static Files files;
  return files;
}

void BM_ImportQuorvant(benchmark::State& state) {
  Files& files = TheFiles();
  qv::SystemClock clock;
  qv::SilentPrompter prompter;
  for (auto _ : state) {
    auto db = EmptyStock(clock);
    db->path = files.pdb;
    auto result = qv::ImportCsvFile(*db, files.csv, {}, Options(), prompter);
    if (result.imported != kRows) state.SkipWithError("rows refused");
    qv::SaveDatabase(*db, clock);
  }
}
BENCHMARK(BM_ImportQuorvant)->Unit(benchmark::kMillisecond);

void BM_ExportQuorvant(benchmark::State& state) {
  Files& files = TheFiles();
  qv::SilentPrompter prompter;
  for (auto _ : state) {
    qv::Database db;
    if (!qv::LoadDatabase(db, files.pdb, prompter)) state.SkipWithError("no database");
    qv::CsvExportOptions o;
    o.header = true;
    if (qv::ExportCsv(db, o, files.out, Options(), prompter) != 1)
      state.SkipWithError("export failed");
  }
}
BENCHMARK(BM_ExportQuorvant)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::AddCustomContext(
      "comparison", "in-process only; whole processes against sqlite3: make bench-compare");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
