#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include "cli/failed_folders.hpp"
#include "cli/library_file.hpp"
#include "cli/messages.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"
#include "cli/progress.hpp"
#include "cli/search.hpp"
#include "cli/search_library.hpp"
#include "cli/signals.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/exists.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interpreter/string_array.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;

enum Status : int { matched = 0, noMatch = 1, failed = 2 };

/// A standard descriptor that the caller closed must not become a folder's or a connection's: it is kept taken, and not
/// for writing.
void keepStandardDescriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) open("/dev/null", O_RDONLY);
}

/// A vector of matches that grows leaves ever larger blocks behind. Left to itself, the C library maps each afresh and
/// gives it back; kept in the heap they serve the texts that come after, which saves a fifth of the page faults of a
/// large search.
void useHeapForLargeBlocks() {
  constexpr int most = 1 << 30;
  mallopt(M_MMAP_THRESHOLD, most);
  mallopt(M_TRIM_THRESHOLD, most);
  mallopt(M_TOP_PAD, 1 << 20);
}

void tellStats(vfs::Activity const& read, std::chrono::duration<double> time) {
  std::array<char, 32> seconds;
  static_cast<void>(std::snprintf(seconds.data(), seconds.size(), "%.3f s", time.count()));
  tell("read " + std::to_string(read.folders) + " folders, " + std::to_string(read.entries) + " entries; " +
       std::to_string(read.requests) + " requests, " + std::to_string(read.bytes) + " bytes; " + seconds.data());
}

std::size_t write(Output& output, Quindarel::String::StringArray const& matches, char end) {
  std::size_t const count = matches.size();
  for (std::size_t i = 0; i < count; ++i)
    if (auto const match = matches[i]) output.addMatch(*match, end);
  output.flush();
  return count;
}

/// The error's message, and behind it what the system or the store said, unless the message says so itself.
std::u16string withReason(Quindarel::InterpreterError const& error) {
  std::u16string const reason = foundation::core::text::fromBytes(error.reason());
  if (error.message().find(reason) != std::u16string::npos) return error.message();
  return error.message() + u" (" + reason + u")";
}

/// Searches one pattern and writes its matches when the call has ended. An error of the search is told, for its pattern
/// only.
Status searchOne(SearchLibrary const& library, vfs::ReadSession const& session, std::u16string const& pattern,
                 Scope const& scope, Output& output, char end) {
  matrix::detail::ArrayPtr matches;
  try {
    Progress const progress(session.activity());
    matches = search(library, pattern, scope);
  } catch (Quindarel::System::InterruptException const&) {
    throw;
  } catch (...) {
    Quindarel::InterpreterError const error = Quindarel::currentInterpreterError();
    tell(withReason(error), error.identifier());
    return failed;
  }
  return write(output, Quindarel::String::getString(matches), end) == 0 ? noMatch : matched;
}

bool isFolder(std::u16string const& folder) {
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  vfs::AbsoluteIRI const location =
      vfs::hasIRIPrefix(folder) ? vfs::AbsoluteIRI(folder) : vfs::toAbsoluteIRI(u"file", fl::filesystem::upath(folder));
  return vfs::exists(location, storage) == vfs::PathKind::isFolder;
}

Status searchAll(Options const& options, Output& output) {
  using foundation::core::text::fromBytes;
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
    Status const status = searchOne(library, session, pattern, scope, output, options.nullEnded ? '\0' : '\n');
    anyMatch |= status == matched;
    anyError |= status == failed;
    failures.tellNew(pattern);
  }
  anyError |= failures.finish();
  // A search of no folder finds nothing, and says nothing; whoever named that folder wants to know.
  if (!anyMatch && !anyError && !scope.rootFolder.empty() && !isFolder(scope.rootFolder)) {
    tell(u"the root folder \"" + scope.rootFolder + u"\" is no folder");
    anyError = true;
  }
  if (options.stats) tellStats(session.activity(), std::chrono::steady_clock::now() - start);
  return anyError ? failed : anyMatch ? matched : noMatch;
}

Status run(Options const& options) {
  Output output(options.nullEnded);
  Status status = matched;
  if (options.help)
    output.addText(helpText);
  else if (options.version)
    output.addText("kglob " KGLOB_VERSION "\n");
  else
    status = searchAll(options, output);
  output.close();
  return status;
}

}  // namespace
}  // namespace kglob

int main(int argc, char** argv) {
  using namespace kglob;
  useHeapForLargeBlocks();
  try {
    keepStandardDescriptors();
    return run(parseOptions(argc, argv));
  } catch (EndedBySignal const& end) {
    endBySignal(end.signal);
  } catch (Quindarel::System::InterruptException const&) {
    endBySignal(SIGINT);
  } catch (UsageError const& error) {
    tell(std::string(error.what()) + "; see kglob --help");
  } catch (WriteError const& error) {
    tell("cannot write standard output: " + error.code().message());
  } catch (std::bad_alloc const&) {
    tell("out of memory");
  } catch (std::exception const& error) {
    tell(error.what());
  }
  return failed;
}
