// The desktop program on a full database (65,000 records): opening it to the first painted
// list, scrolling the list from top to bottom, and rebuilding the list after a change.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QScrollBar>
#include <QTemporaryDir>

#include "app/commands.h"
#include "app/main_window.h"
#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "tests/support/fakes.h"

namespace {

constexpr std::uint32_t kRecords = 65000;

class BenchPaths : public qv::Paths {
 public:
  std::string DocumentsFolder() const override { return dir.path().toStdString(); }
  std::string DataFolder() const override { return DocumentsFolder(); }
  std::string TempFolder() const override { return DocumentsFolder(); }
  QTemporaryDir dir;
};

// Screens that are never shown during a measurement.
class NoDialogs : public qv::app::Dialogs {
 public:
  std::optional<std::string> AskOpenPath(const std::string&) override { return {}; }
  std::optional<std::string> AskSavePath(const std::string&) override { return {}; }
  qv::app::StartChoice ChooseStart(const std::vector<qv::app::RecentEntry>&) override { return {}; }
  bool DefineNewDatabase(qv::Database&) override { return false; }
  bool OpenRecord(qv::Database&, std::uint32_t, bool) override { return false; }
  bool EditPreferences(qv::Preferences&) override { return false; }
  std::optional<qv::app::DeleteScope> AskDeleteScope() override { return {}; }
  std::optional<std::string> ChoosePopupItem(const std::vector<std::string>&, const std::string&,
                                             const QRect&) override {
    return {};
  }
  std::optional<qv::Dmy> ChooseDate(const qv::Dmy&, const QRect&) override { return {}; }
  std::optional<qv::app::TimeOfDay> ChooseTime(const qv::app::TimeOfDay&, const QRect&) override {
    return {};
  }
  void ShowAbout() override {}
  void ShowReport(const std::string&) override {}
  void EditViews(qv::Database&, qv::Prompter&) override {}
  bool IsRecordOpen() const override { return false; }
  std::optional<qv::FindSettings> AskFind(const qv::Database&, const qv::FindSettings&) override {
    return {};
  }
  bool EditSort(qv::Database&, int, qv::Prompter&) override { return false; }
  bool EditFilter(qv::Database&, int, const qv::FormatOptions&, qv::Prompter&) override {
    return false;
  }
  std::optional<qv::app::ExportRequest> AskExport(const qv::Database&,
                                                  const qv::Preferences&) override {
    return {};
  }
  std::optional<qv::app::ImportRequest> AskImport(const qv::Database&,
                                                  const qv::Preferences&) override {
    return {};
  }
  std::optional<qv::Bytes> AskSetValue(const qv::Database&, int, const qv::FormatOptions&,
                                       qv::Prompter&) override {
    return set_value;
  }
  std::optional<qv::Bytes> set_value;
  // Long work runs where it is measured, without a dialog.
  bool RunLong(const std::string&, qv::app::LongWork work, qv::Prompter& shown) override {
    work(shown);
    return true;
  }
};

struct Fixture {
  BenchPaths paths;
  qv::test::MemorySettings settings;
  qv::test::FixedClock clock;
  qv::SilentPrompter prompter;
  NoDialogs dialogs;
  qv::app::OpenAccessGate access;
  qv::app::NoFormatConverter converter;
  qv::app::NoNotificationHandler alarms;
  qv::Workspace workspace{prompter, settings, clock};
  std::string path;

  Fixture() {
    auto db = qv::NewDatabase("Big", clock);
    const std::pair<const char*, qv::FieldType> fields[] = {
        {"Item", qv::kText},   {"Qty", qv::kInteger},      {"Price", qv::kFloat},
        {"Bought", qv::kDate}, {"Counted", qv::kCheckBox}, {"Notes", qv::kNote}};
    for (int slot = 0; slot < 6; ++slot) {
      qv::FieldDefinition f = db->definition().field(slot);
      f.set_type(fields[slot].second);
      f.set_name(fields[slot].first);
    }
    for (std::uint32_t i = 0; i < kRecords; ++i) {
      qv::RecordValues v = qv::DefaultValues(*db);
      v.Set(0, qv::TextValue(qv::StringPrintf("Item number %05u", (i * 7919u) % kRecords)));
      v.Set(1, qv::Int32Value(static_cast<std::int32_t>(i % 977)));
      v.Set(2, qv::TextValue(qv::StringPrintf("%u.%02u", i % 500, i % 100)));
      v.Set(3, qv::UInt32Value(40000 + i % 3000));
      v.Set(4, qv::CheckValue(i % 3 == 0));
      v.Set(5, qv::TextValue("A note that is long enough to be cut off in the list"));
      qv::StoreRecord(*db, v, qv::kNewRecord);
    }
    db->path = paths.DataFolder() + "/Big.PDB";
    qv::SaveDatabase(*db, clock);
    path = db->path;
  }

