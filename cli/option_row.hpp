#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "cli/options.hpp"

namespace kglob {

/// Where the parser puts what it reads. A `bool` is a flag; everything else takes a value, and a list takes any number
/// of them, one each time the option is given.
using OptionTarget = std::variant<bool Options::*, std::string Options::*, std::vector<std::string> Options::*,
                                  std::optional<std::uint64_t> Options::*>;

/// What shells offer for an option's value; empty: nothing.
inline constexpr std::string_view folders = "<folders>";
inline constexpr std::string_view files = "<files>";

struct OptionRow {
  char letter;                   ///< the short form; '\0' where there is none
  std::string_view name;         ///< the long form, without "--"
  std::string_view placeholder;  ///< what help calls the value; empty for a flag
  OptionTarget target;
  std::string_view help;         ///< one line, for `--help` and the completions
  std::string_view more = {};    ///< what the manual page adds, whole sentences in plain text
  std::string_view values = {};  ///< `folders`, `files`, or the possible values with a space between

  constexpr bool takesValue() const { return !std::holds_alternative<bool Options::*>(target); }
  constexpr bool isRepeatable() const { return std::holds_alternative<std::vector<std::string> Options::*>(target); }
};

}  // namespace kglob
