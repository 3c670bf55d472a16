#include "cli/root_folder.hpp"

#include <string_view>

#include "cli/locations.hpp"
#include "cli/messages.hpp"
#include "cli/search.hpp"

namespace kglob {

bool checkRootFolder(std::string const& rootFolder) {
  std::string pattern = rootFolder;
  if (!pattern.ends_with('/')) pattern += '/';
  if (isIRI(pattern))
    for (std::size_t star = 0; (star = pattern.find('*', star)) != std::string::npos;) pattern.replace(star, 1, "%2A");
  // On a disk a star in the root folder's name can't be escaped and matches other folders too.
  Search search({pattern}, {.dotFiles = true});
  std::string const wanted = pattern + '\0';
  bool const isLiteral = pattern.find('*') == std::string::npos;
  for (std::string_view matches; !(matches = search.nextBlock([] {})).empty();) {
    if (isLiteral || matches.starts_with(wanted) || matches.find('\0' + wanted) != std::string_view::npos) return true;
  }
  if (kglob_failure const* const error = search.error())
    report(*error);
  else
    report("the root folder \"" + rootFolder + "\" is not a folder");
  return false;
}

}  // namespace kglob
