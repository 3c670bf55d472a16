#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kglob {

/// What the command line asks for. Texts are bytes, as the shell passed them; those with a grammar of their own are
/// checked by `MatchFilter`.
struct Options {
  bool help = false;
  bool version = false;
  bool stats = false;

  // What is searched.
  std::vector<std::string> patterns;     ///< operands
  std::string patternsFrom;              ///< a file with further patterns, "-" for standard input; empty: none
  std::vector<std::string> rootFolders;  ///< the last one counts
  bool dotFiles = false;
  bool follow = false;
  bool oneFileSystem = false;
  std::vector<std::string> excluded;
  std::optional<std::uint64_t> maxDepth;
  std::optional<std::uint64_t> threads;

  // How object stores are used; empty or false: as the environment says.
  std::string endpointUrl;
  std::string region;
  std::string profile;
  bool noSignRequest = false;
  std::string requestPayer;

  // Which matches are shown.
  std::vector<std::string> types;
  std::vector<std::string> sizes;
  std::string changedWithin;
  std::string changedBefore;
  bool unique = false;
  std::optional<std::uint64_t> limit;
  bool quiet = false;
  bool count = false;

  // In which form.
  bool nullEnded = false;  ///< matches end with NUL and are never escaped
  bool absolute = false;
  bool decode = false;
  bool longFormat = false;
  bool humanSizes = false;
  bool json = false;
  std::string colour = "auto";
  bool hyperlink = false;

  /// Empty for the current folder.
  std::string rootFolder() const { return rootFolders.empty() ? std::string() : rootFolders.back(); }
};

/// The command line can't be understood; `what` says why in one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the command line: options and patterns in any order (POSIX 12.2, guideline 9 excepted), after "--" patterns
/// only. The last value of an option that can't be repeated counts. Throws `UsageError`.
Options parseOptions(int argc, char* const* argv);

}  // namespace kglob
