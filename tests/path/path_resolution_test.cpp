#include <memory>
#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "fl/filesystem/exception.hpp"
#include "foundation/storage/vfs/exception.hpp"
#include "path/path.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace {

using korvan::io::internal::absolute;
using korvan::io::internal::canonical;
using korvan::io::internal::isAbsolute;
using korvan::io::internal::Path;
using korvan::test::CurrentFolder;
using korvan::test::MemoryProvider;
using korvan::test::toBytes;
using korvan::test::toText;
using korvan::test::Tree;

class PathResolution : public testing::Test {
 protected:
  PathResolution() {
    folder_.addFile("d/x");
    folder_.addLink("link", "d");
  }
  static std::shared_ptr<MemoryProvider> buckets() {
    MemoryProvider::Options options;
    options.authority = MemoryProvider::Authority::required;
    return std::make_shared<MemoryProvider>(Tree(), options);
  }
  std::string here() const { return toBytes(canonical(Path(), Path(folder_.text())).string(false)); }

  korvan::test::TemporaryFolder folder_;
  CurrentFolder current_{folder_.path()};
  korvan::test::ServedScheme mem_{u"mem", std::make_shared<MemoryProvider>(Tree())};
  korvan::test::ServedScheme bucket_{u"bucket", buckets()};
};

TEST_F(PathResolution, IsAbsolute) {
  for (auto const* const text : {"/", "/a", "//a", "file:///a", "mem:///"})
    EXPECT_TRUE(isAbsolute(Path(toText(text)))) << text;
  for (auto const* const text : {"", "a", "./a", "../a", "~", "\\a", "C:/a"})
    EXPECT_FALSE(isAbsolute(Path(toText(text)))) << text;
}

TEST_F(PathResolution, AbsoluteForEachPairing) {
  struct {
    std::string path;
    std::string base;
    std::string absolute;
  } const cases[] = {
      // IRI against either: unchanged.
      {"mem:///a/../b/", "file:///base", "mem:///a/../b/"},
      {"mem:///a/../b/", "/base", "mem:///a/../b/"},
      // local against IRI
      {"a b", "mem:///base", "mem:///base/a%20b"},
      {"../a", "mem:///base/", "mem:///base/../a"},
      {"", "mem:///base", "mem:///base"},
      {"/a", "mem:///base", "mem:///a"},
      {"/a", "bucket://b/base", "bucket://a"},
      {"/a/x", "bucket://b/base", "bucket://a/x"},
      {"~", "mem:///base", "mem:///base/~"},
      // local against local
      {"a", "/base", "/base/a"},
      {"/a", "/base", "/a"},
      {".", "/base", "/base/."},
      {"", "/base", "/base"},
      {"", "/base/", "/base"},
      {"", "/", "/"},
      {"a", "", here() + "/a"},
      {"", "", here()},
      {"", "d", here() + "/d"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(absolute(Path(toText(c.path)), Path(toText(c.base))).string(false)), c.absolute)
        << c.path << " against " << c.base;
  }
}

TEST_F(PathResolution, CanonicalForEachPairing) {
  struct {
    std::string path;
    std::string base;
    std::string canonical;
  } const cases[] = {
      {"mem:///a/../b/%63/", "/base", "mem:///b/c"},
      {"mem:///a/./", "file:///base", "mem:///a"},
      {"../a/.", "mem:///base/x", "mem:///base/a"},
      {"", "mem:///base/", "mem:///base"},
      {"/a/..", "mem:///base", "mem:///"},
      {"link/x", "", here() + "/d/x"},
      {"link/..", folder_.path(), here()},
      {"", "link", here() + "/d"},
      {".", "d", here() + "/d"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(canonical(Path(toText(c.path)), Path(toText(c.base))).string(false)), c.canonical)
        << c.path << " against " << c.base;
  }
  EXPECT_THROW(canonical(Path(u"nowhere"), Path()), fl::filesystem::FsysExceptionBase);
  EXPECT_THROW(canonical(Path(), Path(u"/nowhere")), fl::filesystem::FsysExceptionBase);
}

TEST_F(PathResolution, ErrorsOfThePlatformPass) {
  EXPECT_THROW(absolute(Path(u"/"), Path(u"bucket://b")), foundation::storage::vfs::InvalidIRIException);
  EXPECT_THROW(absolute(Path(u"\xD800"), Path(u"mem:///")), foundation::storage::vfs::InvalidIRIException);
}

}  // namespace
