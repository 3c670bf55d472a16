#include "foundation/storage/s3/profile_file.hpp"

#include "foundation/core/text/ascii.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
  auto const first = text.find_first_not_of(blanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

std::string sectionName(std::string_view bracketed) {
  std::string name;
  bool pendingSpace = false;
  for (char const c : trimmed(bracketed)) {
    if (c == '"' || c == '\'') continue;
    if (blanks.find(c) != std::string_view::npos) {
      pendingSpace = true;
      continue;
    }
    if (pendingSpace) name += ' ';
    pendingSpace = false;
    name += c;
  }
  return name;
}

}  // namespace

ProfileFile parseProfileFile(std::string_view text) {
  ProfileFile file;
  ProfileSection* section = nullptr;
  std::string parent;  // the last setting that wasn't indented
  while (!text.empty()) {
    auto const end = text.find('\n');
    std::string_view const rawLine = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);

    std::string_view const line = trimmed(rawLine);
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    bool const indented = rawLine.front() == ' ' || rawLine.front() == '\t';
    if (!indented && line.front() == '[') {
      auto const close = line.find(']');
      section = close == std::string_view::npos ? nullptr : &file[sectionName(line.substr(1, close - 1))];
      parent.clear();
      continue;
    }
    auto const equals = line.find('=');
    if (section == nullptr || equals == std::string_view::npos) continue;
    std::string name = core::text::lowerCase(trimmed(line.substr(0, equals)));
    if (indented && !parent.empty())
      name.insert(0, parent + '.');
    else
      parent = name;
    (*section)[std::move(name)] = trimmed(line.substr(equals + 1));
  }
  return file;
}

}  // namespace foundation::storage::s3
