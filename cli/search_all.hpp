#pragma once

#include "cli/exit_status.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"

namespace kglob {

/// Searches the patterns one after the other and writes the matches as they are found. An error of a pattern is
/// reported and the others are searched all the same. Throws what `Output` and `Search` throw.
ExitStatus searchAll(Options const& options, Output& output);

}  // namespace kglob
