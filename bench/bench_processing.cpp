// Sorting, filtering and recalculating 65,000 records, each compared in the same run with
// SQLite (in memory, through its C library) doing the same work on the same data.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <random>
#include <string>
#include <vector>

#include "engine/format.h"
#include "platform/prompter.h"
#include "processing/filter.h"
#include "processing/formula_builder.h"
#include "processing/recalc.h"
#include "processing/sort.h"

namespace {

using namespace qv;

constexpr int kRecords = 65000;

struct Row {
  std::string name;
  std::int32_t qty;
  std::string price;  // as a Float value stores it
  std::string city;
};

std::vector<Row> MakeRows() {
  std::mt19937 random(2002);
  const char* syllables[] = {"ka", "Ab", "ro", "Mi", "ta", "lu",
                             "Ne", "so", "ve", "di", "Ba", "zo"};
  const char* cities[] = {"Oslo", "lima", "Quito", "bern", "Doha", "Kyiv", "rome", "Baku"};
  std::vector<Row> rows;
  rows.reserve(kRecords);
  for (int i = 0; i < kRecords; ++i) {
    Row r;
    int n = 2 + static_cast<int>(random() % 4);
    for (int k = 0; k < n; ++k) r.name += syllables[random() % 12];
    r.qty = static_cast<std::int32_t>(random() % 1000);
    r.price = FormatDecimal(static_cast<double>(random() % 10000) / 100.0, 2, false);
    r.city = cities[random() % 8];
    rows.push_back(std::move(r));
  }
  return rows;
}

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = MakeRows();
  return rows;
}

// Name Text, Qty Integer, Price Float, City Text, Total and Tax Calculated.
std::unique_ptr<Database> MakeDatabase() {
  auto db = std::make_unique<Database>();
  db->schema = NewSchema();
  const std::pair<const char*, FieldType> fields[] = {{"Name", kText},        {"Qty", kInteger},
                                                      {"Price", kFloat},      {"City", kText},
                                                      {"Total", kCalculated}, {"Tax", kCalculated}};
  for (int slot = 0; slot < 6; ++slot) {
    FieldDefinition f = db->definition().field(slot);
    f.set_type(fields[slot].second);
    f.set_name(fields[slot].first);
  }
  SilentPrompter quiet;
  BuildFormula(db->definition(), 4, "Qty * Price", quiet);
  BuildFormula(db->definition(), 5, "Price * 0.2 + 1", quiet);
  db->definition().field(5).bytes()[43] = 5;  // two decimals
  for (const Row& r : Rows()) {
    RecordValues v;
    v.Set(0, TextValue(r.name));
    v.Set(1, Int32Value(r.qty));
    v.Set(2, TextValue(r.price));
    v.Set(3, TextValue(r.city));
    v.Set(4, TextValue("0"));
    v.Set(5, TextValue("0"));
    // Appended directly: storing one by one looks for a free identifier each time.
    db->records.push_back({EncodeRecord(db->definition(), v),
                           static_cast<std::uint32_t>(kSchemaRecords + 1 + db->records.size()), 0});
  }
  db->loaded = true;
  return db;
}

void SortBench(benchmark::State& state, std::vector<SortKey> keys) {
  auto db = MakeDatabase();
  for (int k = 0; k < kSortKeys; ++k)
    db->definition().set_sort_key(k, k < static_cast<int>(keys.size()) ? keys[k] : SortKey{});
  const RecordTable original = db->records;
  SilentPrompter quiet;
  for (auto _ : state) {
    state.PauseTiming();
    db->records = original;
    state.ResumeTiming();
    SortDatabase(*db, false, quiet);
    benchmark::DoNotOptimize(db->records.data());
  }
}

void BM_SortText(benchmark::State& state) {
  SortBench(state, {{0, true}});
}
void BM_SortInteger(benchmark::State& state) {
  SortBench(state, {{1, true}});
}
void BM_SortThreeKeys(benchmark::State& state) {
  SortBench(state, {{3, true}, {1, false}, {0, true}});
}

Condition Make(int slot) {
  Condition c;
  c.in_use = 1;
  c.field = static_cast<std::uint16_t>(slot);
  return c;
}

// (Name contains "ab" OR Qty from 100 to 500) AND Price from 10 to 50.
void BM_FilterThreeConditions(benchmark::State& state) {
  auto db = MakeDatabase();
  Condition name = Make(0);
  PutCString(name.first.data(), 40, "ab");
  Condition qty = Make(1);
  qty.lower = 100;
  qty.upper = 500;
  qty.join = 0x02;
  Condition price = Make(2);
  PutCString(price.first.data(), 40, "10");
  PutCString(price.second.data(), 40, "50");
  db->definition().set_condition(0, name);
  db->definition().set_condition(1, qty);
  db->definition().set_condition(2, price);
  for (auto _ : state) {
    RebuildFilteredList(*db);
    benchmark::DoNotOptimize(db->visible.data());
  }
  state.counters["passing"] = static_cast<double>(db->visible.size());
}

