// generate TEMPLATE OUTPUT VERSION: writes a document of kglob. A template is the finished document, except for
// placeholders that are filled in from the option table. An unknown placeholder is an error.
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cli/option_table.hpp"
#include "foundation/core/text/ascii.hpp"

namespace {

using kglob::OptionRow;
using kglob::Options;
using kglob::optionTable;
using kglob::OptionTarget;

std::string replaceAll(std::string text, std::string_view part, std::string_view replacement) {
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += replacement.size())
    text.replace(at, part.size(), replacement);
  return text;
}

/// The short and the long form, with a text between where both exist.
std::string forms(OptionRow const& row, std::string_view between) {
  std::string const longForm = "--" + std::string(row.name);
  return row.letter ? std::string{'-', row.letter}.append(between) + longForm : longForm;
}

/// Escapes plain text for a manual page, where an unescaped "-" is a hyphen, and a "." at the beginning of a line
/// starts a request.
std::string manualText(std::string_view text) {
  return "\\&" + replaceAll(replaceAll(std::string(text), "\\", "\\e"), "-", "\\-");
}

/// Replaces a word, which nothing that could be part of a word is next to.
std::string replaceWord(std::string text, std::string_view word, std::string_view replacement) {
  using foundation::core::text::isLetter;
  for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos;) {
    std::size_t const end = at + word.size();
    bool const isWord = (at == 0 || !isLetter(text[at - 1])) && (end == text.size() || !isLetter(text[end]));
    if (isWord) text.replace(at, word.size(), replacement);
    at += isWord ? replacement.size() : word.size();
  }
  return text;
}

std::string manualOptions() {
  std::string lines;
  for (OptionRow const& row : optionTable) {
    std::string const value = "\\fI" + std::string(row.placeholder) + "\\fR";
    std::string text = manualText(row.help) + (row.more.empty() ? "" : ".\n" + manualText(row.more));
    if (row.takesValue()) text = replaceWord(text, row.placeholder, value);
    std::string const term = replaceAll(forms(row, "\\fR, \\fB"), "-", "\\-");
    lines += ".TP\n\\fB" + term + "\\fR" + (row.takesValue() ? " " + value : "") + '\n' + text + '\n';
  }
  lines.pop_back();
  return lines;
}

std::string bashOptions() {
  std::string words;
  for (OptionRow const& row : optionTable) words += forms(row, " ") + ' ';
  return words + "--";
}

/// A branch of a "case" for each option with a value, which sets what the value is completed with.
std::string bashCases() {
  std::string cases;
  for (OptionRow const& row : optionTable) {
    if (!row.takesValue()) continue;
    std::string const action = row.values == kglob::folders ? "-d"
                               : row.values == kglob::files ? "-f"
                                                            : "-W '" + std::string(row.values) + "'";
    cases += "    " + forms(row, " | ") + ") action=(" + action + ") ;;\n";
  }
  cases.pop_back();
  return cases;
}

std::string zshValue(OptionRow const& row) {
  if (!row.takesValue()) return {};
  std::string const action = row.values == kglob::folders ? "_path_files -/"
                             : row.values == kglob::files ? "_files"
                             : row.values.empty()         ? ""
                                                          : "(" + std::string(row.values) + ")";
  return ":" + foundation::core::text::lowerCase(row.placeholder) + ":" + action;
}

/// With help or version, the program ignores everything else on the command line.
bool excludesOthers(OptionRow const& row) {
  return row.target == OptionTarget(&Options::help) || row.target == OptionTarget(&Options::version);
}

std::string zshOptions() {
  std::string lines;
  for (OptionRow const& row : optionTable) {
    std::string const name = "--" + std::string(row.name) + (row.takesValue() ? "=" : "");
    std::string const rest = "[" + std::string(row.help) + "]" + zshValue(row) + "'";
    std::string const others = excludesOthers(row)  ? "(- *)"
                               : row.isRepeatable() ? "*"
                               : row.letter         ? "(" + forms(row, " ") + ")"
                                                    : "";
    std::string const letter = std::string{'-', row.letter} + (row.takesValue() ? "+" : "");
    lines += "  '" + others + (row.letter ? "'{" + letter + "," + name + "}'" : name) + rest + " \\\n";
  }
  lines.pop_back();
  return lines;
}

std::string fishOptions() {
  std::string lines;
  for (OptionRow const& row : optionTable) {
    lines += "complete -c kglob";
    if (row.letter) lines += std::string(" -s ") + row.letter;
    (lines += " -l ") += row.name;
    if (row.values == kglob::folders)
      lines += " -x -a '(__kglob_folders)'";
    else if (row.values == kglob::files)
      lines += " -r -F";
    else if (row.takesValue())
      lines += " -x -a '" + std::string(row.values) + "'";
    lines += " -d '" + std::string(row.help) + "'\n";
  }
  lines.pop_back();
  return lines;
}

std::string read(char const* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(std::string("cannot read ") + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The first placeholder in the text; empty if there is none.
std::string_view firstPlaceholder(std::string_view text) {
  for (std::size_t begin = text.find('@'); begin != text.npos; begin = text.find('@', begin + 1)) {
    std::size_t const end = text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_", begin + 1);
    if (end != text.npos && end > begin + 1 && text[end] == '@') return text.substr(begin, end + 1 - begin);
  }
  return {};
}

void generate(char const* templatePath, char const* outputPath, char const* version) {
  std::map<std::string, std::string> const placeholders{
      {"@VERSION@", version},        {"@MANUAL_OPTIONS@", manualOptions()}, {"@BASH_OPTIONS@", bashOptions()},
      {"@BASH_CASES@", bashCases()}, {"@ZSH_OPTIONS@", zshOptions()},       {"@FISH_OPTIONS@", fishOptions()},
  };
  std::string text = read(templatePath);
  for (auto const& [placeholder, replacement] : placeholders) text = replaceAll(text, placeholder, replacement);
  if (std::string_view const unknown = firstPlaceholder(text); !unknown.empty())
    throw std::runtime_error(std::string(templatePath) + ": unknown placeholder " + std::string(unknown));
  std::ofstream file(outputPath, std::ios::binary);
  if (!(file << text).flush()) throw std::runtime_error(std::string("cannot write ") + outputPath);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 4) throw std::runtime_error("usage: generate TEMPLATE OUTPUT VERSION");
    generate(argv[1], argv[2], argv[3]);
    return 0;
  } catch (std::exception const& error) {
    std::cerr << "generate: " << error.what() << '\n';
    return 1;
  }
}
