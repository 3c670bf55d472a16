#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <variant>

#include "cli/options.hpp"

/// The options of kglob, each in one place. The command line is read and `--help` is put together from this table at
/// run time; the manual page and the completions of the shells are made from it when the program is built (see
/// cli/documents).
namespace kglob {

/// What shells offer for an option's value.
enum class Completion { none, folders };

/// Where the parser puts what it reads. A `bool` is a flag, a text is an option with a value.
using OptionTarget = std::variant<bool Options::*, std::string Options::*>;

struct OptionRow {
  char letter;                   ///< the short form; '\0' where there is none
  std::string_view name;         ///< the long form, without "--"
  std::string_view placeholder;  ///< what help calls the value; empty for a flag
  Completion completion;
  OptionTarget target;
  std::string_view help;    ///< one line, for `--help` and the completions
  std::string_view manual;  ///< for the manual page, in plain text; the placeholder is set in italics there

  constexpr bool takesValue() const { return !std::holds_alternative<bool Options::*>(target); }
};

inline constexpr std::array optionTable = {
    OptionRow{
        .letter = 'r',
        .name = "root-folder",
        .placeholder = "FOLDER",
        .completion = Completion::folders,
        .target = &Options::rootFolder,
        .help = "search below FOLDER, not the current folder",
        .manual = "search relative patterns below FOLDER, a local folder or an IRI; the default is the current folder",
    },
    OptionRow{
        .letter = 'd',
        .name = "include-dot-files",
        .placeholder = "",
        .completion = Completion::none,
        .target = &Options::dotFiles,
        .help = "let * and ** match names that begin with a dot",
        .manual = "let * and ** match names that begin with a dot",
    },
    OptionRow{
        .letter = '0',
        .name = "null",
        .placeholder = "",
        .completion = Completion::none,
        .target = &Options::nullEnded,
        .help = "end each match with a NUL byte, escape nothing",
        .manual = "end each match with a NUL byte and escape nothing",
    },
    OptionRow{
        .letter = '\0',
        .name = "stats",
        .placeholder = "",
        .completion = Completion::none,
        .target = &Options::stats,
        .help = "report on standard error how much was read",
        .manual =
            "report on standard error how many folders, entries and bytes were read, with how many requests, and the "
            "time taken",
    },
    OptionRow{
        .letter = 'h',
        .name = "help",
        .placeholder = "",
        .completion = Completion::none,
        .target = &Options::help,
        .help = "show this help",
        .manual = "show a short help",
    },
    OptionRow{
        .letter = '\0',
        .name = "version",
        .placeholder = "",
        .completion = Completion::none,
        .target = &Options::version,
        .help = "show the version",
        .manual = "show the version",
    },
};

static_assert(std::ranges::all_of(optionTable,
                                  [](OptionRow const& row) { return row.takesValue() == !row.placeholder.empty(); }),
              "an option has a placeholder if and only if it takes a value");
static_assert(
    std::ranges::all_of(optionTable,
                        [](OptionRow const& row) {
                          return row.help.find_first_of("'\\[]:") == std::string_view::npos;
                        }),
    "a help line is quoted in completions as it is, so it must not contain characters that are special there");

}  // namespace kglob
