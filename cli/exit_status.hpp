#pragma once

namespace kglob {

/// How kglob ends when no signal ends it; `failed` outweighs the others, whatever was found.
enum ExitStatus : int {
  matched = 0,
  noMatch = 1,
  failed = 2,  ///< an error, or a folder that couldn't be read
};

}  // namespace kglob
