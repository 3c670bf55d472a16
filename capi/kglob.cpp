// The functions of kglob.h, which let no exception out.
#include "kglob.h"

#include <new>
#include <string>

#include "capi/match_facts.hpp"
#include "capi/running_search.hpp"
#include "capi/sized_struct.hpp"
#include "foundation/storage/vfs/object_store_settings.hpp"

struct kglob_search : kglob::RunningSearch {
  using RunningSearch::RunningSearch;
};

kglob_status kglob_configure_object_store(kglob_object_store const* settings) {
  auto const text = [](char const* member) { return std::string(member == nullptr ? "" : member); };
  try {
    kglob_object_store known = KGLOB_OBJECT_STORE_INIT;
    if (settings != nullptr) kglob::copyKnown(known, settings);
    foundation::storage::vfs::setObjectStoreSettings({.endpointUrl = text(known.endpoint_url),
                                                      .region = text(known.region),
                                                      .profile = text(known.profile),
                                                      .noSignRequest = known.no_sign_request != 0,
                                                      .requesterPays = known.requester_pays != 0});
    return KGLOB_OK;
  } catch (std::bad_alloc const&) {
    return KGLOB_OUT_OF_MEMORY;
  } catch (...) {
    return KGLOB_INVALID_ARGUMENT;
  }
}

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
  kglob::fill(facts, known);
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
  kglob::fill(progress, known);
}

void kglob_close(kglob_search* search) {
  if (search != nullptr && !search->isInFork()) delete search;
}
