#pragma once

#include <string>

#include "cli/match.hpp"
#include "cli/match_location.hpp"

namespace kglob {

/// Adds the match as a JSON object (RFC 8259) on one line; `--json` in the option table lists the members. `path` is
/// what is to be shown, and a relative one starts from `root`.
void appendJson(std::string& line, std::string const& path, std::string const& root, kglob_facts const& facts);

}  // namespace kglob
