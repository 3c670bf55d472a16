#pragma once

#include "cli/options.hpp"

namespace kglob {

/// Passes on what the command line says about object stores. To be called before the first search. Throws `UsageError`
/// for an unknown payer and `std::bad_alloc`.
void configureObjectStore(Options const& options);

}  // namespace kglob
