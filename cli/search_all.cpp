#include "cli/search_all.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "cli/failed_folders.hpp"
#include "cli/hints.hpp"
#include "cli/match_writer.hpp"
#include "cli/messages.hpp"
#include "cli/object_store.hpp"
#include "cli/pattern_list.hpp"
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

/// Writes the matches of the current pattern. Returns whether further matches are wanted.
bool writeMatches(Search& search, MatchWriter& writer, Output& output) {
  Progress progress(search);
  for (;;) {
    std::string_view const matches = search.nextBlock(&Output::checkForReader);
    if (matches.empty()) return true;
    bool const wantsMore = writer.add(search, matches);
    progress.whileHidden([&] { output.flush(); });
    if (!wantsMore) return false;
  }
}

std::uint32_t bounded(std::optional<std::uint64_t> number) {
  return static_cast<std::uint32_t>(std::min(number.value_or(0), std::uint64_t{UINT32_MAX}));
}

Scope scopeOf(Options const& options, kglob_fact_level facts) {
  return {.rootFolder = options.rootFolder(),
          .dotFiles = options.dotFiles,
          .follow = options.follow,
          .oneFileSystem = options.oneFileSystem,
          .excluded = options.excluded,
          .maxDepth = bounded(options.maxDepth),
          .readsInFlight = bounded(options.threads),
          .facts = facts};
}

struct Outcome {
  bool anyError = false;               ///< an error or an unreadable folder
  std::vector<std::string> unmatched;  ///< patterns without matches or errors
  kglob_progress read{};
};

Outcome searchPatterns(std::vector<std::string> const& patterns, Scope const& scope, MatchWriter& writer,
                       Output& output) {
  Outcome outcome;
  if (patterns.empty()) return outcome;
  Search search(patterns, scope);
  FailedFolders failures(search, scope.rootFolder);
  auto pattern = patterns.begin();
  bool wantsMore = true;
  do {
    std::uint64_t const before = writer.count();
    wantsMore = writeMatches(search, writer, output);
    kglob_failure const* const error = search.error();
    if (error != nullptr) report(*error);
    outcome.anyError |= error != nullptr;
    // After a failure there is no need to ask the store what is missing.
    bool const anyFailure = failures.reportNew(*pattern);
    if (error == nullptr && !anyFailure && writer.count() == before) outcome.unmatched.push_back(*pattern);
    ++pattern;
  } while (wantsMore && search.nextPattern());
  outcome.anyError |= failures.finish();
  outcome.read = search.progress();
  return outcome;
}

/// Reports what was probably wrong with a search without matches. Returns whether that is an error.
bool explainNoMatch(Options const& options, std::vector<std::string> const& patterns) {
  std::string const root = options.rootFolder();
  // The library treats a root folder that doesn't exist as empty, but a user who named one has probably mistyped it.
  if (!root.empty() && !checkRootFolder(root)) return true;
  if (options.quiet) return false;
  if (auto const hint = hintWhenNothingMatched(patterns, root); !hint.empty()) report(hint);
  return false;
}

}  // namespace

ExitStatus searchAll(Options const& options, Output& output) {
  deferInterrupts();
  configureObjectStore(options);
  auto const start = std::chrono::steady_clock::now();
  MatchWriter writer(options, output);
  std::vector<std::string> const patterns = allPatterns(options);
  if (!options.quiet)
    for (std::string const& hint : hintsBeforeSearch(options)) report(hint);
  Outcome const outcome = searchPatterns(patterns, scopeOf(options, writer.neededFacts()), writer, output);
  writer.finish();
  output.flush();
  bool anyError = outcome.anyError;
  bool const anyMatch = writer.count() > 0;
  for (std::string const& store : missingStores(outcome.unmatched)) {
    report("\"" + store + "\" does not exist");
    anyError = true;
  }
  if (!anyMatch && !anyError) anyError = explainNoMatch(options, patterns);
  if (anyMatch && !options.quiet)
    if (auto const hint = hintAboutFolderOperand(options); !hint.empty()) report(hint);
  if (options.stats) reportStats(outcome.read, std::chrono::steady_clock::now() - start);
  return anyError ? failed : anyMatch ? matched : noMatch;
}

}  // namespace kglob