void BM_RecalculateTwoFields(benchmark::State& state) {
  auto db = MakeDatabase();
  const RecordTable original = db->records;
  SilentPrompter quiet;
  for (auto _ : state) {
    state.PauseTiming();
    db->records = original;
    state.ResumeTiming();
    RecalculateFrom(*db, 0, quiet);
    benchmark::DoNotOptimize(db->records.data());
  }
}

// SQLite with the same rows.
class Sqlite {
 public:
  Sqlite() {
    sqlite3_open(":memory:", &db_);
    Exec("CREATE TABLE t(name TEXT, qty INTEGER, price REAL, city TEXT, total REAL, tax REAL)");
    Exec("BEGIN");
    sqlite3_stmt* insert = Prepare("INSERT INTO t VALUES(?, ?, ?, ?, 0, 0)");
    for (const Row& r : Rows()) {
      sqlite3_bind_text(insert, 1, r.name.c_str(), -1, SQLITE_STATIC);
      sqlite3_bind_int(insert, 2, r.qty);
      sqlite3_bind_double(insert, 3, std::stod(r.price));
      sqlite3_bind_text(insert, 4, r.city.c_str(), -1, SQLITE_STATIC);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    Exec("COMMIT");
  }
  ~Sqlite() { sqlite3_close(db_); }
  void Exec(const char* sql) { sqlite3_exec(db_, sql, nullptr, nullptr, nullptr); }
  sqlite3_stmt* Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db_, sql, -1, &statement, nullptr);
    return statement;
  }
  // Runs a query and collects the row ids it answers, as the record list would need them.
  std::size_t Rowids(sqlite3_stmt* statement, std::vector<std::int64_t>& out) {
    out.clear();
    while (sqlite3_step(statement) == SQLITE_ROW) out.push_back(sqlite3_column_int64(statement, 0));
    sqlite3_reset(statement);
    return out.size();
  }

 private:
  sqlite3* db_ = nullptr;
};

void SqliteQuery(benchmark::State& state, const char* sql) {
  Sqlite lite;
  sqlite3_stmt* statement = lite.Prepare(sql);
  std::vector<std::int64_t> ids;
  for (auto _ : state) benchmark::DoNotOptimize(lite.Rowids(statement, ids));
  state.counters["rows"] = static_cast<double>(ids.size());
  sqlite3_finalize(statement);
}

void BM_Sqlite_SortText(benchmark::State& state) {
  SqliteQuery(state, "SELECT rowid FROM t ORDER BY name COLLATE NOCASE");
}
void BM_Sqlite_SortInteger(benchmark::State& state) {
  SqliteQuery(state, "SELECT rowid FROM t ORDER BY qty");
}
void BM_Sqlite_SortThreeKeys(benchmark::State& state) {
  SqliteQuery(state,
              "SELECT rowid FROM t ORDER BY city COLLATE NOCASE, qty DESC, name COLLATE NOCASE");
}
void BM_Sqlite_FilterThreeConditions(benchmark::State& state) {
  SqliteQuery(state,
              "SELECT rowid FROM t WHERE (name LIKE '%ab%' OR qty BETWEEN 100 AND 500) "
              "AND price BETWEEN 10 AND 50");
}
void BM_Sqlite_RecalculateTwoFields(benchmark::State& state) {
  Sqlite lite;
  sqlite3_stmt* update = lite.Prepare("UPDATE t SET total = qty * price, tax = price * 0.2 + 1");
  for (auto _ : state) {
    state.PauseTiming();
    lite.Exec("UPDATE t SET total = 0, tax = 0");
    state.ResumeTiming();
    lite.Exec("BEGIN");
    sqlite3_step(update);
    sqlite3_reset(update);
    lite.Exec("COMMIT");
  }
  sqlite3_finalize(update);
}

// Says in the output what is compared with what.
const bool kComparison =
    (benchmark::AddCustomContext(
         "comparison",
         "in-process: Quorvant against the SQLite C library (:memory:), both in this process"),
     true);

}  // namespace

BENCHMARK(BM_SortText)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_SortText)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortInteger)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_SortInteger)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortThreeKeys)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_SortThreeKeys)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FilterThreeConditions)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_FilterThreeConditions)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RecalculateTwoFields)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_RecalculateTwoFields)->Unit(benchmark::kMillisecond);
