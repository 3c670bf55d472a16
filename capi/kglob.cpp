// The functions of kglob.h, which let no exception out.
#include "kglob.h"

#include <algorithm>
#include <cstring>

#include "capi/match_facts.hpp"
#include "capi/running_search.hpp"

struct kglob_search : kglob::RunningSearch {
  using RunningSearch::RunningSearch;
};

namespace {

/// Fills a structure of the caller's, whose first member says how large it is there.
template <class Structure>
void fill(Structure* wanted, Structure known) {
  std::size_t const size = wanted->size;
  if (size < sizeof size) return;
  known.size = size;
  std::memset(wanted, 0, size);
  std::memcpy(wanted, &known, std::min(size, sizeof known));
}

}  // namespace

kglob_search* kglob_open(char const* pattern, kglob_options const* options) {
  return kglob_open_patterns(&pattern, 1, options);
}

kglob_search* kglob_open_patterns(char const* const* patterns, std::size_t count, kglob_options const* options) {
  try {
    return new kglob_search(patterns, count, options);
  } catch (...) {
    return nullptr;  // lack of memory
  }
}

kglob_status kglob_next_block(kglob_search* search, int timeout_ms, char const** bytes, std::size_t* length) {
  *bytes = nullptr;
  *length = 0;
  if (search == nullptr) return KGLOB_OUT_OF_MEMORY;
  std::optional<std::chrono::milliseconds> timeout;
  if (timeout_ms >= 0) timeout.emplace(timeout_ms);
  std::string_view block;
  kglob_status const status = search->nextBlock(timeout, block);
  if (!block.empty()) *bytes = block.data();
  *length = block.size();
  return status;
}

int kglob_get_facts(kglob_search const* search, std::size_t index, kglob_facts* facts) {
  kglob_facts known = kglob::noFacts;
  bool const areFound = search != nullptr && search->readFacts(index, known);
  fill(facts, known);
  return areFound ? 1 : 0;
}

int kglob_next_pattern(kglob_search* search) {
  return search != nullptr && search->nextPattern() ? 1 : 0;
}

kglob_failure const* kglob_error(kglob_search const* search) {
  return search == nullptr ? &kglob::outOfMemory : search->reportedError();
}

kglob_failure const* kglob_next_failure(kglob_search* search) {
  return search == nullptr ? nullptr : search->nextFailure();
}

void kglob_cancel(kglob_search* search) {
  if (search != nullptr) search->cancel();
}

void kglob_get_progress(kglob_search const* search, kglob_progress* progress) {
  kglob_progress known{};
  if (search != nullptr) search->readProgress(known);
  fill(progress, known);
}

void kglob_close(kglob_search* search) {
  if (search != nullptr && !search->isInFork()) delete search;
}
