#include "cli/options.hpp"

#include <array>
#include <charconv>
#include <string_view>
#include <type_traits>

#include <getopt.h>

#include "cli/option_table.hpp"

namespace kglob {
namespace {

/// What getopt_long returns: an operand, an option's letter, or this plus the option's index in the table.
constexpr int operand = 1;
constexpr int firstLongOption = 256;

std::array<option, optionTable.size() + 1> longOptions() {
  std::array<option, optionTable.size() + 1> options{};
  for (std::size_t i = 0; i < optionTable.size(); ++i) {
    OptionRow const& row = optionTable[i];
    int const hasValue = row.takesValue() ? required_argument : no_argument;
    options[i] = {row.name.data(), hasValue, nullptr, firstLongOption + static_cast<int>(i)};
  }
  return options;
}

std::string letters() {
  std::string letters = "-:";  // operands are returned in order; a missing value is told from an unknown option
  for (OptionRow const& row : optionTable) {
    if (!row.letter) continue;
    letters += row.letter;
    if (row.takesValue()) letters += ':';
  }
  return letters;
}

/// Null for an unknown option.
OptionRow const* findRow(int code) {
  if (code >= firstLongOption) return &optionTable[static_cast<std::size_t>(code - firstLongOption)];
  auto const* const row =
      std::ranges::find_if(optionTable, [code](OptionRow const& each) { return each.letter && each.letter == code; });
  return row == optionTable.end() ? nullptr : row;
}

std::uint64_t parseNumber(std::string const& option, std::string_view text) {
  std::uint64_t number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0)
    throw UsageError(option + ": \"" + std::string(text) + "\" is not a number greater than 0");
  return number;
}

void store(OptionRow const& row, char const* value, Options& options) {
  auto const put = [&](auto target) {
    using Value = std::remove_reference_t<decltype(options.*target)>;
    if constexpr (std::is_same_v<Value, bool>)
      options.*target = true;
    else if constexpr (std::is_same_v<Value, std::string>)
      options.*target = value;
    else if constexpr (std::is_same_v<Value, std::vector<std::string>>)
      (options.*target).emplace_back(value);
    else
      options.*target = parseNumber("--" + std::string(row.name), value);
  };
  std::visit(put, row.target);
}

[[noreturn]] void failUnknown(std::string const& option) {
  throw UsageError("unknown option " + option + "; put -- before a pattern that begins with -");
}

/// The name of a long option as it was typed, with the dashes; empty for another argument.
std::string_view typedName(std::string_view argument) {
  return argument.starts_with("--") ? argument.substr(0, argument.find('=')) : std::string_view();
}

/// Handles a code that getopt_long returned for `argument`.
void handle(int code, std::string const& argument, Options& options) {
  if (code == operand) {
    options.patterns.emplace_back(optarg);
    return;
  }
  std::string const typed(typedName(argument));
  bool const isLong = !typed.empty() && (code >= firstLongOption || optopt == 0 || optopt >= firstLongOption);
  std::string const option =
      isLong ? typed : std::string{'-', static_cast<char>(code == '?' || code == ':' ? optopt : code)};
  OptionRow const* const row = findRow(code == '?' || code == ':' ? optopt : code);
  // Abbreviated names would stop working with the next option that begins alike.
  if (row == nullptr || (isLong && typed.substr(2) != row->name)) failUnknown(option);
  if (code == ':' || (row->takesValue() && *optarg == '\0' && isLong && argument.ends_with('=')))
    throw UsageError((code == ':' ? option : argument) + " needs a value: " + std::string(row->placeholder));
  if (code == '?') throw UsageError(option + " takes no value");
  store(*row, optarg, options);
}

}  // namespace

Options parseOptions(int argc, char* const* argv) {
  Options options;
  if (argc < 1) throw UsageError("no PATTERN given");
  auto const names = longOptions();
  std::string const shortForms = letters();
  opterr = 0;
  for (;;) {
    int const index = optind;
    int const code = getopt_long(argc, argv, shortForms.c_str(), names.data(), nullptr);
    if (code < 0) break;
    handle(code, argv[index], options);
  }
  options.patterns.insert(options.patterns.end(), argv + optind, argv + argc);  // those after "--"
  if (options.humanSizes && !options.longFormat) options.help = true;
  bool const searches = !options.help && !options.version;
  if (searches && options.patterns.empty() && options.patternsFrom.empty()) throw UsageError("no PATTERN given");
  return options;
}

}  // namespace kglob
