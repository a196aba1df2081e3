// Cipher-feedback throughput beside libtomcrypt's SAFER SK-128, and whole-database encryption
// of 65,000 records.

#include <benchmark/benchmark.h>
#include <tomcrypt.h>

#include <memory>
#include <string>
#include <vector>

#include "engine/database.h"
#include "platform/clock.h"
#include "security/cfb.h"
#include "security/database_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace {

class BenchClock : public qv::Clock {
 public:
  std::int64_t LocalNow() const override { return 1700000000; }
};

void BM_CfbEncrypt(benchmark::State& state) {
  qv::ExpandedKey key = qv::MakeKey("benchmark password");
  std::vector<std::uint8_t> data(static_cast<std::size_t>(state.range(0)), 0x5A);
  for (auto _ : state) {
    qv::CfbEncrypt(data.data(), data.size(), key);
    benchmark::DoNotOptimize(data.data());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CfbEncrypt)->Arg(64)->Arg(4096)->Arg(1 << 20);

void BM_TomcryptSaferCfb(benchmark::State& state) {
  int cipher = register_cipher(&safer_sk128_desc);
  qv::UserKey user_key = qv::PadPassword("benchmark password");
  qv::ExpandedKey key = qv::ExpandKey(user_key);
  symmetric_CFB cfb;
  if (cfb_start(cipher, key.data(), user_key.data(), 16, qv::kSaferRounds, &cfb) != CRYPT_OK) {
    state.SkipWithError("cfb_start failed");
    return;
  }
  std::vector<std::uint8_t> data(static_cast<std::size_t>(state.range(0)), 0x5A);
  for (auto _ : state) {
    cfb_setiv(key.data(), qv::kSaferBlockSize, &cfb);  // each run from the same register, as ours
    cfb_encrypt(data.data(), data.data(), data.size(), &cfb);
    benchmark::DoNotOptimize(data.data());
  }
  cfb_done(&cfb);
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_TomcryptSaferCfb)->Arg(64)->Arg(4096)->Arg(1 << 20);

// 65,000 records of a text, a number, a note and a decimal, with the record header on.
std::unique_ptr<qv::Database> BigDatabase(int mode) {
  BenchClock clock;
  auto db = qv::NewDatabase("Bench", clock);
  const char* names[] = {"Name", "Qty", "Memo", "Price"};
  const qv::FieldType types[] = {qv::kText, qv::kInteger, qv::kNote, qv::kFloat};
  for (int slot = 0; slot < 4; ++slot) {
    qv::FieldDefinition f = db->definition().field(slot);
    f.set_type(types[slot]);
    f.set_name(names[slot]);
    f.set_length(slot == 2 ? 2000 : 40);
  }
  db->definition().field(0).set_encrypted(true);
  db->definition().field(2).set_encrypted(true);
  for (int i = 0; i < 65000; ++i) {
    qv::RecordValues values;
    values.Set(0, qv::TextValue("customer " + std::to_string(i)));
    values.Set(1, qv::Int32Value(i));
    values.Set(2, qv::TextValue("called on the " + std::to_string(i % 28 + 1) +
                                "th about the spare parts order, wants a second quote"));
    values.Set(3, qv::TextValue("1234.50"));
    qv::StoreRecord(*db, values, qv::kNewRecord);
  }
  qv::EnableRecordHeaders(*db);
  qv::SetEncryptionMode(db->definition(), mode);
  return db;
}

void BM_EncryptDatabase65000(benchmark::State& state) {
  auto plain = BigDatabase(static_cast<int>(state.range(0)));
  std::size_t bytes = 0;
  for (const auto& r : plain->records) bytes += r.data.size();
  for (auto _ : state) {
    state.PauseTiming();
    auto db = std::make_unique<qv::Database>(*plain);
    state.ResumeTiming();
    qv::EncryptDatabase(*db, "benchmark password");
    benchmark::DoNotOptimize(db->records.data());
    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_EncryptDatabase65000)
    ->Arg(qv::kEncryptEntireDatabase)
    ->Arg(qv::kEncryptMarkedFields)
    ->Unit(benchmark::kMillisecond);

void BM_DecryptDatabase65000(benchmark::State& state) {
  auto enciphered = BigDatabase(static_cast<int>(state.range(0)));
  qv::EncryptDatabase(*enciphered, "benchmark password");
  std::size_t bytes = 0;
  for (const auto& r : enciphered->records) bytes += r.data.size();
  for (auto _ : state) {
    state.PauseTiming();
    auto db = std::make_unique<qv::Database>(*enciphered);
    state.ResumeTiming();
    if (qv::DecryptDatabase(*db, "benchmark password", true) != 1)
      state.SkipWithError("decrypt failed");
    benchmark::DoNotOptimize(db->records.data());
    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_DecryptDatabase65000)
    ->Arg(qv::kEncryptEntireDatabase)
    ->Arg(qv::kEncryptMarkedFields)
    ->Unit(benchmark::kMillisecond);

// Says in the output what is compared with what.
const bool kComparison =
    (benchmark::AddCustomContext(
         "comparison", "in-process: Quorvant's cipher against libtomcrypt, both in this process"),
     true);

}  // namespace
