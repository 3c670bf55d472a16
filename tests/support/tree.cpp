#include "support/tree.hpp"

#include <array>
#include <sstream>

#include "support/temporary_folder.hpp"

namespace korvan::test {

Tree& Tree::add(std::string const& path, Entry const& entry) {
  for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
    entries_.try_emplace(path.substr(0, end), Entry{EntryKind::folder, ""});
  }
  entries_.try_emplace(path, entry);
  return *this;
}

std::optional<std::string> Tree::resolve(std::string_view path, bool followLast, int links) const {
  bool const asFolder = !path.empty() && path.back() == '/';
  auto const isFolderItself = [&](std::string const& at) { return entries_.at(at).kind == EntryKind::folder; };
  std::string at;
  std::istringstream elements{std::string(path)};
  for (std::string name; std::getline(elements, name, '/');) {
    if (!isFolderItself(at)) return std::nullopt;
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      at.resize(at.find('/') == std::string::npos ? 0 : at.rfind('/'));
      continue;
    }
    auto const entry = entries_.find(at.empty() ? name : at + "/" + name);
    if (entry == entries_.end()) return std::nullopt;
    at = entry->first;
    if (entry->second.kind != EntryKind::link || (elements.eof() && !followLast)) continue;
    auto const target = links == 0 ? std::nullopt : resolve(entry->second.target, true, links - 1);
    if (!target) return std::nullopt;
    at = *target;
  }
  return asFolder && !isFolderItself(at) ? std::nullopt : std::optional(at);
}

Tree::Entries Tree::below(std::string_view folder) const {
  std::string const at = resolve(folder).value();
  std::string const prefix = at.empty() ? "" : at + "/";
  Entries all;
  for (auto entry = entries_.upper_bound(prefix); entry != entries_.end(); ++entry) {
    if (entry->first.compare(0, prefix.size(), prefix) != 0) break;
    all.emplace_back(entry->first.substr(prefix.size()), entry->second.kind);
  }
  return all;
}

Tree::Entries Tree::children(std::string_view folder) const {
  auto all = below(folder);
  std::erase_if(all, [](auto const& entry) { return entry.first.find('/') != std::string::npos; });
  return all;
}

void Tree::writeTo(TemporaryFolder const& folder) const {
  for (auto const& [path, entry] : entries_) {
    if (entry.kind == EntryKind::link) folder.addLink(path, folder.path() + "/" + entry.target);
    if (entry.kind == EntryKind::file) folder.addFile(path);
    if (entry.kind == EntryKind::folder) folder.addFolder(path);
  }
}

Tree Tree::random(std::mt19937& random, std::size_t entries, bool links) {
  static constexpr std::array names = {"a", "b", "ab", "a.b", ".a", "a*", "a%", "b a", "\xC3\xA9", "\xFF", "aab", "**"};
  Tree tree;
  tree.addFolder(searchRoot);
  std::vector<std::string> folders{searchRoot};
  std::vector<std::string> all{searchRoot};
  for (std::size_t i = 0; i < entries; ++i) {
    std::string const path = folders[random() % folders.size()] + "/" + names[random() % names.size()];
    if (tree.entries_.count(path) != 0) continue;
    all.push_back(path);
    auto const kind = random() % (links ? 5 : 4);
    if (kind < 2) {
      tree.addFile(path);
    } else if (kind < 4) {
      tree.addFolder(path);
      folders.push_back(path);
    } else {
      // To a folder, a file, another link, itself, or nothing.
      tree.addLink(path, all[random() % all.size()] + (random() % 8 == 0 ? "/nothing" : ""));
    }
  }
  return tree;
}

}  // namespace korvan::test
