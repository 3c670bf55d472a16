#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "foundation/storage/vfs/provider.hpp"
#include "support/memory_provider.hpp"

namespace korvan::test {

namespace vfs = foundation::storage::vfs;

/// Passes every question on to another provider, after a hook that may wait, fail, or do anything else.
class HookedProvider final : public vfs::Provider {
 public:
  using Operation = MemoryProvider::Operation;
  using Hook = std::function<void(Operation, vfs::AbsoluteIRI const&)>;

  HookedProvider(std::shared_ptr<vfs::Provider> inner, std::size_t readsInFlight, Hook hook)
      : inner_(std::move(inner)), readsInFlight_(readsInFlight), hook_(std::move(hook)) {}

  Authority authority() const noexcept override { return inner_->authority(); }
  std::size_t readsInFlight() const noexcept override { return readsInFlight_; }
  bool servesSubtrees() const noexcept override { return inner_->servesSubtrees(); }
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override {
    hook_(Operation::kind, location);
    return inner_->kind(location);
  }
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) override {
    hook_(Operation::list, folder);
    inner_->list(folder, namePrefix, entries);
  }
  std::optional<vfs::FolderIdentity> identity(vfs::AbsoluteIRI const& folder) override {
    hook_(Operation::identity, folder);
    return inner_->identity(folder);
  }
  std::optional<vfs::EntryFacts> facts(vfs::AbsoluteIRI const& location) override {
    hook_(Operation::kind, location);
    return inner_->facts(location);
  }
  vfs::SubtreePage subtree(vfs::SubtreeRequest const& request) override {
    hook_(request.isDelimited ? Operation::list : Operation::subtree, request.folder);
    return inner_->subtree(request);
  }

 private:
  std::shared_ptr<vfs::Provider> inner_;
  std::size_t readsInFlight_;
  Hook hook_;
};

}  // namespace korvan::test
