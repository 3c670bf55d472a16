#include "capi/running_search.hpp"

#include <new>
#include <utility>

#include <unistd.h>

#include "capi/match_facts.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/core/threads/signals_blocked.hpp"
#include "korvan/io/glob.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::threads::MutexLock;

void readActivity(kglob_progress& progress, vfs::Activity const& activity) {
  progress.folders = activity.folders;
  progress.entries = activity.entries;
  progress.requests = activity.requests;
  progress.bytes = activity.bytes;
}

}  // namespace

RunningSearch::RunningSearch(char const* const* patterns, std::size_t count, kglob_options const* options)
    : process_(getpid()) {
  try {
    SearchRequest request = makeRequest(patterns, count, options);
    patternCount_ = request.patterns.size();
    foundation::core::threads::SignalsBlocked const blocked;
    thread_ = std::thread([this, request = std::move(request)] { run(request); });
  } catch (std::bad_alloc const&) {
    throw;
  } catch (...) {
    patternCount_ = 1;
    blocks_.endPattern(describeCurrentException(false));
    blocks_.end();
  }
}

RunningSearch::~RunningSearch() {
  cancel();
  blocks_.close();
  if (thread_.joinable()) thread_.join();
}

bool RunningSearch::isInFork() const noexcept {
  return getpid() != process_;
}

void RunningSearch::run(SearchRequest const& request) noexcept {
  utInterruptScope const interrupted(&isCancelled_);
  try {
    ReadSession session(request.cacheBytes, request.policy);
    setSession(&session);
    try {
      searchAll(request, session);
    } catch (std::bad_alloc const&) {
      // Reported by a search whose last pattern doesn't end.
    }
    setSession(nullptr);
  } catch (std::bad_alloc const&) {
    // As above.
  }
  blocks_.end();
}

void RunningSearch::searchAll(SearchRequest const& request, ReadSession& session) {
  for (std::size_t pattern = 0; pattern < request.patterns.size(); ++pattern) {
    bool const asIRI = request.patterns[pattern].usesIRIs;
    std::optional<SearchFailure> error;
    try {
      session.beginSearch();
      if (!search(request, pattern, session)) return;
    } catch (std::bad_alloc const&) {
      throw;
    } catch (...) {
      error = describeCurrentException(asIRI);
    }
    takeFailures(pattern, asIRI, session);
    bool const isLast = error && error->status == KGLOB_INTERRUPTED;
    if (!blocks_.endPattern(std::move(error)) || isLast) return;
  }
}

// False if the consumer has closed.
bool RunningSearch::search(SearchRequest const& request, std::size_t pattern, ReadSession const& session) {
  auto const& [text, usesIRIs] = request.patterns[pattern];
  korvan::io::internal::GlobStream stream(text, request.rootFolder, request.includeDotFiles);
  korvan::io::internal::Path const rootFolder(request.rootFolder);
  auto const& failures = session.failedListings();
  auto const& notes = session.notes();
  while (auto const match = stream.next()) {
    std::optional<MatchBlocks::Facts> facts;
    if (request.facts != KGLOB_NO_FACTS) facts = findFacts(*match, rootFolder, request.facts);
    if (failures.size() > failuresTaken_ || notes.size() > notesTaken_) takeFailures(pattern, usesIRIs, session);
    if (!blocks_.add(*match, std::move(facts))) return false;
  }
  return true;
}

void RunningSearch::takeFailures(std::size_t pattern, bool asIRI, ReadSession const& session) {
  auto const& failures = session.failedListings();
  for (; failuresTaken_ < failures.size(); ++failuresTaken_) {
    try {
      throw vfs::Exception(failures[failuresTaken_]);
    } catch (vfs::Exception const&) {
      SearchFailure failure = describeCurrentException(asIRI);
      MutexLock const lock(mutex_);
      failures_.push_back({pattern, std::move(failure)});
    }
  }
  auto const& notes = session.notes();
  for (; notesTaken_ < notes.size(); ++notesTaken_) {
    vfs::Exception const& taken = notes[notesTaken_];
    std::string const location = foundation::core::text::toBytesLossy(taken.getLocation().toString());
    SearchFailure note{KGLOB_OK, {}, location + ": " + taken.reason(), location, taken.reason()};
    MutexLock const lock(mutex_);
    failures_.push_back({pattern, std::move(note)});
  }
}

// The session to be asked for progress; null when it is about to be closed.
void RunningSearch::setSession(ReadSession const* session) {
  MutexLock const lock(mutex_);
  if (session == nullptr) readActivity(lastProgress_, session_->activity());
  session_ = session;
}

void RunningSearch::readProgress(kglob_progress& progress) const {
  if (isInFork()) return;
  MutexLock const lock(mutex_);
  progress = lastProgress_;
  if (session_ != nullptr) readActivity(progress, session_->activity());
}

kglob_status RunningSearch::nextBlock(std::optional<std::chrono::milliseconds> timeout, std::string_view& block) {
  if (isInFork()) {
    reportedError_ = &inForkedProcess;
    return reportedError_->status;
  }
  auto const step = blocks_.next(timeout);
  if (!step) return KGLOB_TIMED_OUT;
  block = step->matches;
  isAtEnd_ = block.empty();
  reportedError_ = step->error;
  return reportedError_ == nullptr ? KGLOB_OK : reportedError_->status;
}

bool RunningSearch::nextPattern() noexcept {
  bool const hasEnded = reportedError_ != nullptr &&
                        (reportedError_->status == KGLOB_INTERRUPTED || reportedError_->status == KGLOB_OUT_OF_MEMORY);
  if (isInFork() || !isAtEnd_ || hasEnded || currentPattern_ + 1 == patternCount_) return false;
  ++currentPattern_;
  isAtEnd_ = false;
  reportedError_ = nullptr;
  blocks_.nextPattern();
  return true;
}

bool RunningSearch::readFacts(std::size_t index, kglob_facts& facts) const {
  MatchBlocks::Facts const* const found = isInFork() || isAtEnd_ ? nullptr : blocks_.facts(index);
  if (found != nullptr) facts = viewOf(*found);
  return found != nullptr;
}

kglob_failure const* RunningSearch::nextFailure() {
  if (isInFork()) return nullptr;
  MutexLock const lock(mutex_);
  if (failures_.empty() || failures_.front().pattern > currentPattern_) return nullptr;
  givenFailure_ = std::move(failures_.front().failure);
  failures_.pop_front();
  givenFailureView_ = givenFailure_.view();
  return &givenFailureView_;
}

}  // namespace kglob
