#pragma once

#include "cli/exit_status.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"

namespace kglob {

/// Searches the patterns one after the other in one read session, and writes the matches of each when its search has
/// ended. An error of a search is reported and ends that search only. Throws `LibraryError`, what `Output` throws, and
/// `InterruptException` when the user interrupts a search.
ExitStatus searchAll(Options const& options, Output& output);

}  // namespace kglob
