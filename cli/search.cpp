#include "cli/search.hpp"

#include <algorithm>
#include <csignal>
#include <new>

#include "cli/locations.hpp"
#include "cli/signals.hpp"

namespace kglob {
namespace {

// Enough for the folders that a descent is in. What was forgotten is read again, which a disk does fast, whereas a store
// has to be asked.
constexpr std::size_t diskCacheBytes = std::size_t{12} << 20;
constexpr std::size_t storeCacheBytes = std::size_t{32} << 20;

}  // namespace

Search::Search(std::vector<std::string> const& patterns, std::string const& rootFolder, bool dotFiles) {
  kglob_options options = KGLOB_OPTIONS_INIT;
  options.root_folder = rootFolder.c_str();
  options.cache_bytes =
      isIRI(rootFolder) || std::ranges::any_of(patterns, isIRI) ? storeCacheBytes : diskCacheBytes;
  options.include_dot_files = dotFiles ? 1 : 0;
  std::vector<char const*> texts;
  texts.reserve(patterns.size());
  for (std::string const& pattern : patterns) texts.push_back(pattern.c_str());
  search_ = kglob_open_patterns(texts.data(), texts.size(), &options);
  cancelOnInterrupt(search_);
}

Search::~Search() {
  cancelOnInterrupt(nullptr);
  kglob_close(search_);
}

kglob_progress Search::progress() const {
  kglob_progress progress{};
  progress.size = sizeof progress;
  kglob_get_progress(search_, &progress);
  return progress;
}

void Search::throwIfEnded(kglob_status status) {
  if (status == KGLOB_INTERRUPTED) throw EndedBySignal{SIGINT};
  if (status == KGLOB_OUT_OF_MEMORY) throw std::bad_alloc();
}

}  // namespace kglob
