#include "support/memory_provider.hpp"

#include <algorithm>
#include <vector>

#include "foundation/storage/vfs/conversion.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

bool beginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

}  // namespace

std::size_t MemoryProvider::requests() const {
  std::lock_guard const lock(mutex_);
  std::size_t sum = 0;
  for (auto const& counted : requests_) sum += counted.second;
  return sum;
}

std::size_t MemoryProvider::mostRequests(Operation operation) const {
  std::lock_guard const lock(mutex_);
  std::size_t most = 0;
  for (auto const& [key, count] : requests_) most = key.first == operation ? std::max(most, count) : most;
  return most;
}

std::size_t MemoryProvider::requestsIn(std::string_view text) const {
  std::lock_guard const lock(mutex_);
  std::size_t sum = 0;
  for (auto const& [key, count] : requests_) sum += key.second.find(text) != std::string::npos ? count : 0;
  return sum;
}

// Counts the request. Returns the path from the tree's root, without needless separators, so that each location is
// counted once.
std::string MemoryProvider::note(Operation operation, vfs::AbsoluteIRI const& location) {
  std::string path = toBytes(vfs::fromAbsoluteIRI(location).native());
  while (!path.empty() && path.back() == '/') path.pop_back();
  path.erase(0, std::min(path.find_first_not_of('/'), path.size()));
  std::lock_guard const lock(mutex_);
  ++requests_[{operation, path}];
  auto const failure = failures.find({operation, path});
  if (failure != failures.end()) throw vfs::Exception(failure->second, location, "injected");
  if (!location.authority().empty() && !tree.isFolder(path.substr(0, path.find('/'))))
    throw vfs::Exception(vfs::ErrorCode::notFound, vfs::AbsoluteIRI(location, u"/"), "there is no such store");
  return path;
}

vfs::PathKind MemoryProvider::kind(vfs::AbsoluteIRI const& location) {
  std::string path = note(Operation::kind, location);
  if (location.getName().empty()) path += "/";
  if (tree.isFolder(path)) return vfs::PathKind::isFolder;
  return tree.resolve(path, false) ? vfs::PathKind::isFile : vfs::PathKind::notFound;
}

void MemoryProvider::list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) {
  listRest(folder, namePrefix, {}, entries);
}

void MemoryProvider::listRest(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, std::string_view after,
                              vfs::EntrySink& entries) {
  std::string const path = note(Operation::list, folder);
  if (!tree.isFolder(path)) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "there is no such folder");
  auto all = tree.children(path);
  // Not sorted: that is left to the layer above.
  std::reverse(all.begin(), all.end());
  std::size_t listed = 0;
  for (auto const& [name, kind] : all) {
    // The keys in a folder come before its name with the character after "/".
    bool const isAfter = (kind == EntryKind::folder ? name + '0' : name) > after;
    if (!beginsWith(name, namePrefix) || !isAfter) continue;
    if (servesSubtrees() && ++listed > options_.subtreePage) listed = 1, note(Operation::list, folder);
    onEntry();
    entries.add(name, options_.hidesKinds ? EntryKind::unknown : kind);
  }
}

std::optional<vfs::FolderIdentity> MemoryProvider::identity(vfs::AbsoluteIRI const& folder) {
  std::string const path = note(Operation::identity, folder);
  if (servesSubtrees()) return std::nullopt;
  if (!tree.isFolder(path)) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "there is no such folder");
  std::string const resolved = *tree.resolve(path);
  bool const isMounted = !options_.mountPoint.empty() && beginsWith(resolved + "/", options_.mountPoint + "/");
  return vfs::FolderIdentity{isMounted ? 2U : 1U, std::hash<std::string>()(resolved)};
}

std::optional<vfs::EntryFacts> MemoryProvider::facts(vfs::AbsoluteIRI const& location) {
  std::string const path = note(Operation::facts, location);
  auto const parent = tree.resolve(path.substr(0, path.rfind('/') + 1));
  for (auto const& [name, kind] : parent ? tree.children(*parent) : Tree::Entries()) {
    if (name == path.substr(path.rfind('/') + 1)) return vfs::EntryFacts{.kind = kind};
  }
  return std::nullopt;
}

vfs::SubtreePage MemoryProvider::subtree(vfs::AbsoluteIRI const& folder, std::string_view prefix,
                                         std::string_view after, std::string_view /*page*/, bool withFacts) {
  std::string const path = note(Operation::subtree, folder);
  std::vector<std::string> all;
  if (tree.isFolder(path)) {
    for (auto const& [name, kind] : tree.below(path)) all.push_back(name + (kind == EntryKind::folder ? "/" : ""));
  }
  std::sort(all.begin(), all.end());
  vfs::SubtreePage page;
  for (std::size_t i = 0; i < all.size() && page.last; ++i) {
    bool const isImplied = all[i].back() == '/' && i + 1 < all.size() && beginsWith(all[i + 1], all[i]);
    if ((isImplied && !options_.marksEveryFolder) || !beginsWith(all[i], prefix) || all[i] <= after) continue;
    page.last = page.paths.size() < options_.subtreePage;
    if (!page.last) continue;
    onEntry();
    page.paths.push_back(all[i]);
    if (withFacts) page.facts.push_back({.size = all[i].size(), .etag = all[i]});
  }
  return page;
}

}  // namespace korvan::test
