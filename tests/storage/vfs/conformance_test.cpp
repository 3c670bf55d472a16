#include <fstream>
#include <functional>
#include <map>
#include <optional>

#include <gmock/gmock.h>

#include "foundation/storage/s3/url.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/exists.hpp"
#include "foundation/storage/vfs/facts.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"
#include "support/tree.hpp"

namespace korvan::test {
namespace {

namespace vfs = foundation::storage::vfs;
using enum vfs::PathKind;
using testing::ElementsAreArray;
using Names = std::vector<std::string>;

// A provider under test; all of them serve the same tree.
struct Subject {
  std::u16string root;  // the IRI of the folder that holds the tree, without a final "/"
  // A store counts its requests. Where a filter with a literal head finds nothing, it doesn't say whether the folder
  // exists: that would cost one more request, and no search uses the answer.
  bool isStore;
  std::uint32_t longestName;  // a longer one names nothing, and asking for it is no failure
  std::shared_ptr<void> keeper;
};

enum class SubjectKind { local, memory, store };

// The keys of conformance_tree.txt, decoded: a final "/" marks an empty folder.
Names conformanceKeys() {
  Names keys;
  std::ifstream file(KORVAN_CONFORMANCE_TREE);
  for (std::string line; std::getline(file, line);)
    if (!line.empty() && line[0] != '#') keys.push_back(foundation::storage::s3::percentDecode(line).value());
  return keys;
}

// The tree with what a store can't have. A link's target is a path from the tree's root.
Tree wholeTree() {
  Tree tree;
  for (std::string const& key : conformanceKeys())
    key.back() == '/' ? tree.addFolder(key.substr(0, key.size() - 1)) : tree.addFile(key);
  tree.addLink("links/file", "kinds/file").addLink("links/folder", "kinds/folder");
  tree.addLink("links/chain", "links/folder").addLink("links/broken", "kinds/nothing");
  tree.addLink("links/self", "links/self").addLink("links/up", "links");
  return tree.addFile("bytes/\xff\xc3").addFile("bytes/\xed\xb3\xbf");
}

Subject makeSubject(SubjectKind kind) {
  if (kind == SubjectKind::store) return {u"s3://conformance", true, 1000, nullptr};
  if (kind == SubjectKind::memory) {
    auto provider = std::make_shared<MemoryProvider>(wholeTree());
    return {u"conformance-memory:///", false, 1U << 20,
            std::make_shared<ServedScheme>(u"conformance-memory", std::move(provider))};
  }
  auto folder = std::make_shared<TemporaryFolder>();
  wholeTree().writeTo(*folder);
  auto const iri = vfs::toAbsoluteIRI(u"file", fl::filesystem::upath(folder->text()));
  return {iri.toString(), false, 255, folder};
}

// Made at the first call; lives to the end of the process.
Subject const& subject(SubjectKind kind) {
  static std::unique_ptr<Subject const> subjects[3];
  auto& made = subjects[static_cast<int>(kind)];
  if (!made) made = std::make_unique<Subject const>(makeSubject(kind));
  return *made;
}

vfs::StorageSystemReference storage() {
  return Quindarel::KorvanStorageSystem::GetStorageSystemReference();
}

// Every case runs with each provider, without and within a read session.
class Conformance : public testing::TestWithParam<std::tuple<SubjectKind, bool>> {
 protected:
  Conformance() : subject_(subject(std::get<0>(GetParam()))) {
    if (std::get<1>(GetParam())) session_.emplace();
  }

  vfs::AbsoluteIRI at(std::string const& path) const {
    return vfs::AbsoluteIRI(vfs::AbsoluteIRI(subject_.root), toText(path));
  }

  vfs::PathKind kindOf(std::string const& path) const { return vfs::exists(at(path), storage()); }

  vfs::Folder folder(std::string const& path) const { return vfs::Folder(at(path), storage()); }

  static Names namesOf(auto const& entries) {
    Names names;
    for (auto const& entry : entries) names.push_back(toBytes(entry.getName()));
    return names;
  }

