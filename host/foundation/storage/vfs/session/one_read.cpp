#include "foundation/storage/vfs/session/one_read.hpp"

#include <cerrno>
#include <chrono>
#include <string>

#include <sys/resource.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {
namespace {

bool lacksResources(int systemError) {
  return systemError == EMFILE || systemError == ENFILE || systemError == ENOMEM;
}

// The time, and what this thread has used since it began: what lies between two of them is what a read cost.
ReadWindow::Measurement usageOfThisThread() {
  rusage usage = {};
  ::getrusage(RUSAGE_THREAD, &usage);
  auto const durationOf = [](timeval const& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
  };
  return {std::chrono::steady_clock::now().time_since_epoch(), durationOf(usage.ru_utime) + durationOf(usage.ru_stime),
          usage.ru_nvcsw};
}

}  // namespace

void Read::make(Visibility const& visibility, bool isMeasured) {
  std::optional<ReadWindow::Measurement> before;
  if (isMeasured) before = usageOfThisThread();
  try {
    if (answer.question == Question::entries) {
      answer.snapshot = readFolder(*provider, answer.location, {}, &visibility);
    } else {
      answer.kind = provider->kind(answer.location);
    }
  } catch (Exception const& failure) {
    answer.failure = std::current_exception();
    lackedResources = lacksResources(failure.systemError());
  }
  if (before) measured = usageOfThisThread() - *before;
  if (answer.failure || states == 0) return;
  if (answer.snapshot) {
    predicted = PendingReads::Group::below(*answer.snapshot, *search, states, false);
  } else if (answer.kind == PathKind::isFolder) {
    std::string const name = core::text::toBytesLossy(answer.location.getName());
    predicted.emplace(answer.location.getParent()).add(*search, states, name);
  }
}

void Read::prefetch(Visibility const& visibility, bool isMeasured) noexcept {
  try {
    make(visibility, isMeasured);
    if (answer.snapshot) memory = answer.snapshot->entries.memory();
    if (predicted) memory += predicted->memory();
    isAnswered = !lackedResources;
  } catch (...) {
    predicted.reset();
  }
}

}  // namespace foundation::storage::vfs
