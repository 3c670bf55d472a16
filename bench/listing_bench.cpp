// One folder, listed through the storage layer: read from the disk each time, or returned from the cache of
// a read session.
#include <filesystem>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>

#include "fl/filesystem/basic_path.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "temporary_tree.hpp"

namespace {

using namespace foundation::storage::vfs;

// One folder with this many files, plus the sub-folders below.
constexpr korvan::bench::TreeShape shape{0, 1000};
constexpr int folders = 100;

enum class Source { disk, session };

template <class List>
void list(benchmark::State& state, Source source, List const& listing) {
  korvan::bench::TemporaryTree const tree(shape);
  for (int i = 0; i < folders; ++i) std::filesystem::create_directory(tree.root() / ("folder_" + std::to_string(i)));
  Folder const folder(toAbsoluteIRI(u"file", fl::filesystem::upath(tree.rootText())),
                      Quindarel::KorvanStorageSystem::GetStorageSystemReference());
  std::optional<ReadSession> session;
  if (source == Source::session) session.emplace();
  std::int64_t entries = 0;
  for (auto _ : state) {
    for (auto const& entry : listing(folder)) {
      benchmark::DoNotOptimize(&entry);
      ++entries;
    }
  }
  state.SetItemsProcessed(entries);
}

void listAll(benchmark::State& state, Source source) {
  list(state, source, [](Folder const& folder) { return folder.listAll(u"*"); });
}

void listFiltered(benchmark::State& state, Source source) {
  list(state, source, [](Folder const& folder) { return folder.listAll(u"*.csv"); });
}

void listFolders(benchmark::State& state, Source source) {
  list(state, source, [](Folder const& folder) { return folder.listFolders(u"*"); });
}

BENCHMARK_CAPTURE(listAll, disk, Source::disk);
BENCHMARK_CAPTURE(listAll, session, Source::session);
BENCHMARK_CAPTURE(listFiltered, disk, Source::disk);
BENCHMARK_CAPTURE(listFiltered, session, Source::session);
BENCHMARK_CAPTURE(listFolders, disk, Source::disk);
BENCHMARK_CAPTURE(listFolders, session, Source::session);

}  // namespace
