#include "cli/search_all.hpp"

#include <array>
#include <chrono>
#include <cstdio>
#include <string>

#include "cli/failed_folders.hpp"
#include "cli/messages.hpp"
#include "cli/progress.hpp"
#include "cli/root_folder.hpp"
#include "cli/search.hpp"
#include "cli/search_library.hpp"
#include "cli/signals.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interpreter/string_array.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::text::fromBytes;

void reportStats(vfs::Activity const& read, std::chrono::duration<double> time) {
  std::array<char, 32> seconds;
  static_cast<void>(std::snprintf(seconds.data(), seconds.size(), "%.3f s", time.count()));
  report("read " + std::to_string(read.folders) + " folders, " + std::to_string(read.entries) + " entries; " +
         std::to_string(read.requests) + " requests, " + std::to_string(read.bytes) + " bytes; " + seconds.data());
}

std::size_t write(Output& output, Quindarel::String::StringArray const& matches) {
  std::size_t const count = matches.size();
  for (std::size_t i = 0; i < count; ++i)
    if (auto const match = matches[i]) output.addMatch(*match);
  output.flush();
  return count;
}

/// The error's message, followed by the reason that the system or the store gave, unless the message contains it.
std::u16string withReason(Quindarel::InterpreterError const& error) {
  std::u16string const reason = fromBytes(error.reason());
  if (error.message().find(reason) != std::u16string::npos) return error.message();
  return error.message() + u" (" + reason + u")";
}

ExitStatus searchOne(SearchLibrary const& library, vfs::ReadSession const& session, std::u16string const& pattern,
                     Scope const& scope, Output& output) {
  matrix::detail::ArrayPtr matches;
  try {
    if (auto const hint = absolutePatternHint(pattern, scope.rootFolder); !hint.empty()) report(hint);
    Progress const progress(session.activity());
    matches = search(library, pattern, scope);
  } catch (Quindarel::System::InterruptException const&) {
    throw;
  } catch (...) {
    Quindarel::InterpreterError const error = Quindarel::currentInterpreterError();
    report(withReason(error), error.identifier());
    return failed;
  }
  return write(output, Quindarel::String::getString(matches)) == 0 ? noMatch : matched;
}

}  // namespace

ExitStatus searchAll(Options const& options, Output& output) {
  deferInterrupts();
  SearchLibrary const library(options.library.empty() ? findLibraryFile() : options.library);
  Scope const scope{fromBytes(options.rootFolder), options.dotFiles};

  auto const start = std::chrono::steady_clock::now();
  vfs::ReadSession const session;
  FailedFolders failures(session, scope);
  bool anyMatch = false;
  bool anyError = false;
  for (std::string const& bytes : options.patterns) {
    std::u16string const pattern = fromBytes(bytes);
    ExitStatus const status = searchOne(library, session, pattern, scope, output);
    anyMatch |= status == matched;
    anyError |= status == failed;
    failures.reportNew(pattern);
  }
  anyError |= failures.finish();
  // The library treats a root folder that doesn't exist as empty, but a user who named one has probably mistyped it.
  if (!anyMatch && !anyError && !scope.rootFolder.empty() && !isFolder(scope.rootFolder)) {
    report(u"the root folder \"" + scope.rootFolder + u"\" is not a folder");
    anyError = true;
  }
  if (options.stats) reportStats(session.activity(), std::chrono::steady_clock::now() - start);
  return anyError ? failed : anyMatch ? matched : noMatch;
}

}  // namespace kglob
