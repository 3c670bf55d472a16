#include "foundation/storage/vfs/folder.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/iri_access.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

// A folder and how it was reached. The folders above it are known by their locations alone, which are prefixes of its
// own: so a deep folder neither keeps a chain of others alive nor is destroyed recursively.
struct Folder::Node {
  AbsoluteIRI location;
  std::shared_ptr<Provider> provider;
  std::size_t rootLength;   // of the first folder's location as text, with which those of the folders in between begin
  bool linkPassed = false;  // whether a link was, or may have been, followed on the way from the first folder
  std::vector<FolderIdentity> identities{};  // from the first folder to this one; empty if no link was followed
};

namespace {

// The location whose text is the first `length` units of this one's.
AbsoluteIRI prefixOf(AbsoluteIRI const& location, std::size_t length) {
  std::u16string const& text = location.toString();
  std::size_t const pathStart = text.size() - location.encodedPath().size();
  if (length < pathStart) return IRIAccess::folderOfAuthorities(location.getScheme());
  return IRIAccess::fromWrittenForm(text.substr(0, length), static_cast<std::uint32_t>(location.scheme().size()),
                                    static_cast<std::uint32_t>(pathStart));
}

std::optional<FolderIdentity> identityOf(Provider& provider, AbsoluteIRI const& folder) {
  SessionCache* const cache = currentSessionCache();
  return cache == nullptr ? provider.identity(folder) : cache->identity(provider, folder);
}

// The identities of the folders from the first one to this one: one request each.
template <class Node>
std::vector<FolderIdentity> identitiesOf(Node const& node) {
  if (!node.identities.empty()) return node.identities;
  std::vector<FolderIdentity> identities;
  std::u16string const& text = node.location.toString();
  for (std::size_t end = node.rootLength;;) {
    if (auto const own = identityOf(*node.provider, prefixOf(node.location, end))) identities.push_back(*own);
    if (end >= text.size()) return identities;
    end = std::min(text.find(u'/', end + 1), text.size());
  }
}

bool entersLinks() {
  SessionCache* const cache = currentSessionCache();
  return cache == nullptr || cache->visibility().followsLinks();
}

// Within a session. An entry that can't be looked up, which the session reports, counts as one: it isn't to be entered.
bool isLink(Provider& provider, AbsoluteIRI const& location) {
  try {
    return currentSessionCache()->entryKind(provider, location) == EntryKind::link;
  } catch (Exception const&) {
    return true;
  }
}

bool maybeLink(AbsoluteIRI const& location) {
  SessionCache* const cache = currentSessionCache();
  return cache == nullptr || cache->maybeLink(location);
}

std::shared_ptr<NameFilter const> makeFilter(std::u16string const& text) {
  if (SessionCache* const cache = currentSessionCache()) return cache->filter(text);
  return std::make_shared<NameFilter const>(text);
}

std::shared_ptr<FolderSnapshot> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                     NameFilter const& filter) {
  if (SessionCache* const cache = currentSessionCache()) {
    return cache->snapshot(provider, location, filter.literalHead());
  }
  return readFolder(*provider, location, filter.literalHead(), nullptr);
}

// Looks up the kind of every matching entry for which the listing didn't say it.
void resolveKinds(FolderSnapshot& snapshot, NameFilter const& filter, Provider& provider) {
  SessionCache* const cache = currentSessionCache();
  for (std::size_t i = 0; i < snapshot.entries.size(); ++i) {
    if (snapshot.entries.kind(i) || !filter.matches(snapshot.entries.name(i))) continue;
    try {
      cache == nullptr ? kindOfEntry(snapshot, i, provider) : cache->kind(snapshot, i, provider);
    } catch (Exception const&) {
      continue;  // stays unknown: a link that can't be followed mustn't hide its siblings
    }
  }
}

}  // namespace

Folder::Folder(AbsoluteIRI location, StorageSystemReference system) {
  std::shared_ptr<Provider> provider = system.system().provider(location.scheme());
  std::size_t const rootLength = location.toString().size();
  node_ = std::make_shared<Node const>(Node{std::move(location), std::move(provider), rootLength});
}

Folder::Folder(Folder const& parent, std::u16string const& name) : Folder(parent, name, std::nullopt) {}

Folder::Folder(Folder const& parent, std::u16string const& name, std::optional<bool> isMaybeLink) {
  Node const& from = *parent.node_;
  Node node{AbsoluteIRI(from.location, name), from.provider, from.rootLength};
  std::u16string const& text = node.location.toString();
  auto const rootIn = [&](std::u16string_view whole) { return whole.substr(0, from.rootLength); };
  bool const isBelow = KeyEqual()(rootIn(text), rootIn(from.location.toString()));
  if (!isBelow) node.rootLength = text.size();  // the name was a whole location
  bool const followsLinks = entersLinks();
  if (!followsLinks && isMaybeLink.value_or(true) && isLink(*node.provider, node.location)) {
    throw Exception(ErrorCode::notFound, std::move(node.location), "links aren't followed");
  }
  node.linkPassed = followsLinks && (from.linkPassed || (isMaybeLink ? *isMaybeLink : maybeLink(node.location)));
  if (node.linkPassed) {
    node.identities = identitiesOf(from);
    if (auto const own = identityOf(*node.provider, node.location)) {
      if (std::find(node.identities.begin(), node.identities.end(), *own) != node.identities.end()) {
        throw Exception(ErrorCode::other, std::move(node.location), "the folder contains itself through a link");
      }
      node.identities.push_back(*own);
    }
  }
  node_ = std::make_shared<Node const>(std::move(node));
}

Folder::Folder(std::shared_ptr<Node const> node) noexcept : node_(std::move(node)) {}

AbsoluteIRI const& Folder::getLocation() const noexcept {
  return node_->location;
}

std::u16string Folder::getName() const {
  return node_->location.getName();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the filter by value
FolderListing<ListEntry> Folder::listAll(std::u16string filter) const {
  auto names = makeFilter(filter);
  auto snapshot = read(node_->provider, node_->location, *names);
  return FolderListing<ListEntry>(EntryCursor(std::move(snapshot), std::move(names), *this, false));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the filter by value
FolderListing<Folder> Folder::listFolders(std::u16string filter) const {
  auto names = makeFilter(filter);
  auto snapshot = read(node_->provider, node_->location, *names);
  resolveKinds(*snapshot, *names, *node_->provider);
  return FolderListing<Folder>(EntryCursor(std::move(snapshot), std::move(names), *this, true));
}

Folder EntryCursor::enter() const {
  return {folder_, getName(), snapshot_->entries.maybeLink(index_)};
}

Folder EntryCursor::listedFolder() const {
  Folder::Node const& from = *folder_.node_;
  return Folder(std::make_shared<Folder::Node const>(
      Folder::Node{AbsoluteIRI(from.location, getName()), from.provider, from.rootLength,
                   from.linkPassed || snapshot_->entries.maybeLink(index_)}));
}

}  // namespace foundation::storage::vfs
