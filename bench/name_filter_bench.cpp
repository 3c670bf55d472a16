// The filter of a listing, on usual names, and on names of maximum length with filters that would
// make backtracking slow.
#include <string>

#include <benchmark/benchmark.h>

#include "foundation/storage/vfs/detail/name_filter.hpp"

namespace {

using foundation::storage::vfs::NameFilter;

void nameFilter(benchmark::State& state, char16_t const* text, std::string const& name) {
  NameFilter const filter(text);
  for (auto _ : state) benchmark::DoNotOptimize(filter.matches(name));
}

// "*a*a ... *b*" against names of repeated letters: each star would multiply the work of a matcher that backtracks.
void nameFilterStars(benchmark::State& state, char last) {
  std::u16string text;
  for (int i = 0; i < state.range(0); ++i) text += u"*a";
  text += u"*b*";
  NameFilter const filter(text);
  std::string const name = std::string(254, 'a') + last;
  for (auto _ : state) benchmark::DoNotOptimize(filter.matches(name));
}

BENCHMARK_CAPTURE(nameFilter, everything, u"*", "temperature_0312.csv");
BENCHMARK_CAPTURE(nameFilter, extension, u"*.csv", "temperature_0312.csv");
BENCHMARK_CAPTURE(nameFilter, extensionMissed, u"*.csv", "temperature_0312.json");
BENCHMARK_CAPTURE(nameFilter, middle, u"*_03*.csv", "temperature_0312.csv");
BENCHMARK_CAPTURE(nameFilterStars, matched, 'b')->Arg(5)->Arg(20);
BENCHMARK_CAPTURE(nameFilterStars, missed, 'c')->Arg(5)->Arg(20);

}  // namespace
