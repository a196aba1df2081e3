// CSV import and export of 65,000 rows, against the sqlite3 shell's ".import" and CSV output
// of the same file in the same run. Both sides start from and end in files on disk: Quorvant
// reads the CSV, stores the records and saves the database; sqlite3 imports into a new
// database file. Exports open the database file and write the CSV.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
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

void Shell(const std::string& command) {
  if (std::system(command.c_str()) != 0) std::cerr << "failed: " << command << '\n';
}

struct Files {
  std::string folder;
  std::string csv, pdb, sqlite, out;
  Files() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qvbench-XXXXXX").string();
    folder = mkdtemp(pattern.data()) ? pattern : "/tmp";
    csv = folder + "/data.csv";
    pdb = folder + "/data.PDB";
    sqlite = folder + "/data.sqlite";
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
    Shell("sqlite3 " + sqlite + " '.mode csv' '.import " + csv + " stock'");
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

void BM_ImportSqlite(benchmark::State& state) {
  Files& files = TheFiles();
  for (auto _ : state) {
    std::filesystem::remove(files.sqlite);
    Shell("sqlite3 " + files.sqlite + " '.mode csv' '.import " + files.csv + " stock'");
  }
}
BENCHMARK(BM_ImportSqlite)->Unit(benchmark::kMillisecond);

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

void BM_ExportSqlite(benchmark::State& state) {
  Files& files = TheFiles();
  for (auto _ : state)
    Shell("sqlite3 -csv -header " + files.sqlite + " 'select * from stock' > " + files.out);
}
BENCHMARK(BM_ExportSqlite)->Unit(benchmark::kMillisecond);

// Prints the usual table, then Quorvant's time as a fraction of sqlite3's.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.iterations > 0) times_[run.benchmark_name()] = run.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
  void PrintRatios() const {
    for (const char* what : {"Import", "Export"}) {
      auto ours = times_.find(std::string("BM_") + what + "Quorvant");
      auto theirs = times_.find(std::string("BM_") + what + "Sqlite");
      if (ours == times_.end() || theirs == times_.end() || theirs->second <= 0) continue;
      std::printf(
          "%s of %d rows: Quorvant %.1f ms, sqlite3 %.1f ms, ratio %.2f (below 1: faster)\n", what,
          kRows, ours->second, theirs->second, ours->second / theirs->second);
    }
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
