#include "cli/search_all.hpp"

#include <array>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

#include "cli/failed_folders.hpp"
#include "cli/locations.hpp"
#include "cli/messages.hpp"
#include "cli/progress.hpp"
#include "cli/root_folder.hpp"
#include "cli/search.hpp"
#include "cli/signals.hpp"

namespace kglob {
namespace {

void reportStats(kglob_progress const& read, std::chrono::duration<double> time) {
  std::array<char, 32> seconds;
  static_cast<void>(std::snprintf(seconds.data(), seconds.size(), "%.3f s", time.count()));
  report("read " + std::to_string(read.folders) + " folders, " + std::to_string(read.entries) + " entries; " +
         std::to_string(read.requests) + " requests, " + std::to_string(read.bytes) + " bytes; " + seconds.data());
}

/// Writes the matches of the current pattern. Returns whether there were any.
bool writeMatches(Search& search, Output& output) {
  Progress progress(search);
  bool anyMatch = false;
  for (;;) {
    std::string_view const matches = search.nextBlock(&Output::checkForReader);
    if (matches.empty()) return anyMatch;
    anyMatch = true;
    progress.whileHidden([&] {
      output.addMatches(matches);
      output.flush();
    });
  }
}

}  // namespace

ExitStatus searchAll(Options const& options, Output& output) {
  deferInterrupts();
  auto const start = std::chrono::steady_clock::now();
  bool anyMatch = false;
  bool anyError = false;
  kglob_progress read{};
  {
    Search search(options.patterns, options.rootFolder, options.dotFiles);
    FailedFolders failures(search, options.rootFolder);
    auto pattern = options.patterns.begin();
    do {
      if (auto const hint = absolutePatternHint(*pattern, options.rootFolder); !hint.empty()) report(hint);
      anyMatch |= writeMatches(search, output);
      if (kglob_failure const* const error = search.error()) {
        report(*error);
        anyError = true;
      }
      failures.reportNew(*pattern++);
    } while (search.nextPattern());
    anyError |= failures.finish();
    read = search.progress();
  }
  // The library treats a root folder that doesn't exist as empty, but a user who named one has probably mistyped it.
  if (!anyMatch && !anyError && !options.rootFolder.empty()) anyError = !checkRootFolder(options.rootFolder);
  if (options.stats) reportStats(read, std::chrono::steady_clock::now() - start);
  return anyError ? failed : anyMatch ? matched : noMatch;
}

}  // namespace kglob
