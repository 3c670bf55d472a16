#include "cli/name_format.hpp"

#include <string_view>

#include "cli/shown_text.hpp"
#include "foundation/core/text/bytes.hpp"

namespace kglob {

NameFormat::NameFormat(Options const& options, bool onTerminal)
    : location_(options.rootFolder()),
      absolute_(options.absolute),
      decode_(options.decode),
      escape_(onTerminal && !options.nullEnded),
      hyperlink_(options.hyperlink && escape_),
      colours_(Colours::wanted(options.colour, escape_) ? std::optional<Colours>(std::in_place) : std::nullopt) {}

void NameFormat::append(std::string& line, Match const& match) const {
  std::string text = absolute_ ? location_.absolute(match.path) : std::string(match.path);
  if (decode_) text = decoded(text);
  std::string shown;
  if (escape_)
    appendForTerminal(shown, foundation::core::text::fromBytes(text));
  else
    shown = text;
  if (hyperlink_) ((line += "\x1B]8;;") += linkTarget(location_.absolute(match.path))) += "\x1B\\";
  if (colours_)
    appendColoured(line, match, shown, shown != text);
  else
    line += shown;
  if (hyperlink_) line += "\x1B]8;;\x1B\\";
}

// The folders in the colour of folders and the name in its own, or everything in that if the path had to be quoted.
void NameFormat::appendColoured(std::string& line, Match const& match, std::string const& shown, bool isQuoted) const {
  std::string_view const path = shown;
  std::size_t const slash = path.size() < 2 ? std::string_view::npos : path.rfind('/', path.size() - 2);
  std::size_t const nameStart = isQuoted || slash == std::string_view::npos ? 0 : slash + 1;
  if (nameStart > 0) Colours::append(line, path.substr(0, nameStart), colours_->ofKind(KGLOB_FOLDER));
  Colours::append(line, path.substr(nameStart), colours_->of(match.path, match.facts.kind));
}

}  // namespace kglob
