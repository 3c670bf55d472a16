#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fl/filesystem/exception.hpp"
#include "path/path.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace {

using korvan::io::internal::canonical;
using korvan::io::internal::isSameFile;
using korvan::io::internal::Path;
using korvan::io::internal::relative;
using korvan::test::MemoryProvider;
using korvan::test::toBytes;
using korvan::test::toText;

class PathRelations : public testing::Test {
 protected:
  PathRelations() {
    folder_.addFile("d/e/x");
    folder_.addFile("d/y z");
    folder_.addLink("link", "d/e");
  }
  std::string here() const { return toBytes(canonical(Path(), Path(folder_.text())).string(false)); }

  korvan::test::TemporaryFolder folder_;
  korvan::test::CurrentFolder current_{folder_.path()};
  korvan::test::ServedScheme mem_{u"mem", std::make_shared<MemoryProvider>(korvan::test::Tree())};
};

TEST_F(PathRelations, RelativeForEachPairing) {
  struct {
    std::string path;
    std::string base;
    std::string relative;
  } const cases[] = {
      // local, local
      {"d/e", "d", "e"},
      {"", "", "."},
      {"", "d", ".."},
      {"link/x", "d", "e/x"},
      // local, IRI: in the base's scheme
      {"a b", "mem:///base", "a b"},
      {"/a", "mem:///base", "../a"},
      {"", "mem:///base", "."},
      // IRI, local: from the "file" IRI
      {"file:///x/y%20z", "/x", "y z"},
      {"file://" + here() + "/d", "", "d"},
      {"mem:///x", "/x", ""},
      // IRI, IRI
      {"mem:///a/b", "mem:///a/c/", "../b"},
      {"mem:///a/.", "mem:///a", "."},
      {"mem:///a", "file:///a", ""},
  };
  for (auto const& c : cases) {
    Path const result = relative(Path(toText(c.path)), Path(toText(c.base)));
    EXPECT_EQ(toBytes(result.string(false)), c.relative) << c.path << " from " << c.base;
    EXPECT_EQ(result.location().index(), 0U);
  }
}

TEST_F(PathRelations, SameFileForEachPairing) {
  struct {
    std::string a;
    std::string b;
    bool same;
  } const cases[] = {
      {"link", "d/e", true},
      {"d/./e/..", here() + "/d", true},
      {"d", "d/e", false},
      {"mem:///a/%62/../c/", "mem:///a/c", true},
      {"mem:///a", "mem:///A", false},
      {"mem:///a", "file:///a", false},
      {"file://" + here() + "/d/./e", "d/e", true},
      {"file:///nowhere/x", "/nowhere/y/../x", true},
      {"file://" + here() + "/link", "d/e", false},  // IRIs are compared as texts
      {"mem://" + here() + "/d", "d", false},
      {"file://" + here(), "", true},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(isSameFile(Path(toText(c.a)), Path(toText(c.b))), c.same) << c.a << " and " << c.b;
    EXPECT_EQ(isSameFile(Path(toText(c.b)), Path(toText(c.a))), c.same) << c.b << " and " << c.a;
  }
  EXPECT_THROW(isSameFile(Path(u"d"), Path(u"nowhere")), fl::filesystem::FsysExceptionBase);
}

// A path with steps up and down; every folder of it stands on the disk.
std::string randomPath(std::mt19937& random, std::vector<std::string> const& elements) {
  std::string path;
  for (auto left = random() % 6; left > 0; --left)
    path += (path.empty() ? "" : "/") + elements[random() % elements.size()];
  return path;
}

TEST_F(PathRelations, ABaseJoinedWithTheRelativePathLeadsBack) {
  std::mt19937 random(5);
  // Links and real folders of one depth, so that each path stands and stays below the temporary folder's own parents.
  folder_.addFolder("f/f/f/f/f/f/f");
  std::vector<std::string> const local = {"f", "..", ".", "f", "f"};
  for (int i = 0; i < 1000; ++i) {
    Path const a(toText("f/f/" + randomPath(random, local)));
    Path const b(toText("f/" + randomPath(random, local)));
    Path const there = a / relative(b, a).string(false);
    auto const shown = [&] { return toBytes(a.string(false)) + " to " + toBytes(b.string(false)); };
    bool stand = true;
    try {
      (void)canonical(a, Path()), (void)canonical(b, Path());
    } catch (fl::filesystem::FsysExceptionBase const&) {
      stand = false;
    }
    if (stand) {
      ASSERT_TRUE(isSameFile(there, b)) << shown();
      ASSERT_TRUE(isSameFile(b, there)) << shown();
    } else {
      // Where nothing stands the texts must lead to one place.
      ASSERT_EQ(relative(there, Path()), relative(b, Path())) << shown();
    }
  }
  std::vector<std::string> const elements = {"a", "b", "..", ".", "a b", "100%", "\xFF", "", "http:", "\xC3\xA9"};
  for (int i = 0; i < 5000; ++i) {
    Path const a = Path(u"mem:///") / toText("x/" + randomPath(random, elements));
    Path const b = Path(u"mem:///") / toText("x/" + randomPath(random, elements));
    Path const there = a / relative(b, a).string(false);
    ASSERT_EQ(canonical(there, Path()), canonical(b, Path()))
        << toBytes(a.string(false)) << " to " << toBytes(b.string(false)) << " by "
        << toBytes(relative(b, a).string(false));
    ASSERT_TRUE(isSameFile(there, b));
    ASSERT_EQ(isSameFile(a, b), isSameFile(b, a));
  }
}

}  // namespace
