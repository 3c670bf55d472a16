#pragma once

#include <string>
#include <vector>

#include "cli/options.hpp"

namespace kglob {

/// The patterns to search: those of the command line, then those of the file that `--patterns-from` names, where empty
/// lines are passed over. Throws `std::runtime_error` if the file can't be read.
std::vector<std::string> allPatterns(Options const& options);

}  // namespace kglob
