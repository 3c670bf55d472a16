#include "cli/failed_folders.hpp"

#include "cli/locations.hpp"
#include "cli/messages.hpp"

namespace kglob {

void FailedFolders::reportNew(std::string const& pattern) {
  while (kglob_failure const* const failure = search_.nextFailure()) {
    if (failure->status == KGLOB_OK) {
      report(std::string(failure->location) + ": " + failure->reason);
      continue;
    }
    if (++count_ > maximumLines) continue;
    bool const isRelative = !isIRI(failure->location) && !pattern.starts_with('/');
    std::string const shown = isRelative ? asWritten(failure->location, rootFolder_) : failure->location;
    report("cannot read " + shown + ": " + failure->reason);
  }
}

bool FailedFolders::finish() const {
  if (count_ > maximumLines) report("further unreadable folders: " + std::to_string(count_ - maximumLines));
  return count_ > 0;
}

}  // namespace kglob