  Names all(std::string const& path, std::string const& filter = "*") const {
    return namesOf(folder(path).listAll(toText(filter)));
  }

  Names folders(std::string const& path, std::string const& filter = "*") const {
    return namesOf(folder(path).listFolders(toText(filter)));
  }

  Subject const& subject_;
  std::optional<vfs::ReadSession> session_;
};

// The error code of what the action throws; 0 when it throws nothing.
int errorCode(std::function<void()> const& action) {
  try {
    action();
    return 0;
  } catch (vfs::Exception const& error) {
    return error.getErrorCode();
  }
}

// The folders of the tree's keys below the root, each with the names in it, in byte order, and whether they are
// folders.
std::map<std::string, std::map<std::string, bool>> contents() {
  std::map<std::string, std::map<std::string, bool>> folders;
  for (std::string const& key : conformanceKeys()) {
    std::size_t begin = key.find('/') + 1;
    for (std::size_t end; (end = key.find('/', begin)) != std::string::npos; begin = end + 1)
      folders[key.substr(0, begin - 1)][key.substr(begin, end - begin)] = true;
    auto& last = folders[key.substr(0, begin - 1)];
    if (begin < key.size()) last.emplace(key.substr(begin), false);
  }
  return folders;
}

TEST_P(Conformance, KnowsWhatExists) {
  std::pair<std::string, vfs::PathKind> const cases[] = {
      {"", isFolder},
      {"kinds/file", isFile},
      {"kinds/file/", notFound},
      {"kinds/file/below", notFound},
      {"kinds/folder", isFolder},
      {"kinds/empty/below", notFound},
      {"kinds/File", notFound},
      {"nothing/at/all", notFound},
      {std::string("kinds/file\0", 11), notFound},
      {"kinds/" + std::string(subject_.longestName + 1, 'x'), notFound},
  };
  for (auto const& [path, kind] : cases) EXPECT_EQ(kindOf(path), kind) << path;
}

TEST_P(Conformance, EveryFolderListsWhatItHoldsAndEachIsFoundByItsName) {
  for (auto const& [path, entries] : contents()) {
    Names names;
    Names folderNames;
    for (auto const& [name, isAFolder] : entries) {
      names.push_back(name);
      if (isAFolder) folderNames.push_back(name);
      vfs::AbsoluteIRI const location = at(path + "/" + name);
      EXPECT_EQ(toBytes(location.getName()), name);
      // The text of the IRI leads back to the same place.
      EXPECT_EQ(vfs::exists(vfs::AbsoluteIRI(location.toString()), storage()), isAFolder ? isFolder : isFile)
          << path << "/" << name;
      vfs::EntryKind const kind = isAFolder ? vfs::EntryKind::folder : vfs::EntryKind::file;
      EXPECT_EQ(vfs::entryKind(location, storage()), kind) << path << "/" << name;
    }
    EXPECT_THAT(all(path), ElementsAreArray(names)) << path;
    EXPECT_THAT(folders(path), ElementsAreArray(folderNames)) << path;
  }
}

TEST_P(Conformance, FiltersChoose) {
  struct Case {
    std::string folder, filter;
    Names all, folders;
  };
  Case const cases[] = {
      {"kinds", "f*", {"file", "folder", "folder-y", "folder.x"}, {"folder"}},
      {"filter", "*.csv", {"2023-12.csv", "2024-01.csv", "2024-02.csv", "abc.csv"}, {}},
      {"filter", "*a*a*a*a*a*a*a*a*a*a*a*a*a*b", {}, {}},
      {"dots", "*", {"...", "..c", ".a", ".b", "a."}, {".b"}},
      {"order", "\xc3*", {}, {}},  // half a character isn't one
  };
  for (Case const& each : cases) {
    EXPECT_THAT(all(each.folder, each.filter), ElementsAreArray(each.all)) << each.folder << " " << each.filter;
    EXPECT_THAT(folders(each.folder, each.filter), ElementsAreArray(each.folders)) << each.folder << " " << each.filter;
  }
}

TEST_P(Conformance, OnlyFoldersCanBeListed) {
  for (std::string const path : {"kinds/file", "kinds/file/below", "nothing/at/all", "kinds/folder/belo"}) {
    EXPECT_EQ(errorCode([&] { all(path); }), 1) << path;
    EXPECT_EQ(errorCode([&] { folders(path); }), 1) << path;
    int const filtered = errorCode([&] { all(path, "x*"); });
    EXPECT_TRUE(filtered == 1 || (filtered == 0 && subject_.isStore)) << path << " " << filtered;
  }
}

TEST_P(Conformance, ASessionAsksOnce) {
  if (!session_) GTEST_SKIP() << "only within a session";
  for (int again = 0; again < 2; ++again) {
    for (std::string const& name : all("filter")) EXPECT_EQ(kindOf("filter/" + name), isFile);
    EXPECT_THAT(folders("filter"), testing::IsEmpty());
    EXPECT_EQ(kindOf("filter/nothing"), notFound);
    EXPECT_EQ(session_->activity().folders, 1U);
    EXPECT_EQ(session_->activity().entries, contents()["filter"].size());
    EXPECT_EQ(session_->activity().requests, subject_.isStore ? 1U : 0U);
  }
}

TEST_P(Conformance, LinksCountAsWhatTheyLeadTo) {
  if (subject_.isStore) GTEST_SKIP() << "a store has no links";
  EXPECT_THAT(all("links"), testing::ElementsAre("broken", "chain", "file", "folder", "self", "up"));
  EXPECT_THAT(folders("links"), testing::ElementsAre("chain", "folder", "up"));
  std::pair<std::string, vfs::PathKind> const cases[] = {
      {"broken", isFile}, {"chain", isFolder},     {"file", isFile},           {"self", isFile},
      {"up", isFolder},   {"chain/below", isFile}, {"broken/below", notFound}, {"file/below", notFound}};
  for (auto const& [path, kind] : cases) EXPECT_EQ(kindOf("links/" + path), kind) << path;
  for (std::string const& name : all("links")) {
    EXPECT_EQ(vfs::entryKind(at("links/" + name + "/"), storage()), vfs::EntryKind::link);
    EXPECT_EQ(vfs::facts(at("links/" + name), storage()).value().kind, vfs::EntryKind::link);
  }
  EXPECT_EQ(vfs::entryKind(at("links/nothing"), storage()), std::nullopt);
  EXPECT_EQ(errorCode([&] { all("links/broken"); }), 1);

  // A folder that would be its own ancestor is refused; one that is reached by a harmless link isn't.
  EXPECT_EQ(errorCode([&] { vfs::Folder(folder("links"), u"up"); }), 3);
  EXPECT_EQ(errorCode([&] { vfs::Folder(folder("links"), u"chain"); }), 0);
  // A whole location starts a new chain of folders, here one without a link so far.
  all("");
  EXPECT_EQ(errorCode([&] { vfs::Folder(vfs::Folder(folder("dots"), at("links").toString()), u"chain"); }), 0);
}

TEST_P(Conformance, NamesOfAnyBytesStayThemselves) {
  EXPECT_EQ(kindOf("kinds/\xff\xc3"), notFound);
  if (subject_.isStore) return;
  EXPECT_THAT(all("bytes"), testing::ElementsAre("\xed\xb3\xbf", "\xff\xc3"));
  EXPECT_THAT(all("bytes", "\xff*"), testing::ElementsAre("\xff\xc3"));
  EXPECT_EQ(kindOf("bytes/\xed\xb3\xbf"), isFile);
}

INSTANTIATE_TEST_SUITE_P(Local, Conformance, testing::Combine(testing::Values(SubjectKind::local), testing::Bool()));
INSTANTIATE_TEST_SUITE_P(Memory, Conformance, testing::Combine(testing::Values(SubjectKind::memory), testing::Bool()));
INSTANTIATE_TEST_SUITE_P(Store, Conformance, testing::Combine(testing::Values(SubjectKind::store), testing::Bool()));

}  // namespace
}  // namespace korvan::test
