#include "cli/options.hpp"

#include <algorithm>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

namespace kglob {
namespace {

/// "--name=" would take the next argument for its value: `--root-folder= '*'` would search no pattern below "*".
void refuseEmptyValues(int argc, char const* const* argv) {
  for (std::string_view const argument : std::vector<std::string_view>(argv + 1, argv + argc)) {
    if (argument == "--") return;
    if (argument.starts_with("--") && argument.find('=') == argument.size() - 1)
      throw UsageError(std::string(argument) + " lacks its value");
  }
}

/// The patterns among the arguments that are no known option.
std::vector<std::string> patternsOf(std::vector<std::string> arguments) {
  auto const mark = std::ranges::find(arguments, "--");
  auto const unknown = std::find_if(arguments.begin(), mark, [](std::string const& argument) {
    return argument.size() > 1 && argument.front() == '-';
  });
  if (unknown != mark) throw UsageError("there is no option " + *unknown + "; a pattern that begins with - follows --");
  if (mark != arguments.end()) arguments.erase(mark);
  return arguments;
}

}  // namespace

Options parseOptions(int argc, char const* const* argv) {
  Options options;
  CLI::App app;
  app.set_help_flag();  // the text is our own, see helpText
  app.allow_extras();   // patterns are no CLI11 positionals: it would split one like "[a,b]" at the commas
  auto const value = [&](char const* names, char const* type, std::string& text) {
    app.add_option(names, text)->type_name(type)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  };
  auto const flag = [&](char const* names, bool& set) { app.add_flag(names, set)->disable_flag_override(); };
  value("-r,--root-folder", "FOLDER", options.rootFolder);
  value("--library", "FILE", options.library);
  flag("-d,--include-dot-files", options.dotFiles);
  flag("-0,--null", options.nullEnded);
  flag("--stats", options.stats);
  flag("-h,--help", options.help);
  flag("--version", options.version);

  if (argc < 1) throw UsageError("no PATTERN is given");
  refuseEmptyValues(argc, argv);
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    throw UsageError(error.what());
  }
  options.patterns = patternsOf(app.remaining());
  if (options.patterns.empty() && !options.help && !options.version) throw UsageError("no PATTERN is given");
  return options;
}

std::string_view const helpText =
    R"(usage: kglob [OPTION]... [--] PATTERN...
Find files and folders by wildcard patterns, on disks and in object stores.

  *    any characters within a name       **   any number of folders
  At the end, / matches folders only. Every other character stands for itself.

  -r, --root-folder FOLDER  search below FOLDER, not the current folder
  -d, --include-dot-files   let * and ** match names that begin with a dot
  -0, --null                end each match with a NUL byte, escape nothing
      --stats               tell on standard error what the search has read
      --library FILE        load the search library from FILE
  -h, --help                show this help
      --version             show the version

Examples:
  kglob '**/*.csv'                        every CSV file below this folder
  kglob -r /var/log '*/'                  the folders in /var/log
  kglob 's3://bucket/data/**/*.parquet'   the same in an object store
  kglob -0 '**/*.log' | xargs -0 wc -l    names with any characters, passed on
  kglob -- '-*'                           names that begin with a dash

Exit status: 0 matches, 1 no match, 2 an error or a folder that can't be read.
)";

}  // namespace kglob
