#pragma once

#include <string>
#include <vector>

namespace kglob {

/// What a look-up found.
enum class Presence { absent, present, unknown };

/// Whether each of the patterns matches anything below the root folder, dot files included; `unknown` for one whose
/// search ended in an error. Costs a search for each pattern, up to its end.
std::vector<Presence> lookUp(std::vector<std::string> const& patterns, std::string const& rootFolder);

}  // namespace kglob
