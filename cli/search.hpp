#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kglob.h"

namespace kglob {

/// Where and how a search looks; see `kglob_options`.
struct Scope {
  std::string rootFolder{};  ///< empty: the current folder
  bool dotFiles = false;
  bool follow = false;
  bool oneFileSystem = false;
  std::vector<std::string> excluded{};
  std::uint32_t maxDepth = 0;
  std::uint32_t readsInFlight = 0;
  kglob_fact_level facts = KGLOB_NO_FACTS;
};

/// A search of the C interface (see `kglob.h`), closed by the destructor. While it lives an interrupt cancels it; there
/// is one at a time.
class Search {
 public:
  /// Throws `std::bad_alloc`.
  Search(std::vector<std::string> const& patterns, Scope const& scope);
  ~Search();
  Search(Search const&) = delete;
  Search& operator=(Search const&) = delete;

  /// The next block of the current pattern's matches, each ended by NUL; empty at the end and after an error. While
  /// there is none, calls `idle` about ten times a second. Throws `EndedBySignal` after an interrupt, and
  /// `std::bad_alloc`.
  template <class Idle>
  std::string_view nextBlock(Idle idle) {
    for (;;) {
      char const* bytes = nullptr;
      std::size_t length = 0;
      kglob_status const status = kglob_next_block(search_, idlePeriodMs, &bytes, &length);
      throwIfEnded(status);
      if (status != KGLOB_TIMED_OUT) return {bytes, length};
      idle();
    }
  }

  /// What is known of the match with this index in the current block.
  kglob_facts facts(std::size_t index) const;

  bool nextPattern() { return kglob_next_pattern(search_) != 0; }

  /// The error that ended the current pattern, or null.
  kglob_failure const* error() const { return kglob_error(search_); }

  /// The next unreadable folder of the patterns so far, or null.
  kglob_failure const* nextFailure() { return kglob_next_failure(search_); }

  /// For any thread.
  kglob_progress progress() const;

 private:
  static constexpr int idlePeriodMs = 100;
  static void throwIfEnded(kglob_status status);

  kglob_search* search_;
};

}  // namespace kglob
