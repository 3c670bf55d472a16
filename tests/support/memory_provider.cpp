#include "support/memory_provider.hpp"

#include <algorithm>
#include <functional>

#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "interrupt/interrupt_state.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

vfs::EntryKind entryKind(Node const& node) {
  switch (node.kind) {
    case Node::Kind::file:
      return vfs::EntryKind::file;
    case Node::Kind::folder:
      return vfs::EntryKind::folder;
    default:
      return vfs::EntryKind::link;
  }
}

// The path from the tree's root, without needless separators, so that one place is counted as one.
std::string treePath(vfs::AbsoluteIRI const& location) {
  std::string path = toBytes(std::u16string(location.authority())) + vfs::decodedPath(location);
  while (!path.empty() && path.back() == '/') path.pop_back();
  path.erase(0, std::min(path.find_first_not_of('/'), path.size()));
  return path;
}

bool beginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

}  // namespace

void MemoryProvider::fail(Operation operation, std::string const& path, vfs::ErrorCode code) {
  failures_.insert_or_assign({operation, path}, code);
}

void MemoryProvider::failListingAfter(std::string const& path, std::size_t entries) {
  cutListings_[path] = entries;
}

void MemoryProvider::interruptAfter(std::size_t entries) {
  entriesToInterrupt_ = entries;
}

std::size_t MemoryProvider::requests() const {
  std::lock_guard const lock(mutex_);
  std::size_t sum = 0;
  for (auto const& counted : requests_) sum += counted.second;
  return sum;
}

std::size_t MemoryProvider::requests(Operation operation) const {
  std::lock_guard const lock(mutex_);
  std::size_t sum = 0;
  for (auto const& [key, count] : requests_) sum += key.first == operation ? count : 0;
  return sum;
}

std::size_t MemoryProvider::requests(Operation operation, std::string const& path) const {
  std::lock_guard const lock(mutex_);
  auto const found = requests_.find({operation, path});
  return found == requests_.end() ? 0 : found->second;
}

std::size_t MemoryProvider::mostRequests(Operation operation) const {
  std::lock_guard const lock(mutex_);
  std::size_t most = 0;
  for (auto const& [key, count] : requests_) most = key.first == operation ? std::max(most, count) : most;
  return most;
}

void MemoryProvider::forgetRequests() {
  std::lock_guard const lock(mutex_);
  requests_.clear();
}

std::string MemoryProvider::note(Operation operation, vfs::AbsoluteIRI const& location) {
  std::lock_guard const lock(mutex_);
  std::string path = treePath(location);
  ++requests_[{operation, path}];
  if (auto const failure = failures_.find({operation, path}); failure != failures_.end()) {
    throw vfs::Exception(failure->second, location, "injected");
  }
  return path;
}

Node const& MemoryProvider::folderAt(std::string const& path, vfs::AbsoluteIRI const& location) const {
  Node const* node = tree_.find(path);
  if (node == nullptr || node->kind != Node::Kind::folder) {
    throw vfs::Exception(vfs::ErrorCode::nothingThere, location, "no folder");
  }
  return *node;
}

void MemoryProvider::countEntry() {
  std::lock_guard const lock(mutex_);
  if (entriesToInterrupt_ && (*entriesToInterrupt_)-- == 0) {
    entriesToInterrupt_.reset();
    utSetInterruptPending(true);
  }
}

vfs::PathKind MemoryProvider::kind(vfs::AbsoluteIRI const& location) {
  std::string path = note(Operation::kind, location);
  if (location.getName().empty()) path += "/";
  if (tree_.isFolder(path)) return vfs::PathKind::isFolder;
  return tree_.findEntry(path) != nullptr ? vfs::PathKind::isFile : vfs::PathKind::notFound;
}

void MemoryProvider::list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntryTable& entries) {
  std::string const path = note(Operation::list, folder);
  auto const cut = cutListings_.find(path);
  std::size_t left = cut == cutListings_.end() ? static_cast<std::size_t>(-1) : cut->second;
  auto const& children = folderAt(path, folder).children;
  // Backwards: the order of entries is the layer's to make.
  for (auto child = children.rbegin(); child != children.rend(); ++child) {
    if (left-- == 0) throw vfs::Exception(vfs::ErrorCode::other, folder, "injected in the middle");
    if (!beginsWith(child->first, namePrefix)) continue;
    countEntry();
    entries.add(child->first, options_.kindsUnsaid ? vfs::EntryKind::unknown : entryKind(child->second));
  }
}

std::optional<vfs::FolderIdentity> MemoryProvider::identity(vfs::AbsoluteIRI const& folder) {
  std::string const path = note(Operation::identity, folder);
  if (servesSubtrees()) return std::nullopt;
  return vfs::FolderIdentity{1, folderAt(path, folder).identity};
}

vfs::SubtreePage MemoryProvider::subtree(vfs::AbsoluteIRI const& folder, std::string_view prefix,
                                         std::string_view after) {
  std::string const path = note(Operation::subtree, folder);
  std::vector<std::string> all;
  std::function<void(Node const&, std::string const&)> const collect = [&](Node const& node, std::string const& below) {
    for (auto const& [name, child] : node.children) {
      bool const isFolder = child.kind == Node::Kind::folder;
      std::string const text = below + name + (isFolder ? "/" : "");
      if (!isFolder || child.children.empty() || options_.marksEveryFolder) all.push_back(text);
      if (isFolder) collect(child, text);
    }
  };
  if (tree_.isFolder(path)) collect(*tree_.find(path), "");
  std::sort(all.begin(), all.end());
  vfs::SubtreePage page;
  for (auto& text : all) {
    if (!beginsWith(text, prefix) || text <= after) continue;
    page.last = page.paths.size() < options_.subtreePage;
    if (!page.last) break;
    countEntry();
    page.paths.push_back(std::move(text));
  }
  return page;
}

ServedScheme::ServedScheme(std::u16string scheme, std::shared_ptr<vfs::Provider> provider)
    : scheme_(std::move(scheme)) {
  vfs::StorageSystem::instance().registerProvider(scheme_, std::move(provider));
}

ServedScheme::~ServedScheme() {
  vfs::StorageSystem::instance().registerProvider(scheme_, nullptr);
}

}  // namespace korvan::test
