#include <algorithm>
#include <functional>
#include <map>
#include <optional>

#include <gmock/gmock.h>

#include "foundation/storage/vfs/exception.hpp"
#include "foundation/storage/vfs/exists.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "storage/conformance_subjects.hpp"
#include "storage/conformance_tree.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

namespace vfs = foundation::storage::vfs;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Names = std::vector<std::string>;

vfs::StorageSystemReference storage() {
  return Quindarel::KorvanStorageSystem::GetStorageSystemReference();
}

// Every case runs with each provider, once with each question put to it and once within one read session.
struct Setting {
  SubjectKind kind;
  bool session;

  friend std::ostream& operator<<(std::ostream& out, Setting const& setting) {
    return out << setting.kind << (setting.session ? "InSession" : "");
  }
};

class Conformance : public testing::TestWithParam<Setting> {
 protected:
  Conformance() : subject_(subject(GetParam().kind)) {
    if (GetParam().session) session_.emplace();
  }

  vfs::AbsoluteIRI at(std::string const& path) const {
    return vfs::AbsoluteIRI(vfs::AbsoluteIRI(subject_.root()), toText(path));
  }

  vfs::PathKind kindOf(std::string const& path) const { return vfs::exists(at(path), storage()); }

  vfs::Folder folder(std::string const& path) const { return vfs::Folder(at(path), storage()); }

  Names all(std::string const& path, std::string const& filter = "*") const {
    Names names;
    for (vfs::ListEntry const& entry : folder(path).listAll(toText(filter))) names.push_back(toBytes(entry.getName()));
    return names;
  }

  Names folders(std::string const& path, std::string const& filter = "*") const {
    Names names;
    for (vfs::Folder const& entry : folder(path).listFolders(toText(filter))) names.push_back(toBytes(entry.getName()));
    return names;
  }

