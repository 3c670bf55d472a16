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

Scope scopeOf(Options const& options, kglob_fact_level facts) {
  return {.rootFolder = options.rootFolder(),
          .dotFiles = options.dotFiles,
          .follow = options.follow,
          .oneFileSystem = options.oneFileSystem,
          .excluded = options.excluded,
          .maxDepth = static_cast<std::uint32_t>(std::min(options.maxDepth.value_or(0), std::uint64_t{UINT32_MAX})),
          .facts = facts};
}

/// Searches all patterns. Returns whether there was an error or an unreadable folder.
bool searchPatterns(std::vector<std::string> const& patterns, Scope const& scope, MatchWriter& writer, Output& output,
                    kglob_progress& read) {
  if (patterns.empty()) return false;
  Search search(patterns, scope);
  FailedFolders failures(search, scope.rootFolder);
  bool anyError = false;
  auto pattern = patterns.begin();
  bool wantsMore = true;
  do {
    wantsMore = writeMatches(search, writer, output);
    if (kglob_failure const* const error = search.error()) {
      report(*error);
      anyError = true;
    }
    failures.reportNew(*pattern++);
  } while (wantsMore && search.nextPattern());
  anyError |= failures.finish();
  read = search.progress();
  return anyError;
}

/// Reports what was probably wrong with a search that nothing matched. Returns whether that is an error.
bool explainNoMatch(Options const& options, std::vector<std::string> const& patterns) {
  std::string const root = options.rootFolder();
  // The library treats a root folder that doesn't exist as empty, but a user who named one has probably mistyped it.
  if (!root.empty() && !checkRootFolder(root)) return true;
  NoMatchHint const hint = hintWhenNothingMatched(patterns, root);
  if (!hint.text.empty() && (hint.isError || !options.quiet)) report(hint.text);
  return hint.isError;
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
  kglob_progress read{};
  bool anyError = searchPatterns(patterns, scopeOf(options, writer.neededFacts()), writer, output, read);
  writer.finish();
  output.flush();
  bool const anyMatch = writer.count() > 0;
  if (!anyMatch && !anyError) anyError = explainNoMatch(options, patterns);
  if (anyMatch && !options.quiet)
    if (auto const hint = hintAboutFolderOperand(options); !hint.empty()) report(hint);
  if (options.stats) reportStats(read, std::chrono::steady_clock::now() - start);
  return anyError ? failed : anyMatch ? matched : noMatch;
}

}  // namespace kglob
