// The functions of kglob.h, which let no exception out.
#include "kglob.h"

#include <algorithm>
#include <cstring>

#include "capi/running_search.hpp"

struct kglob_search : kglob::RunningSearch {
  using RunningSearch::RunningSearch;
};

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
  std::size_t const size = progress->size;
  if (size < sizeof size) return;
  kglob_progress known{};
  if (search != nullptr) search->readProgress(known);
  known.size = size;
  std::memset(progress, 0, size);
  std::memcpy(progress, &known, std::min(size, sizeof known));
}

void kglob_close(kglob_search* search) {
  if (search != nullptr && !search->isInFork()) delete search;
}
