#pragma once

#include <cstddef>
#include <string>

namespace foundation::storage::s3 {

/// How a command ended, and what it wrote to its standard output.
struct CommandResult {
  std::string output;
  bool tooLarge = false;     ///< it wrote more than the limit, and was ended
  bool statusKnown = false;  ///< false if the process ignores SIGCHLD or has collected the status elsewhere
  int status = 0;            ///< as `waitpid` gives it
};

/// Runs a command by /bin/sh with this process's environment, standard input and standard error, and waits for its end.
/// The command inherits no other descriptor, and starts with the default action for every signal and none blocked.
/// Changes no state of the process and waits for no other child, as a host has its own. Throws
/// `Quindarel::System::InterruptException` within 50 ms of an interrupt, after ending the command, and
/// `std::system_error` if it can't be started.
CommandResult runShellCommand(std::string const& command, std::size_t maximumOutput);

}  // namespace foundation::storage::s3
