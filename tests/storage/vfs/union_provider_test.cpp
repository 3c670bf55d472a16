// A provider that answers by the storage layer itself, as a mirror or a union of folders does: the layer is entered
// again on the same thread while it waits for an answer.

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/exists.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"

namespace korvan::test {
namespace {

// What "left:///" and "right:///" hold, as one tree.
class UnionProvider final : public vfs::Provider {
 public:
  Authority authority() const noexcept override { return Authority::empty; }

  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override {
    auto const left = vfs::exists(inScheme(u"left", location), storage_);
    return left == vfs::PathKind::notFound ? vfs::exists(inScheme(u"right", location), storage_) : left;
  }

  void list(vfs::AbsoluteIRI const& folder, std::string_view, vfs::EntrySink& entries) override {
    bool any = false;
    for (auto const* const scheme : {u"left", u"right"}) {
      vfs::Folder const part(inScheme(scheme, folder), storage_);
      if (vfs::exists(part.getLocation(), storage_) != vfs::PathKind::isFolder) continue;
      any = true;
      for (auto const& sub : part.listFolders(u"*")) entries.add(toBytes(sub.getName()), EntryKind::folder);
      for (auto const& entry : part.listAll(u"*")) entries.add(toBytes(entry.getName()), EntryKind::unknown);
    }
    if (!any) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "there is no such folder");
  }

 private:
  static vfs::AbsoluteIRI inScheme(std::u16string const& scheme, vfs::AbsoluteIRI const& location) {
    return vfs::AbsoluteIRI(scheme + u"://" + std::u16string(location.encodedPath()));
  }

  vfs::StorageSystemReference storage_ = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
};

TEST(UnionProvider, FindsTheEntriesOfBothParts) {
  Tree left;
  Tree right;
  Tree both;
  for (int i = 0; i < 400; ++i) {
    std::string const file = "d" + std::to_string(i % 80) + "/e" + std::to_string(i / 80) + "/f" + std::to_string(i);
    (i % 3 == 0 ? left : right).addFile(file);
    both.addFile(file);
  }
  ServedScheme const servedLeft(u"left", std::make_shared<MemoryProvider>(left));
  ServedScheme const servedRight(u"right", std::make_shared<MemoryProvider>(right));
  ServedScheme const served(u"union", std::make_shared<UnionProvider>());
  for (std::string const pattern : {"*", "*/*", "**", "**/f1*", "d7/e0/f7"}) {
    expectSearch(expectedMatches(both, "", pattern, false), pattern, "union:///");
  }
}

}  // namespace
}  // namespace korvan::test
