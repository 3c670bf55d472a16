#include "support/tree.hpp"

#include <array>
#include <functional>
#include <stdexcept>
#include <utility>

#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

// Takes the first element off the path.
std::string_view takeElement(std::string_view& path) {
  std::size_t const end = path.find('/');
  std::string_view const element = path.substr(0, end);
  path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
  return element;
}

}  // namespace

Tree::Tree() {
  root_.identity = ++made_;
}

Node& Tree::make(std::string_view path, Node::Kind kind) {
  Node* node = &root_;
  while (!path.empty()) {
    std::string_view const name = takeElement(path);
    if (name.empty()) continue;
    if (node->kind != Node::Kind::folder) throw std::logic_error("a tree's folder is asked to be something else");
    auto const [child, isNew] = node->children.try_emplace(std::string(name));
    node = &child->second;
    if (isNew) {
      node->kind = path.empty() ? kind : Node::Kind::folder;
      node->identity = ++made_;
    }
  }
  return *node;
}

Tree& Tree::addFile(std::string_view path) {
  make(path, Node::Kind::file);
  return *this;
}

Tree& Tree::addFolder(std::string_view path) {
  make(path, Node::Kind::folder);
  return *this;
}

Tree& Tree::addLink(std::string_view path, std::string target) {
  make(path, Node::Kind::link).target = std::move(target);
  return *this;
}

void Tree::remove(std::string_view path) {
  std::size_t const last = path.rfind('/');
  Node& folder = last == std::string_view::npos ? root_ : make(path.substr(0, last), Node::Kind::folder);
  folder.children.erase(std::string(path.substr(last + 1)));
}

bool Tree::follow(Trail& trail, std::string_view path, int& linksLeft, bool followLast) const {
  while (!path.empty()) {
    std::string_view const name = takeElement(path);
    if (trail.back()->kind != Node::Kind::folder) return false;
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      if (trail.size() > 1) trail.pop_back();
      continue;
    }
    auto const child = trail.back()->children.find(std::string(name));
    if (child == trail.back()->children.end()) return false;
    if (child->second.kind != Node::Kind::link || (path.empty() && !followLast)) {
      trail.push_back(&child->second);
      continue;
    }
    if (linksLeft-- == 0) return false;
    trail.assign(1, &root_);
    if (!follow(trail, child->second.target, linksLeft, true)) return false;
  }
  return true;
}

Node const* Tree::find(std::string_view path) const {
  Trail trail{&root_};
  int links = 40;
  if (!follow(trail, path, links, true)) return nullptr;
  bool const asFolder = !path.empty() && path.back() == '/';
  return asFolder && trail.back()->kind != Node::Kind::folder ? nullptr : trail.back();
}

Node const* Tree::findEntry(std::string_view path) const {
  if (!path.empty() && path.back() == '/') return find(path);
  Trail trail{&root_};
  int links = 40;
  return follow(trail, path, links, false) ? trail.back() : nullptr;
}

bool Tree::isFolder(std::string_view path) const {
  Node const* node = find(path);
  return node != nullptr && node->kind == Node::Kind::folder;
}

void Tree::writeTo(TemporaryFolder const& folder) const {
  std::function<void(Node const&, std::string const&)> const write = [&](Node const& node, std::string const& prefix) {
    for (auto const& [name, child] : node.children) {
      std::string const path = prefix + name;
      if (child.kind == Node::Kind::link) folder.addLink(path, folder.path() + "/" + child.target);
      if (child.kind == Node::Kind::file) folder.addFile(path);
      if (child.kind == Node::Kind::folder) {
        folder.addFolder(path);
        write(child, path + "/");
      }
    }
  };
  write(root_, "");
}

Tree Tree::random(std::mt19937& random, std::size_t entries, bool links) {
  static constexpr std::array names = {"a", "b", "ab", "a.b", ".a", "a*", "a%", "b a", "\xC3\xA9", "\xFF", "aab", "**"};
  auto const below = [&](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };
  Tree tree;
  std::string const top(searchRoot);
  tree.addFolder(top);
  std::vector<std::string> folders{top + "/"};
  std::vector<std::string> all{top};
  for (std::size_t i = 0; i < entries; ++i) {
    std::string const path = folders[below(folders.size())] + names[below(names.size())];
    if (tree.findEntry(path) != nullptr) continue;
    all.push_back(path);
    switch (below(links ? 5 : 4)) {
      case 0:
      case 1:
        tree.addFile(path);
        break;
      case 2:
      case 3:
        tree.addFolder(path);
        folders.push_back(path + "/");
        break;
      default:
        // To a folder, a file, another link, itself, or to nothing.
        tree.addLink(path, all[below(all.size())] + (below(8) == 0 ? "/nothing" : ""));
    }
  }
  return tree;
}

}  // namespace korvan::test
