#include "cli/search.hpp"

#include <algorithm>
#include <csignal>
#include <new>

#include "cli/locations.hpp"
#include "cli/signals.hpp"

namespace kglob {
namespace {

// Enough for the folders that a descent is in. What was forgotten is read again, which a disk does fast, whereas a
// store has to be asked.
constexpr std::size_t diskCacheBytes = std::size_t{12} << 20;
constexpr std::size_t storeCacheBytes = std::size_t{32} << 20;

std::vector<char const*> pointersTo(std::vector<std::string> const& texts) {
  std::vector<char const*> pointers;
  pointers.reserve(texts.size());
  for (std::string const& text : texts) pointers.push_back(text.c_str());
  return pointers;
}

}  // namespace

Search::Search(std::vector<std::string> const& patterns, Scope const& scope) {
  std::vector<char const*> const texts = pointersTo(patterns);
  std::vector<char const*> const excluded = pointersTo(scope.excluded);
  kglob_options options = KGLOB_OPTIONS_INIT;
  options.root_folder = scope.rootFolder.c_str();
  options.cache_bytes =
      isIRI(scope.rootFolder) || std::ranges::any_of(patterns, isIRI) ? storeCacheBytes : diskCacheBytes;
  options.include_dot_files = scope.dotFiles ? 1 : 0;
  options.dont_follow_links = scope.follow ? 0 : 1;
  options.excluded_names = excluded.data();
  options.excluded_count = excluded.size();
  options.one_file_system = scope.oneFileSystem ? 1 : 0;
  options.report_refusals = 1;
  options.max_depth = scope.maxDepth;
  options.reads_in_flight = scope.readsInFlight;
  options.facts = scope.facts;
  search_ = kglob_open_patterns(texts.data(), texts.size(), &options);
  cancelOnInterrupt(search_);
}

Search::~Search() {
  cancelOnInterrupt(nullptr);
  kglob_close(search_);
}

kglob_facts Search::facts(std::size_t index) const {
  kglob_facts facts{};
  facts.size = sizeof facts;
  kglob_get_facts(search_, index, &facts);
  return facts;
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
