// Beaming the 65,000-record database over loopback (sender and listener in this process, the
// receive file written), beside copying the same file, the floor for moving its bytes.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <future>

#include "bench/support/sample_database.h"
#include "exchange/beam_send.h"
#include "exchange/obex_listener.h"

namespace qv::bench {
namespace {

constexpr std::uint32_t kRecords = 65000;

const std::string& SampleFile() {
  static const std::string path = SavedSampleFile("qv-bench-beam.PDB", kRecords);
  return path;
}

void BM_BeamDatabase(benchmark::State& state) {
  SilentPrompter quiet;
  const auto temp = std::filesystem::temp_directory_path();
  auto object = DatabaseFileObject(SampleFile(), quiet);
  std::size_t received = 0;
  ObexListener listener(quiet,
                        [&](const ReceivedObject& o, const std::string&) { received = o.length; });
  ListenOptions options;
  options.bind = {"127.0.0.1", 0};
  options.receive = {(temp / "qv-bench-IrData.dat").string(), 5000, 0};  // no closing pause
  options.idle_sleep_ms = 1;  // the 1 s look-again interval would measure only itself
  std::promise<std::uint16_t> bound;
  options.on_bound = [&](std::uint16_t port) { bound.set_value(port); };
  listener.StartListenThread2(options);
  const ObexSendOptions send{{"127.0.0.1", bound.get_future().get()}, 5000, 5000};
  CancelEvent cancel;
  for (auto _ : state)
    benchmark::DoNotOptimize(SendVcard(*object, kBeamCreator, send, cancel, quiet));
  listener.StopListenThread();
  if (received != object->body.size()) state.SkipWithError("the object did not arrive whole");
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * object->body.size()));
}
BENCHMARK(BM_BeamDatabase)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CopyFile(benchmark::State& state) {
  const std::string& path = SampleFile();
  const auto copy = std::filesystem::temp_directory_path() / "qv-bench-beam-copy.PDB";
  for (auto _ : state)
    std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * std::filesystem::file_size(path)));
}
BENCHMARK(BM_CopyFile)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace qv::bench
