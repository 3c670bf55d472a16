#pragma once

#include <functional>
#include <string_view>

#include "foundation/storage/vfs/provider.hpp"

namespace korvan::test {

/// Storage whose every answer is written in the test.
class ScriptedProvider final : public foundation::storage::vfs::Provider {
 public:
  using Location = foundation::storage::vfs::AbsoluteIRI;

  std::function<foundation::storage::vfs::PathKind(Location const&)> onKind;
  std::function<void(foundation::storage::vfs::EntryTable&)> onList;

  Authority authority() const noexcept override { return Authority::required; }
  foundation::storage::vfs::PathKind kind(Location const& location) override { return onKind(location); }
  void list(Location const&, std::string_view, foundation::storage::vfs::EntryTable& entries) override {
    onList(entries);
  }
};

}  // namespace korvan::test
