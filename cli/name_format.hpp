#pragma once

#include <optional>
#include <string>

#include "cli/colours.hpp"
#include "cli/match.hpp"
#include "cli/match_location.hpp"
#include "cli/options.hpp"

namespace kglob {

/// How the path of a match is shown: relative or absolute, encoded or decoded; on a terminal escaped (see
/// appendForTerminal), coloured and as a link, unless matches end with NUL.
class NameFormat {
 public:
  /// `onTerminal`: whether standard output is one.
  NameFormat(Options const& options, bool onTerminal);

  kglob_fact_level neededFacts() const noexcept { return colours_ ? KGLOB_KINDS : KGLOB_NO_FACTS; }

  /// Whether every path is shown as the search gives it.
  bool isPlain() const noexcept { return !absolute_ && !decode_ && !escape_ && !hyperlink_ && !colours_; }

  void append(std::string& line, Match const& match) const;

 private:
  void appendColoured(std::string& line, Match const& match, std::string const& shown, bool isQuoted) const;

  MatchLocation location_;
  bool absolute_;
  bool decode_;
  bool escape_;
  bool hyperlink_;
  std::optional<Colours> colours_;
};

}  // namespace kglob
