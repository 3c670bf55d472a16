#include "foundation/storage/vfs/folder.hpp"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

// One step of the way that led to a folder.
struct Folder::Node {
  AbsoluteIRI location;
  std::shared_ptr<Provider> provider;
  std::shared_ptr<Node const> parent;
  bool linkPassed = false;  // whether this step or an earlier one was, or may have been, through a link
  std::vector<FolderIdentity>
      identities{};  // of the folders from the first one to this one; empty while no link was passed
};

namespace {

template <class Node>
std::vector<FolderIdentity> identitiesOf(Node const& node) {
  if (!node.identities.empty()) return node.identities;
  std::vector<FolderIdentity> chain = node.parent ? identitiesOf(*node.parent) : std::vector<FolderIdentity>();
  if (auto const own = node.provider->identity(node.location)) chain.push_back(*own);
  return chain;
}

bool maybeLink(AbsoluteIRI const& location) {
  ReadSession* const session = ReadSession::current();
  return session == nullptr || session->store().maybeLink(location);
}

std::shared_ptr<FolderReading> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                    NameFilter const& filter) {
  if (ReadSession* const session = ReadSession::current()) {
    return session->store().reading(provider, location, filter.literalHead());
  }
  return readFolder(*provider, location, filter.literalHead());
}

// The filter of the text. A search lists thousands of folders with one and the same, so the thread's last one is kept.
std::shared_ptr<NameFilter const> filterOf(std::u16string const& text) {
  thread_local std::u16string lastText;
  thread_local std::shared_ptr<NameFilter const> last;
  if (!last || lastText != text) {
    last = std::make_shared<NameFilter const>(text);
    lastText = text;
  }
  return last;
}

// Looks at every matching entry that the folder itself didn't tell the kind of.
void resolveKinds(FolderReading& reading, NameFilter const& filter, Provider& provider) {
  for (std::size_t i = 0; i < reading.entries.size(); ++i) {
    if (reading.entries.kind(i) || !filter.matches(reading.entries.name(i))) continue;
    try {
      kindOfEntry(reading, i, provider);
    } catch (Exception const&) {
      continue;  // stays unknown: a link that can't be followed mustn't hide its siblings
    }
  }
}

}  // namespace

Folder::Folder(AbsoluteIRI location, StorageSystemReference system) {
  std::shared_ptr<Provider> provider = system.system().provider(location.scheme());
  node_ = std::make_shared<Node const>(Node{std::move(location), std::move(provider), nullptr});
}

Folder::Folder(Folder const& parent, std::u16string const& name) {
  Node const& from = *parent.node_;
  Node node{AbsoluteIRI(from.location, name), from.provider, parent.node_};
  node.linkPassed = from.linkPassed || maybeLink(node.location);
  if (node.linkPassed) {
    node.identities = identitiesOf(from);
    if (auto const own = node.provider->identity(node.location)) {
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
  std::shared_ptr<FolderReading const> reading;
  std::shared_ptr<NameFilter const> filter;
  Folder folder;
};

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a copy by the interface
FolderListing<ListEntry> Folder::listAll(std::u16string filter) const {
  std::shared_ptr<NameFilter const> names = filterOf(filter);
  auto reading = read(node_->provider, node_->location, *names);
  using State = FolderListing<ListEntry>::State;
  return FolderListing<ListEntry>(std::make_shared<State const>(State{std::move(reading), std::move(names), *this}));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a copy by the interface
FolderListing<Folder> Folder::listFolders(std::u16string filter) const {
  std::shared_ptr<NameFilter const> names = filterOf(filter);
  auto reading = read(node_->provider, node_->location, *names);
  resolveKinds(*reading, *names, *node_->provider);
  using State = FolderListing<Folder>::State;
  return FolderListing<Folder>(std::make_shared<State const>(State{std::move(reading), std::move(names), *this}));
}

template <class T>
FolderListing<T>::FolderListing(std::shared_ptr<State const> state) noexcept : state_(std::move(state)) {}

template <class T>
typename FolderListing<T>::Iterator FolderListing<T>::begin() const {
  return Iterator(state_, 0);
}

template <class T>
typename FolderListing<T>::Iterator FolderListing<T>::end() const {
  return Iterator(state_, state_->reading->entries.size());
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
  EntryTable const& entries = state_->reading->entries;
  auto const matches = [&] {
    if constexpr (std::is_same_v<T, Folder>) {
      if (entries.kind(index_) != PathKind::isFolder) return false;
    }
    return state_->filter->matches(entries.name(index_));
  };
  while (index_ < entries.size() && !matches()) ++index_;
  if (index_ == entries.size()) return;
  if constexpr (std::is_same_v<T, Folder>) {
    Folder::Node const& from = *state_->folder.node_;
    element_ = Folder(std::make_shared<Folder::Node const>(
        Folder::Node{AbsoluteIRI(from.location, core::text::fromBytes(entries.name(index_))), from.provider,
                     state_->folder.node_, from.linkPassed || entries.maybeLink(index_)}));
  } else {
    element_.name_.clear();
    core::text::appendFromBytes(element_.name_, entries.name(index_));
  }
}

template class FolderListing<ListEntry>;
template class FolderListing<Folder>;

}  // namespace foundation::storage::vfs
