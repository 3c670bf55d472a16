#pragma once

#include <string>

namespace kglob {

/// The text of `--help`: one screen of 24 lines by 80 columns.
std::string helpText();

}  // namespace kglob
