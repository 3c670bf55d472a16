#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kglob {

/// What the command line asks for. Texts are bytes, as the shell gave them.
struct Options {
  bool help = false;
  bool version = false;
  bool dotFiles = false;
  bool nullEnded = false;  ///< matches are ended by NUL, never escaped
  bool stats = false;
  std::string rootFolder;             ///< empty: the current folder
  std::string library;                ///< empty: to be looked for
  std::vector<std::string> patterns;  ///< at least one, unless help or version is asked for
};

/// The command line can't be understood; `what` says why in one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the command line: options and patterns in any order (POSIX 12.2, guideline 9 excepted), after "--" patterns
/// only. Of an option given twice the later value counts. Throws `UsageError`.
Options parseOptions(int argc, char const* const* argv);

/// The text of `--help`: one screen of 24 lines by 80 columns.
extern std::string_view const helpText;

}  // namespace kglob