  qv::app::AppContext context() { return {workspace, paths, dialogs, access, converter, alarms}; }
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

// From the open command to a painted window: load, list rebuilt, first paint.
void BM_OpenToFirstPaint(benchmark::State& state) {
  Fixture& f = Shared();
  for (auto _ : state) {
    qv::app::MainWindow window(f.context());
    window.resize(920, 600);
    window.flows().OpenDatabaseFile(f.path);
    window.panel()->Refresh();
    QPixmap frame = window.grab();
    benchmark::DoNotOptimize(frame);
    f.workspace.Reset();
  }
  state.counters["records"] = kRecords;
}
BENCHMARK(BM_OpenToFirstPaint)->Unit(benchmark::kMillisecond);

// One full scroll, a page at a time, with every page painted.
void BM_FullScroll(benchmark::State& state) {
  Fixture& f = Shared();
  qv::app::MainWindow window(f.context());
  window.resize(920, 600);
  window.flows().OpenDatabaseFile(f.path);
  window.panel()->Refresh();
  window.show();
  QWidget* viewport = window.panel()->view()->viewport();
  QScrollBar* bar = window.panel()->view()->verticalScrollBar();
  std::int64_t pages = 0;
  for (auto _ : state) {
    for (int v = 0; v <= bar->maximum(); v += bar->pageStep()) {
      bar->setValue(v);
      // Rendering into a picture paints every visible cell, screen or no screen.
      QPixmap frame = viewport->grab();
      benchmark::DoNotOptimize(frame);
      ++pages;
    }
  }
  state.counters["pages_per_scroll"] =
      benchmark::Counter(static_cast<double>(pages) / static_cast<double>(state.iterations()));
  state.counters["seconds_per_page"] = benchmark::Counter(
      static_cast<double>(pages), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  f.workspace.Reset();
}
BENCHMARK(BM_FullScroll)->Unit(benchmark::kMillisecond);

// The refresh every sort, filter and edit ends with, to the repainted list.
void BM_RefreshList(benchmark::State& state) {
  Fixture& f = Shared();
  qv::app::MainWindow window(f.context());
  window.resize(920, 600);
  window.flows().OpenDatabaseFile(f.path);
  window.show();
  for (auto _ : state) {
    window.panel()->Refresh();
    QPixmap frame = window.panel()->view()->viewport()->grab();
    benchmark::DoNotOptimize(frame);
  }
  f.workspace.Reset();
}
BENCHMARK(BM_RefreshList)->Unit(benchmark::kMillisecond);

// "Sort Reverse" then "Sort Forward" from the column menu on the Item column, each to the
// repainted list.
void BM_SortByColumn(benchmark::State& state) {
  Fixture& f = Shared();
  qv::app::MainWindow window(f.context());
  window.resize(920, 600);
  window.flows().OpenDatabaseFile(f.path);
  window.panel()->Refresh();
  window.show();
  bool forward = false;
  for (auto _ : state) {
    window.panel()->RunColumnCommand(
        0, forward ? qv::app::command::kSortForward : qv::app::command::kSortReverse);
    QPixmap frame = window.panel()->view()->viewport()->grab();
    benchmark::DoNotOptimize(frame);
    forward = !forward;
  }
  if (f.workspace.current().definition().sort_key(0).field != 0)
    state.SkipWithError("no sort happened");
  f.workspace.Reset();
}
BENCHMARK(BM_SortByColumn)->Unit(benchmark::kMillisecond);

// "Set Values To.." on the Qty column of every record, to the repainted list.
void BM_SetValuesOfColumn(benchmark::State& state) {
  Fixture& f = Shared();
  qv::app::MainWindow window(f.context());
  window.resize(920, 600);
  window.flows().OpenDatabaseFile(f.path);
  window.panel()->Refresh();
  window.show();
  std::int32_t n = 0;
  for (auto _ : state) {
    f.dialogs.set_value = qv::Int32Value(++n);
    window.panel()->RunColumnCommand(1, qv::app::command::kSetValues);
    QPixmap frame = window.panel()->view()->viewport()->grab();
    benchmark::DoNotOptimize(frame);
  }
  if (qv::RecordValueText(f.workspace.current(), 0, 1, {}) != std::to_string(n))
    state.SkipWithError("no value was set");
  f.workspace.Reset();
}
BENCHMARK(BM_SetValuesOfColumn)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  // The measurements need widgets but no screen.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
