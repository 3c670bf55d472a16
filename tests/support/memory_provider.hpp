#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/storage/vfs/exception.hpp"
#include "foundation/storage/vfs/provider.hpp"
#include "support/tree.hpp"

namespace korvan::test {

namespace vfs = foundation::storage::vfs;

/// Serves a `Tree` as storage, counts what is asked of it, and does on demand what disks seldom do. Locations are told
/// as paths from the tree's root; where an authority is required it is their first element. Safe on every thread.
class MemoryProvider final : public vfs::Provider {
 public:
  enum class Operation { kind, list, identity, subtree };

  struct Options {
    Authority authority = Authority::empty;
    /// Paths that one answer of `subtree` holds at most; 0: it isn't served.
    std::size_t subtreePage = 0;
    /// Whether a flat page names folders that hold something as well as empty ones.
    bool marksEveryFolder = false;
    /// Whether a folder leaves the kinds of its entries unsaid, as some file systems do.
    bool kindsUnsaid = false;
  };

  explicit MemoryProvider(Tree tree) : MemoryProvider(std::move(tree), Options()) {}
  MemoryProvider(Tree tree, Options options) : tree_(std::move(tree)), options_(options) {}

  /// The tree, to be changed while no search runs.
  Tree& tree() noexcept { return tree_; }

  // Faults, from now on.
  void fail(Operation operation, std::string const& path, vfs::ErrorCode code);
  /// Listings of the folder fail once `entries` of its entries were given.
  void failListingAfter(std::string const& path, std::size_t entries);
  /// An interrupt becomes pending once `entries` more entries were given.
  void interruptAfter(std::size_t entries);

  std::size_t requests() const;
  std::size_t requests(Operation operation) const;
  std::size_t requests(Operation operation, std::string const& path) const;
  /// The most that was asked for any one location.
  std::size_t mostRequests(Operation operation) const;
  void forgetRequests();

  Authority authority() const noexcept override { return options_.authority; }
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override;
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntryTable& entries) override;
  std::optional<vfs::FolderIdentity> identity(vfs::AbsoluteIRI const& folder) override;
  bool servesSubtrees() const noexcept override { return options_.subtreePage != 0; }
  vfs::SubtreePage subtree(vfs::AbsoluteIRI const& folder, std::string_view prefix, std::string_view after) override;

 private:
  using Key = std::pair<Operation, std::string>;
  std::string note(Operation operation, vfs::AbsoluteIRI const& location);
  Node const& folderAt(std::string const& path, vfs::AbsoluteIRI const& location) const;
  void countEntry();

  Tree tree_;
  Options options_;
  std::map<Key, vfs::ErrorCode> failures_;
  std::map<std::string, std::size_t> cutListings_;
  std::optional<std::size_t> entriesToInterrupt_;
  std::map<Key, std::size_t> requests_;
  mutable std::mutex mutex_;
};

/// Serves the scheme by the provider for as long as it lives.
class ServedScheme {
 public:
  ServedScheme(std::u16string scheme, std::shared_ptr<vfs::Provider> provider);
  ~ServedScheme();
  ServedScheme(ServedScheme const&) = delete;
  ServedScheme& operator=(ServedScheme const&) = delete;

 private:
  std::u16string scheme_;
};

}  // namespace korvan::test
