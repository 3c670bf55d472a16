#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace kglob {

/// What the command line asks for. Texts are bytes, as the shell passed them.
struct Options {
  bool help = false;
  bool version = false;
  bool dotFiles = false;
  bool nullEnded = false;  ///< matches end with NUL and are never escaped
  bool stats = false;
  std::string rootFolder;             ///< empty: the current folder
  std::vector<std::string> patterns;  ///< at least one, unless help or version is set
};

/// The command line can't be understood; `what` says why in one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the command line: options and patterns in any order (POSIX 12.2, guideline 9 excepted), after "--" patterns
/// only. The last value of a repeated option counts. Throws `UsageError`.
Options parseOptions(int argc, char const* const* argv);

}  // namespace kglob
