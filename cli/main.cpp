#include <csignal>
#include <exception>
#include <new>
#include <string>

#include "cli/help_text.hpp"
#include "cli/messages.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"
#include "cli/process_setup.hpp"
#include "cli/search_all.hpp"
#include "cli/signals.hpp"

namespace kglob {
namespace {

ExitStatus run(Options const& options) {
  Output output(options.nullEnded);
  ExitStatus status = matched;
  if (options.help)
    output.addText(helpText());
  else if (options.version)
    output.addText("kglob " KGLOB_VERSION "\n");
  else
    status = searchAll(options, output);
  output.close();
  return status;
}

/// Reports the exception that is being handled, or ends the process by a signal if the exception was thrown for one.
/// Throws `std::bad_alloc` when there isn't enough memory for the message.
void reportException() {
  try {
    throw;
  } catch (EndedBySignal const& end) {
    endBySignal(end.signal);
  } catch (UsageError const& error) {
    report(std::string(error.what()) + "; see kglob --help");
  } catch (WriteError const& error) {
    report("cannot write standard output: " + error.code().message());
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const& error) {
    report(error.what());
  }
}

}  // namespace
}  // namespace kglob

int main(int argc, char** argv) {
  using namespace kglob;
  reserveStandardDescriptors();
  shareHeap();
  try {
    try {
      return run(parseOptions(argc, argv));
    } catch (...) {
      reportException();
    }
  } catch (std::bad_alloc const&) {
    reportOutOfMemory();
  }
  return failed;
}
