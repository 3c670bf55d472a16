#pragma once

#include <string>

namespace kglob {

/// The text of `--help`, at most 80 columns wide.
std::string helpText();

}  // namespace kglob
