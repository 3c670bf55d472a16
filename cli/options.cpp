#include "cli/options.hpp"

#include <algorithm>
#include <string_view>
#include <type_traits>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>

#include "cli/option_table.hpp"

namespace kglob {
namespace {

/// The parser would take the argument after "--name=" for the value: `--root-folder= '*'` would search below "*".
void refuseEmptyValues(int argc, char const* const* argv) {
  for (std::string_view const argument : std::vector<std::string_view>(argv + 1, argv + argc)) {
    if (argument == "--") return;
    if (argument.starts_with("--") && argument.find('=') == argument.size() - 1)
      throw UsageError(std::string(argument) + " needs a value");
  }
}

void addOption(CLI::App& app, OptionRow const& row, Options& options) {
  std::string names = "--" + std::string(row.name);
  if (row.letter) ((names += ",-") += row.letter);
  auto const add = [&](auto target) {
    if constexpr (std::is_same_v<decltype(target), bool Options::*>) {
      app.add_flag(names, options.*target)->disable_flag_override();
    } else {
      CLI::Option* const option = app.add_option(names, options.*target);
      if constexpr (std::is_same_v<decltype(target), std::optional<std::uint64_t> Options::*>)
        option->check(CLI::PositiveNumber);
      option->type_name(std::string(row.placeholder))
          ->type_size(1)
          ->expected(1)
          ->allow_extra_args(false)  // or a value like "[a,b]" would be split at the commas
          ->multi_option_policy(row.isRepeatable() ? CLI::MultiOptionPolicy::TakeAll
                                                   : CLI::MultiOptionPolicy::TakeLast);
    }
  };
  std::visit(add, row.target);
}

/// The patterns among the arguments that aren't known options.
std::vector<std::string> patternsOf(std::vector<std::string> arguments) {
  auto const mark = std::ranges::find(arguments, "--");
  auto const unknown = std::find_if(arguments.begin(), mark, [](std::string const& argument) {
    return argument.size() > 1 && argument.front() == '-';
  });
  if (unknown != mark) throw UsageError("unknown option " + *unknown + "; put -- before a pattern that begins with -");
  if (mark != arguments.end()) arguments.erase(mark);
  return arguments;
}

}  // namespace

Options parseOptions(int argc, char const* const* argv) {
  Options options;
  CLI::App app;
  app.set_help_flag();  // the text is our own, see help_text.hpp
  app.allow_extras();   // patterns aren't CLI11 positionals: it would split one like "[a,b]" at the commas
  for (OptionRow const& row : optionTable) addOption(app, row, options);

  if (argc < 1) throw UsageError("no PATTERN given");
  refuseEmptyValues(argc, argv);
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    throw UsageError(error.what());
  }
  options.patterns = patternsOf(app.remaining());
  if (options.humanSizes && !options.longFormat) options.help = true;
  bool const searches = !options.help && !options.version;
  if (searches && options.patterns.empty() && options.patternsFrom.empty()) throw UsageError("no PATTERN given");
  return options;
}

}  // namespace kglob
