#include "cli/locations.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "foundation/core/text/ascii.hpp"

namespace kglob {

bool isIRI(std::string_view text) {
  std::size_t const end = text.find("://");
  return end != std::string_view::npos && end > 0 && foundation::core::text::isLetter(text[0]) &&
         std::ranges::all_of(text.substr(0, end), [](char c) {
           return foundation::core::text::isLetter(c) || foundation::core::text::isDigit(c) || c == '+' || c == '-' ||
                  c == '.';
         });
}

std::string absoluteRoot(std::string const& rootFolder) {
  if (rootFolder.starts_with('/') || isIRI(rootFolder)) return rootFolder;
  std::error_code error;
  std::filesystem::path const current = std::filesystem::current_path(error);
  return error ? std::string() : rootFolder.empty() ? current.string() : (current / rootFolder).string();
}

std::string asWritten(std::string const& path, std::string const& rootFolder) {
  std::string const root = absoluteRoot(rootFolder);
  if (root.empty() || !path.starts_with(root)) return path;
  std::string_view below = std::string_view(path).substr(root.size());
  if (below.empty()) return rootFolder.empty() ? "." : rootFolder;
  if (below.front() != '/' && root.back() != '/') return path;
  below.remove_prefix(std::min(below.find_first_not_of('/'), below.size()));
  std::string text = rootFolder;
  if (!text.empty() && !text.ends_with('/')) text += '/';
  return text += below;
}

std::string absolutePatternHint(std::string const& pattern, std::string const& rootFolder) {
  bool const inStore =
      isIRI(rootFolder) && foundation::core::text::lowerCase(std::string_view(rootFolder).substr(0, 7)) != "file://";
  if (!inStore || !pattern.starts_with('/')) return {};
  return "\"" + pattern + "\" is searched in the store of the root folder; for the local disk write \"file://" +
         pattern + "\"";
}

}  // namespace kglob
