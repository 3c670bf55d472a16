// The path operations that a search does for each entry: joining, splitting, conversion from text.
#include <string>

#include <benchmark/benchmark.h>

#include "korvan/io/path.hpp"

namespace {

using korvan::io::internal::Path;

std::u16string const localText = u"measurements/2024/station-17/raw";
std::u16string const iriText = u"file:///srv/data/measurements/2024/station-17/raw";
std::u16string const entryName = u"temperature_0312.csv";

void pathOfText(benchmark::State& state, std::u16string const& text) {
  for (auto _ : state) benchmark::DoNotOptimize(Path(text));
}

void pathJoin(benchmark::State& state, std::u16string const& text) {
  Path const folder(text);
  for (auto _ : state) benchmark::DoNotOptimize(folder / entryName);
}

void pathAppend(benchmark::State& state, std::u16string const& text) {
  Path const folder(text);
  for (auto _ : state) {
    Path path = folder;
    benchmark::DoNotOptimize(path.append(entryName));
  }
}

void pathParent(benchmark::State& state, std::u16string const& text) {
  Path const path(text);
  for (auto _ : state) benchmark::DoNotOptimize(path.parent());
}

void pathName(benchmark::State& state, std::u16string const& text) {
  Path const path(text);
  for (auto _ : state) benchmark::DoNotOptimize(path.name());
}

BENCHMARK_CAPTURE(pathOfText, local, localText);
BENCHMARK_CAPTURE(pathOfText, iri, iriText);
BENCHMARK_CAPTURE(pathJoin, local, localText);
BENCHMARK_CAPTURE(pathJoin, iri, iriText);
BENCHMARK_CAPTURE(pathAppend, local, localText);
BENCHMARK_CAPTURE(pathAppend, iri, iriText);
BENCHMARK_CAPTURE(pathParent, local, localText);
BENCHMARK_CAPTURE(pathParent, iri, iriText);
BENCHMARK_CAPTURE(pathName, local, localText);
BENCHMARK_CAPTURE(pathName, iri, iriText);

}  // namespace
