#include "cli/colours.hpp"

#include <algorithm>
#include <cstdlib>

#include "cli/options.hpp"
#include "kglob.h"

namespace kglob {

Colours::Colours() {
  char const* const variable = std::getenv("LS_COLORS");
  std::string_view rest = variable == nullptr ? "" : variable;
  while (!rest.empty()) {
    std::string_view const item = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(item.size() + 1, rest.size()));
    std::size_t const equals = item.find('=');
    if (equals == std::string_view::npos) continue;
    std::string_view const key = item.substr(0, equals);
    std::string const colour(item.substr(equals + 1));
    // Anything but numbers would reach the terminal as a control sequence of the variable's choice.
    if (colour.find_first_not_of("0123456789;") != std::string::npos) continue;
    if (key == "di") folder_ = colour;
    if (key == "ln") link_ = colour;
    if (key == "fi") file_ = colour;
    if (key.starts_with('*')) endings_.push_back({std::string(key.substr(1)), colour});
  }
}

bool Colours::wanted(std::string_view when, bool onTerminal) {
  if (when == "always" || when == "never") return when == "always";
  if (when != "auto") throw UsageError("--color: \"" + std::string(when) + "\" is not one of auto, always and never");
  char const* const refused = std::getenv("NO_COLOR");
  return onTerminal && (refused == nullptr || *refused == '\0');
}

std::string_view Colours::ofKind(std::uint32_t kind) const {
  return kind == KGLOB_FOLDER ? folder_ : kind == KGLOB_LINK ? link_ : file_;
}

std::string_view Colours::of(std::string_view path, std::uint32_t kind) const {
  if (kind == KGLOB_FILE) {
    // The last one counts.
    auto const ending = std::find_if(endings_.rbegin(), endings_.rend(),
                                     [path](Ending const& each) { return path.ends_with(each.text); });
    if (ending != endings_.rend()) return ending->colour;
  }
  return ofKind(kind);
}

void Colours::append(std::string& line, std::string_view text, std::string_view colour) {
  if (colour.empty())
    line += text;
  else
    ((((line += "\x1B[") += colour) += 'm') += text) += "\x1B[0m";
}

}  // namespace kglob
