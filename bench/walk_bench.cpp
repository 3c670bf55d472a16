// Whole searches in one process, without the start of a program and without output, each in its own read session or
// without one.
#include <optional>

#include <benchmark/benchmark.h>

#include "foundation/storage/vfs/read_session.hpp"
#include "korvan/io/glob.hpp"
#include "temporary_tree.hpp"

namespace {

using foundation::storage::vfs::ReadSession;

void walk(benchmark::State& state, char16_t const* pattern, bool inSession) {
  constexpr korvan::bench::TreeShape shape{1000, 10000};
  static korvan::bench::TemporaryTree const tree(shape);  // removed when the program ends
  std::u16string const root = tree.rootText();
  for (auto _ : state) {
    std::optional<ReadSession> session;
    if (inSession) session.emplace();
    benchmark::DoNotOptimize(korvan::io::internal::glob(pattern, root, false));
  }
  // So that time is reported per entry of the tree, whatever the pattern finds.
  state.SetItemsProcessed(static_cast<std::int64_t>(shape.entries) * state.iterations());
}

// A session also reads on a second thread, so elapsed time and the processor time of both are measured.
void inElapsedTime(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
}

BENCHMARK_CAPTURE(walk, everything, u"**", true)->Apply(inElapsedTime);
BENCHMARK_CAPTURE(walk, everythingWithoutSession, u"**", false)->Apply(inElapsedTime);
BENCHMARK_CAPTURE(walk, byExtension, u"**/*.csv", true)->Apply(inElapsedTime);
BENCHMARK_CAPTURE(walk, byExtensionWithoutSession, u"**/*.csv", false)->Apply(inElapsedTime);
BENCHMARK_CAPTURE(walk, folders, u"**/", true)->Apply(inElapsedTime);
BENCHMARK_CAPTURE(walk, twoDescents, u"**/d*/**/*.hpp", true)->Apply(inElapsedTime);

}  // namespace
