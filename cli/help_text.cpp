#include "cli/help_text.hpp"

#include <algorithm>
#include <string_view>

#include "cli/option_table.hpp"

namespace kglob {
namespace {

constexpr std::string_view beforeOptions = R"(usage: kglob [OPTION]... [--] PATTERN...
Find files and folders by wildcard patterns, on disks and in object stores.

  *    any characters within a name       **   any number of folders
  At the end, / matches folders only. Every other character matches itself.

)";

constexpr std::string_view afterOptions = R"(
Examples:
  kglob '**/*.csv'                        every CSV file below this folder
  kglob -r /var/log '*/'                  the folders in /var/log
  kglob 's3://bucket/data/**/*.parquet'   the same in an object store
  kglob -E node_modules '**/*.js'         not the scripts of packages
  kglob -0 '**/*.log' | xargs -0 wc -l    any names, passed to another program
  kglob -- '-*'                           names that begin with a dash

Exit status: 0 matches, 1 no match, 2 an error or a folder that can't be read.
)";

std::string forms(OptionRow const& row) {
  std::string text = row.letter ? std::string{'-', row.letter, ','} : std::string("   ");
  (text += " --") += row.name;
  if (row.takesValue()) (text += ' ') += row.placeholder;
  return text;
}

}  // namespace

std::string helpText() {
  std::size_t width = 0;
  for (OptionRow const& row : optionTable) width = std::max(width, forms(row).size());
  std::string text(beforeOptions);
  for (OptionRow const& row : optionTable) {
    std::string line = forms(row);
    line.resize(width, ' ');
    (((text += "  ") += line) += "  ") += row.help;
    text += '\n';
  }
  return text += afterOptions;
}

}  // namespace kglob