  Differences const& differences() const { return subject_.differences(); }

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

// The folders of the tree's keys, each with the names in it, in byte order, and whether they are folders.
std::map<std::string, std::map<std::string, bool>> contents() {
  std::map<std::string, std::map<std::string, bool>> folders;
  for (std::string const& key : conformanceKeys()) {
    std::size_t begin = 0;
    for (std::size_t end = key.find('/'); end != std::string::npos; end = key.find('/', begin)) {
      folders[begin == 0 ? "" : key.substr(0, begin - 1)][key.substr(begin, end - begin)] = true;
      begin = end + 1;
    }
    if (begin < key.size()) folders[begin == 0 ? "" : key.substr(0, begin - 1)].emplace(key.substr(begin), false);
    if (begin == key.size()) folders[key.substr(0, begin - 1)];
  }
  return folders;
}

std::string join(std::string const& folder, std::string const& name) {
  return folder.empty() ? name : folder + "/" + name;
}

TEST_P(Conformance, ExistenceIsTold) {
  struct Case {
    std::string path;
    vfs::PathKind kind;
  };
  using enum vfs::PathKind;
  std::vector<Case> const cases = {
      {"", isFolder},
      {"kinds/file", isFile},
      {"kinds/file/", notFound},
      {"kinds/file/below", notFound},
      {"kinds/folder", isFolder},
      {"kinds/folder/", isFolder},
      {"kinds/folder/below", isFile},
      {"kinds/empty", isFolder},
      {"kinds/empty/", isFolder},
      {"kinds/empty/below", notFound},
      {"kinds/.dotfile", isFile},
      {"kinds/fold", notFound},
      {"kinds/folders", notFound},
      {"kinds/File", notFound},
      {"kinds/fil*", notFound},
      {"kinds/nothing", notFound},
      {"kinds/nothing/at/all", notFound},
      {"nothing", notFound},
      {"awkward/100%25", notFound},
      {"awkward/a b ", notFound},
      {"awkward-folders/a%20b", isFolder},
      {"order/e", notFound},
      {std::string("kinds/file\0", 11), notFound},
      {std::string("kinds/fi\0le", 11), notFound},
      {"kinds/" + std::string(differences().longestName + 1, 'x'), notFound},
  };
  for (Case const& each : cases) EXPECT_EQ(kindOf(each.path), each.kind) << each.path;
}

TEST_P(Conformance, EveryFolderListsWhatItHolds) {
  for (auto const& [path, entries] : contents()) {
    if (path.empty()) continue;  // a disk's root holds what only disks have
    Names names;
    Names folderNames;
    for (auto const& [name, isFolder] : entries) {
      names.push_back(name);
      if (isFolder) folderNames.push_back(name);
    }
    EXPECT_THAT(all(path), ElementsAreArray(names)) << path;
    EXPECT_THAT(folders(path), ElementsAreArray(folderNames)) << path;
  }
}

TEST_P(Conformance, WhatIsListedIsFoundByItsName) {
  for (auto const& [path, entries] : contents()) {
    if (path.rfind("deep", 0) == 0) continue;  // many alike
    for (auto const& [name, isFolder] : entries) {
      vfs::AbsoluteIRI const location = at(join(path, name));
      EXPECT_EQ(toBytes(location.getName()), name);
      // The text of the IRI leads back to the same place.
      EXPECT_EQ(vfs::exists(vfs::AbsoluteIRI(location.toString()), storage()),
                isFolder ? vfs::PathKind::isFolder : vfs::PathKind::isFile)
          << path << "/" << name;
    }
  }
}

TEST_P(Conformance, FiltersChoose) {
  struct Case {
    std::string folder;
    std::string filter;
    Names all;
    Names folders;
  };
  std::vector<Case> const cases = {
      {"kinds", "f*", {"file", "folder", "folder-y", "folder.x"}, {"folder"}},
      {"kinds", "folder", {"folder"}, {"folder"}},
      {"kinds", "file", {"file"}, {}},
      {"kinds",
       "*e*",
       {".dotfile", ".dotfolder", "Zebra", "apple", "empty", "file", "folder", "folder-y", "folder.x"},
       {".dotfolder", "empty", "folder"}},
      {"kinds", "nothing*", {}, {}},
      {"kinds", "", {}, {}},
      {"filter", "2024-*", {"2024-01.csv", "2024-02.csv"}, {}},
      {"filter", "*.csv", {"2023-12.csv", "2024-01.csv", "2024-02.csv", "abc.csv"}, {}},
      {"filter", "a*b", {"a*b", "aaab", "aab", "ab", "axxb"}, {}},
      {"filter", "a?", {"a?"}, {}},
      {"filter", "[ab]", {"[ab]"}, {}},
      {"filter", "*.*.*", {"a.b.c", "abc.csv.gz"}, {}},
      {"filter", "a**b", {"a*b", "aaab", "aab", "ab", "axxb"}, {}},
      {"filter", "*a*a*a*a*a*a*a*a*a*a*a*a*a*b", {}, {}},
      {"filter", "A*", {"A"}, {}},
      {"filter", "2024-01.csv/*", {}, {}},
      {"dots", "*", {"...", "..c", ".a", ".b", "a."}, {".b"}},
      {"dots", ".*", {"...", "..c", ".a", ".b"}, {".b"}},
      {"dots", ".", {}, {}},
      {"dots", "..", {}, {}},
      {"order",
       "*",
       {"B", "a", "a b", "a-", "a.b", "a0", "e\xcc\x81", "z", "\xc3\xa9", "\xee\x80\x80", "\xef\xbf\xae",
        "\xf0\x90\x80\x80"},
       {"a"}},
      {"order", "\xc3*", {}, {}},  // half a character is none
      {"awkward", "100%*", {"100%"}, {}},
      {"awkward", "a%20*", {"a%20b"}, {}},
      {"awkward", "*\n*", {"new\nline"}, {}},
      {"awkward", "\xe6\x97\xa5*", {"\xe6\x97\xa5\xe6\x9c\xac"}, {}},
  };
  for (Case const& each : cases) {
    EXPECT_THAT(all(each.folder, each.filter), ElementsAreArray(each.all)) << each.folder << " " << each.filter;
    EXPECT_THAT(folders(each.folder, each.filter), ElementsAreArray(each.folders)) << each.folder << " " << each.filter;
  }
}

TEST_P(Conformance, WhatIsNoFolderCannotBeListed) {
  for (std::string const path :
       {"kinds/file", "kinds/nothing", "kinds/file/below", "nothing/at/all", "kinds/folder/belo"}) {
    EXPECT_EQ(errorCode([&] { all(path); }), 1) << path;
    EXPECT_EQ(errorCode([&] { folders(path); }), 1) << path;
    int const filtered = errorCode([&] { all(path, "x*"); });
    EXPECT_TRUE(filtered == 1 || (filtered == 0 && !differences().filteredListingsTellAbsence))
        << path << " " << filtered;
  }
}

TEST_P(Conformance, AFolderLeadsToItsSubFolders) {
  for (vfs::Folder const& entry : folder("awkward-folders").listFolders(u"*")) {
    std::string const name = toBytes(entry.getName());
    vfs::Folder const opened(folder("awkward-folders"), entry.getName());
    EXPECT_EQ(entry.getLocation(), opened.getLocation()) << name;
    EXPECT_EQ(entry.getLocation(), at("awkward-folders/" + name));
    EXPECT_EQ(toBytes(entry.getLocation().makePathRelativeTo(vfs::AbsoluteIRI(subject_.root()))),
              "awkward-folders/" + name);
    for (vfs::Folder const& each : {entry, opened}) {
      Names names;
      for (vfs::ListEntry const& below : each.listAll(u"*")) names.push_back(toBytes(below.getName()));
      EXPECT_THAT(names, testing::ElementsAre("below")) << name;
    }
  }
}

TEST_P(Conformance, ASessionAsksOnce) {
  if (!session_) GTEST_SKIP() << "only within a session";
  Names const names = all("filter");
  std::uint64_t const listed = session_->activity().folders;
  std::uint64_t const requests = session_->activity().requests;
  EXPECT_EQ(listed, 1U);
  EXPECT_EQ(session_->activity().entries, names.size());
  EXPECT_EQ(requests, differences().requests ? 1U : 0U);
  EXPECT_THAT(all("filter"), ElementsAreArray(names));
  EXPECT_THAT(folders("filter"), IsEmpty());
  for (std::string const& name : names) EXPECT_EQ(kindOf("filter/" + name), vfs::PathKind::isFile);
  EXPECT_EQ(kindOf("filter/nothing"), vfs::PathKind::notFound);
  EXPECT_EQ(session_->activity().folders, listed);
  EXPECT_EQ(session_->activity().requests, requests);
}

TEST_P(Conformance, LinksCountAsWhatTheyLeadTo) {
  if (!differences().links) {
    EXPECT_EQ(kindOf("links"), vfs::PathKind::notFound);
    return;
  }
  EXPECT_THAT(all("links"), testing::ElementsAre("broken", "chain", "file", "folder", "self", "up"));
  EXPECT_THAT(folders("links"), testing::ElementsAre("chain", "folder", "up"));
  using enum vfs::PathKind;
  for (auto const& [name, kind] : {std::pair("broken", isFile),
                                   {"chain", isFolder},
                                   {"file", isFile},
                                   {"folder", isFolder},
                                   {"self", isFile},
                                   {"up", isFolder}}) {
    EXPECT_EQ(kindOf(std::string("links/") + name), kind) << name;
  }
  EXPECT_EQ(kindOf("links/chain/below"), isFile);
  EXPECT_EQ(kindOf("links/file/below"), notFound);
  EXPECT_EQ(kindOf("links/broken/below"), notFound);
  EXPECT_THAT(all("links/chain"), testing::ElementsAre("below"));
  EXPECT_EQ(errorCode([&] { all("links/broken"); }), 1);

  // A folder that would be its own ancestor is refused; one that is reached by a harmless link isn't.
  EXPECT_EQ(errorCode([&] { vfs::Folder(folder("links"), u"up"); }), 3);
  EXPECT_EQ(errorCode([&] { vfs::Folder(folder("links"), u"chain"); }), 0);
}

TEST_P(Conformance, NamesOfAnyBytesStayThemselves) {
  if (!differences().anyBytes) {
    EXPECT_EQ(kindOf("bytes"), vfs::PathKind::notFound);
    EXPECT_EQ(kindOf("kinds/\xff\xc3"), vfs::PathKind::notFound);
    return;
  }
  Names const names = {"\xed\xb3\xbf", "\xff\xc3"};
  EXPECT_THAT(all("bytes"), ElementsAreArray(names));
  for (std::string const& name : names) EXPECT_EQ(kindOf("bytes/" + name), vfs::PathKind::isFile);
  EXPECT_THAT(all("bytes", "\xff*"), testing::ElementsAre("\xff\xc3"));
}

INSTANTIATE_TEST_SUITE_P(Providers, Conformance,
                         testing::Values(Setting{SubjectKind::local, false}, Setting{SubjectKind::local, true},
                                         Setting{SubjectKind::memory, false}, Setting{SubjectKind::memory, true},
                                         Setting{SubjectKind::store, false}, Setting{SubjectKind::store, true}),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace korvan::test
