#include "capi/running_search.hpp"

#include <new>
#include <utility>

#include <unistd.h>

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

RunningSearch::RunningSearch(char const* pattern, kglob_options const* options) : process_(getpid()) {
  try {
    SearchRequest request = makeRequest(pattern, options);
    foundation::core::threads::SignalsBlocked const blocked;
    thread_ = std::thread([this, request = std::move(request)] { run(request); });
  } catch (std::bad_alloc const&) {
    throw;
  } catch (...) {
    setError(false);
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
    ReadSession const session(request.cacheBytes);
    setSession(&session);
    try {
      search(request, session);
    } catch (...) {
      setError(request.usesIRIs);
    }
    setSession(nullptr);
    takeFailures(session, request.usesIRIs);
  } catch (...) {
    setError(request.usesIRIs);
  }
  blocks_.end();
}

void RunningSearch::search(SearchRequest const& request, ReadSession const& session) {
  korvan::io::internal::GlobStream stream(request.pattern, request.rootFolder, request.includeDotFiles);
  while (auto const match = stream.next()) {
    takeFailures(session, request.usesIRIs);
    if (!blocks_.add(*match)) return;
  }
}

void RunningSearch::takeFailures(ReadSession const& session, bool asIRI) {
  auto const& failures = session.failedListings();
  for (; failuresTaken_ < failures.size(); ++failuresTaken_) {
    try {
      throw vfs::Exception(failures[failuresTaken_]);
    } catch (vfs::Exception const&) {
      SearchFailure failure = describeCurrentException(asIRI);
      MutexLock const lock(mutex_);
      failures_.push_back(std::move(failure));
    }
  }
}

// For an exception handler.
void RunningSearch::setError(bool asIRI) noexcept {
  try {
    throw;
  } catch (std::bad_alloc const&) {
    error_ = outOfMemory;
  } catch (...) {
    try {
      errorText_ = describeCurrentException(asIRI);
      error_ = errorText_.view();
    } catch (...) {
      error_ = outOfMemory;
    }
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
    error_ = inForkedProcess;
  } else {
    auto const next = blocks_.next(timeout);
    if (!next) return KGLOB_TIMED_OUT;
    block = *next;
    if (!block.empty() || !error_) return KGLOB_OK;
  }
  isErrorReported_ = true;
  return error_->status;
}

kglob_failure const* RunningSearch::reportedError() const noexcept {
  return isErrorReported_ ? &*error_ : nullptr;
}

kglob_failure const* RunningSearch::nextFailure() {
  if (isInFork()) return nullptr;
  MutexLock const lock(mutex_);
  if (failures_.empty()) return nullptr;
  givenFailure_ = std::move(failures_.front());
  failures_.pop_front();
  givenFailureView_ = givenFailure_.view();
  return &givenFailureView_;
}

}  // namespace kglob
