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
  return IRIAccess::fromWrittenForm(text.substr(0, length), static_cast<std::uint32_t>(location.scheme().size()),
                                    static_cast<std::uint32_t>(text.size() - location.encodedPath().size()));
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

// Within a session.
bool isLink(Provider& provider, AbsoluteIRI const& location) {
  return currentSessionCache()->entryKind(provider, location) == EntryKind::link;
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

Folder::Folder(Folder const& parent, std::u16string const& name) {
  Node const& from = *parent.node_;
  Node node{AbsoluteIRI(from.location, name), from.provider, from.rootLength};
  std::u16string const& text = node.location.toString();
  bool const isBelow = text.compare(0, from.rootLength, from.location.toString(), 0, from.rootLength) == 0;
  if (!isBelow) node.rootLength = text.size();  // the name was a whole location
  if (!entersLinks() && isLink(*node.provider, node.location)) {
    throw Exception(ErrorCode::notFound, std::move(node.location), "links aren't followed");
  }
  node.linkPassed = entersLinks() && (from.linkPassed || maybeLink(node.location));
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

template <class T>
struct FolderListing<T>::State {
  std::shared_ptr<FolderSnapshot const> snapshot;
  std::shared_ptr<NameFilter const> filter;
  Folder folder;
};

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the filter by value
FolderListing<ListEntry> Folder::listAll(std::u16string filter) const {
  auto names = makeFilter(filter);
  auto snapshot = read(node_->provider, node_->location, *names);
  using State = FolderListing<ListEntry>::State;
  return FolderListing<ListEntry>(std::make_shared<State const>(State{std::move(snapshot), std::move(names), *this}));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the filter by value
FolderListing<Folder> Folder::listFolders(std::u16string filter) const {
  auto names = makeFilter(filter);
  auto snapshot = read(node_->provider, node_->location, *names);
  resolveKinds(*snapshot, *names, *node_->provider);
  using State = FolderListing<Folder>::State;
  return FolderListing<Folder>(std::make_shared<State const>(State{std::move(snapshot), std::move(names), *this}));
}

template <class T>
FolderListing<T>::FolderListing(std::shared_ptr<State const> state) noexcept : state_(std::move(state)) {}

template <class T>
typename FolderListing<T>::Iterator FolderListing<T>::begin() const {
  return Iterator(state_, 0);
}

template <class T>
typename FolderListing<T>::Iterator FolderListing<T>::end() const {
  return Iterator(state_, state_->snapshot->entries.size());
}

template <>
FolderListing<ListEntry>::Iterator::Iterator(std::shared_ptr<State const> state, std::size_t index)
    : state_(std::move(state)), index_(index) {
  settle();
}

template <>
FolderListing<Folder>::Iterator::Iterator(std::shared_ptr<State const> state, std::size_t index)
    : state_(std::move(state)), index_(index), element_(state_->folder) {
  settle();
}

template <class T>
typename FolderListing<T>::Iterator& FolderListing<T>::Iterator::operator++() {
  ++index_;
  settle();
  return *this;
}

template <class T>
void FolderListing<T>::Iterator::settle() {
  EntryTable const& entries = state_->snapshot->entries;
  auto const matches = [&] {
    if constexpr (std::is_same_v<T, Folder>) {
      if (entries.kind(index_) != PathKind::isFolder) return false;
    }
    return state_->filter->matches(entries.name(index_));
  };
  while (index_ < entries.size() && !matches()) ++index_;
  isMade_ = false;
}

template <class T>
std::u16string FolderListing<T>::Iterator::getName() const {
  return core::text::fromBytes(state_->snapshot->entries.name(index_));
}

template <class T>
void FolderListing<T>::Iterator::make() const {
  EntryTable const& entries = state_->snapshot->entries;
  if constexpr (std::is_same_v<T, Folder>) {
    Folder::Node const& from = *state_->folder.node_;
    element_ = Folder(std::make_shared<Folder::Node const>(
        Folder::Node{AbsoluteIRI(from.location, core::text::fromBytes(entries.name(index_))), from.provider,
                     from.rootLength, from.linkPassed || entries.maybeLink(index_)}));
  } else {
    element_.name_.clear();
    core::text::appendFromBytes(element_.name_, entries.name(index_));
    element_.kind_ = entries.kind(index_);
  }
  isMade_ = true;
}

template class FolderListing<ListEntry>;
template class FolderListing<Folder>;

}  // namespace foundation::storage::vfs
