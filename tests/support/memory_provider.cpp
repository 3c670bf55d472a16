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

std::size_t MemoryProvider::requests(Operation operation) const {
  std::lock_guard const lock(mutex_);
  std::size_t sum = 0;
  for (auto const& [key, count] : requests_) sum += key.first == operation ? count : 0;
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
  std::string const path = note(Operation::list, folder);
  if (!tree.isFolder(path)) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "there is no such folder");
  auto all = tree.children(path);
  // Not sorted: that is left to the layer above.
  std::reverse(all.begin(), all.end());
  for (auto const& [name, kind] : all) {
    if (!beginsWith(name, namePrefix)) continue;
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

vfs::SubtreePage MemoryProvider::subtree(vfs::SubtreeRequest const& request) {
  std::string const path = note(request.isDelimited ? Operation::list : Operation::subtree, request.folder);
  vfs::SubtreePage page;
  page.folderExists = tree.isFolder(path);
  if (!page.folderExists) return page;
  std::vector<std::string> all;
  for (auto const& [name, kind] : request.isDelimited ? tree.children(path) : tree.below(path))
    all.push_back(name + (kind == EntryKind::folder ? "/" : ""));
  std::sort(all.begin(), all.end());
  for (std::size_t i = 0; i < all.size() && page.last; ++i) {
    bool const isImplied = all[i].back() == '/' && i + 1 < all.size() && beginsWith(all[i + 1], all[i]);
    if ((isImplied && !options_.marksEveryFolder) || !beginsWith(all[i], request.prefix) || all[i] <= request.after)
      continue;
    page.last = page.paths.size() < options_.subtreePage;
    if (!page.last) continue;
    onEntry();
    page.paths.push_back(all[i]);
    if (request.withFacts) page.facts.push_back({.size = all[i].size(), .etag = all[i]});
  }
  return page;
}

}  // namespace korvan::test
