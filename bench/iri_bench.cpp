// IRIs: parsed from text, made from local paths, and split again.
#include <string>

#include <benchmark/benchmark.h>

#include "fl/filesystem/basic_path.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/conversion.hpp"

namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::toAbsoluteIRI;

// Names that an IRI contains unchanged, and names that must be encoded.
std::u16string const plainName = u"temperature_0312.csv";
std::u16string const encodedName = u"100% Größe #1? 日本.csv";
std::u16string const plainFolder = u"/srv/data/measurements/2024/station-17/raw";
std::u16string const encodedFolder = u"/srv/data/my measurements/100%/<station #17>/日本";

void iriParse(benchmark::State& state, std::u16string const& folder) {
  std::u16string const text = toAbsoluteIRI(u"file", upath(folder)).toString();
  for (auto _ : state) benchmark::DoNotOptimize(AbsoluteIRI(text));
}

void iriBelow(benchmark::State& state, std::u16string const& name) {
  AbsoluteIRI const base = toAbsoluteIRI(u"file", upath(plainFolder));
  for (auto _ : state) benchmark::DoNotOptimize(AbsoluteIRI(base, name));
}

void iriOfLocalPath(benchmark::State& state, std::u16string const& folder) {
  upath const path(folder);
  for (auto _ : state) benchmark::DoNotOptimize(toAbsoluteIRI(u"file", path));
}

void iriToLocalPath(benchmark::State& state, std::u16string const& folder) {
  AbsoluteIRI const location = toAbsoluteIRI(u"file", upath(folder));
  for (auto _ : state) benchmark::DoNotOptimize(fromAbsoluteIRI(location));
}

void iriName(benchmark::State& state, std::u16string const& name) {
  AbsoluteIRI const location(toAbsoluteIRI(u"file", upath(plainFolder)), name);
  for (auto _ : state) benchmark::DoNotOptimize(location.getName());
}

BENCHMARK_CAPTURE(iriParse, plain, plainFolder);
BENCHMARK_CAPTURE(iriParse, encoded, encodedFolder);
BENCHMARK_CAPTURE(iriBelow, plain, plainName);
BENCHMARK_CAPTURE(iriBelow, encoded, encodedName);
BENCHMARK_CAPTURE(iriOfLocalPath, plain, plainFolder);
BENCHMARK_CAPTURE(iriOfLocalPath, encoded, encodedFolder);
BENCHMARK_CAPTURE(iriToLocalPath, plain, plainFolder);
BENCHMARK_CAPTURE(iriToLocalPath, encoded, encodedFolder);
BENCHMARK_CAPTURE(iriName, plain, plainName);
BENCHMARK_CAPTURE(iriName, encoded, encodedName);

}  // namespace
