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

// How a read goes, from the construction on.
class Stopwatch {
 public:
  explicit Stopwatch(bool isOn) {
    if (isOn) before_ = usageOfThisThread();
  }

  std::optional<ReadWindow::Measurement> measurement() const {
    if (!before_) return std::nullopt;
    return usageOfThisThread() - *before_;
  }

 private:
  std::optional<ReadWindow::Measurement> before_;
};

}  // namespace

void Read::make(Visibility const& visibility, bool isMeasured) {
  Stopwatch const stopwatch(isMeasured);
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
  measured = stopwatch.measurement();
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

void PageRead::make(bool isMeasured) noexcept {
  Stopwatch const stopwatch(isMeasured);
  try {
    page = provider->subtree(fetch.request);
  } catch (Exception const& error) {
    failure = std::current_exception();
    lackedResources = lacksResources(error.systemError());
  } catch (...) {
    failure = std::current_exception();
  }
  measured = stopwatch.measurement();
}

}  // namespace foundation::storage::vfs
