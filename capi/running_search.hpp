#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string_view>
#include <thread>

#include <sys/types.h>

#include "capi/match_blocks.hpp"
#include "capi/search_failure.hpp"
#include "capi/search_request.hpp"
#include "foundation/core/threads/mutex.hpp"
#include "foundation/core/threads/thread_annotations.hpp"
#include "foundation/storage/vfs/read_session.hpp"

namespace kglob {

/// A search on a thread of its own, which owns the read session. The members are what `kglob.h` documents, for the same
/// threads.
class RunningSearch {
 public:
  /// Throws `std::bad_alloc`; every other failure becomes the search's error.
  RunningSearch(char const* const* patterns, std::size_t count, kglob_options const* options);
  ~RunningSearch();
  RunningSearch(RunningSearch const&) = delete;
  RunningSearch& operator=(RunningSearch const&) = delete;

  kglob_status nextBlock(std::optional<std::chrono::milliseconds> timeout, std::string_view& block);
  bool nextPattern() noexcept;
  kglob_failure const* reportedError() const noexcept { return reportedError_; }
  kglob_failure const* nextFailure();
  bool readFacts(std::size_t index, kglob_facts& facts) const;
  void cancel() noexcept { isCancelled_.store(true, std::memory_order_relaxed); }

  /// Sets all members but the size.
  void readProgress(kglob_progress& progress) const;

  /// Whether this process is a fork of the one that opened the search, so that the search's thread and its locks are
  /// not to be relied on.
  bool isInFork() const noexcept;

 private:
  using ReadSession = foundation::storage::vfs::ReadSession;

  void run(SearchRequest const& request) noexcept;
  void searchAll(SearchRequest const& request, ReadSession& session);
  bool search(SearchRequest const& request, std::size_t pattern, ReadSession const& session);
  void takeFailures(std::size_t pattern, bool asIRI, ReadSession const& session);
  void setSession(ReadSession const* session);

  pid_t const process_;
  std::atomic<bool> isCancelled_{false};
  MatchBlocks blocks_;

  // The consumer's.
  std::size_t patternCount_ = 1;
  std::size_t currentPattern_ = 0;
  bool isAtEnd_ = false;
  kglob_failure const* reportedError_ = nullptr;

  mutable foundation::core::threads::Mutex mutex_;
  ReadSession const* session_ KORVAN_GUARDED_BY(mutex_) = nullptr;
  kglob_progress lastProgress_ KORVAN_GUARDED_BY(mutex_){};
  struct FailureOfPattern {
    std::size_t pattern;
    SearchFailure failure;
  };
  std::deque<FailureOfPattern> failures_ KORVAN_GUARDED_BY(mutex_);

  std::size_t failuresTaken_ = 0;  // by the search, from its session
  std::size_t notesTaken_ = 0;     // the same
  SearchFailure givenFailure_{};
  kglob_failure givenFailureView_{};

  std::thread thread_;
};

}  // namespace kglob
