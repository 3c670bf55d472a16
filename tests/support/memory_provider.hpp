#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/storage/vfs/provider.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "support/tree.hpp"

namespace korvan::test {

namespace vfs = foundation::storage::vfs;

/// Serves a `Tree` as storage, counts the requests, and does on demand what disks seldom do. Locations are paths from
/// the tree's root; where an authority is required it is their first element. Safe on every thread, except for members
/// that aren't operations of storage.
class MemoryProvider final : public vfs::Provider {
 public:
  enum class Operation { kind, list, identity, facts, subtree };
  using Key = std::pair<Operation, std::string>;

  struct Options {
    Authority authority = Authority::empty;
    /// The most paths in one page of `subtree`, and entries in one page of a listing; 0 where subtrees aren't served.
    std::size_t subtreePage = 0;
    /// Whether a flat page names all folders, not only empty ones.
    bool marksEveryFolder = false;
    /// Whether a folder doesn't say the kinds of its entries, as in some file systems.
    bool hidesKinds = false;
    /// A folder that is on another device, with everything below it.
    std::string mountPoint{};
  };

  explicit MemoryProvider(Tree served) : MemoryProvider(std::move(served), Options()) {}
  MemoryProvider(Tree served, Options options) : tree(std::move(served)), options_(std::move(options)) {}

  Tree tree;
  /// What fails from now on.
  std::map<Key, vfs::ErrorCode> failures;
  /// Called before an entry is added to an answer.
  std::function<void()> onEntry = [] {};

  std::size_t requests() const;
  std::size_t requests(Operation operation) const;
  /// How many pages all keys of a store of flat keys fill.
  std::size_t pages() const { return tree.below("").size() / options_.subtreePage; }
  /// The most requests for any one location.
  std::size_t mostRequests(Operation operation) const;
  /// All requests for locations in whose paths the text occurs.
  std::size_t requestsIn(std::string_view text) const;
  void forgetRequests() { requests_.clear(); }

  Authority authority() const noexcept override { return options_.authority; }
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override;
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) override;
  std::optional<vfs::FolderIdentity> identity(vfs::AbsoluteIRI const& folder) override;
  std::optional<vfs::EntryFacts> facts(vfs::AbsoluteIRI const& location) override;
  bool servesSubtrees() const noexcept override { return options_.subtreePage != 0; }
  vfs::SubtreePage subtree(vfs::SubtreeRequest const& request) override;

 private:
  std::string note(Operation operation, vfs::AbsoluteIRI const& location);

  Options options_;
  std::map<Key, std::size_t> requests_;
  mutable std::mutex mutex_;
};

/// Serves the scheme by the provider for as long as it lives.
class ServedScheme {
 public:
  ServedScheme(std::u16string scheme, std::shared_ptr<vfs::Provider> provider) : scheme_(std::move(scheme)) {
    vfs::StorageSystem::instance().registerProvider(scheme_, std::move(provider));
  }
  ~ServedScheme() { vfs::StorageSystem::instance().registerProvider(scheme_, nullptr); }
  ServedScheme(ServedScheme const&) = delete;
  ServedScheme& operator=(ServedScheme const&) = delete;

 private:
  std::u16string scheme_;
};

}  // namespace korvan::test
