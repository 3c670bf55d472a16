#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "fl/filesystem/operations.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace {

using fl::filesystem::FsysExceptionBase;
using fl::filesystem::upath;
using korvan::test::CurrentFolder;
using korvan::test::TemporaryFolder;
using korvan::test::toBytes;
using korvan::test::toText;

upath local(std::string const& bytes) {
  return upath(toText(bytes));
}

class LocalPathOperations : public testing::Test {
 protected:
  LocalPathOperations() {
    folder_.addFile("d/e/f.txt");
    folder_.addFile("d/\xFF");
    folder_.addLink("to-e", "d/e");
    folder_.addLink("self", "self");
    folder_.addLink("broken", "nowhere");
  }

  // The folder's own path as canonical paths write it.
  std::string top() const { return toBytes(fl::filesystem::canonical(local(folder_.path()), upath()).native()); }

  TemporaryFolder folder_;
};

TEST_F(LocalPathOperations, AbsoluteIsTextBelowABase) {
  CurrentFolder const current(folder_.path());
  std::string const here = top();
  struct {
    std::string path;
    std::string base;
    std::string absolute;
  } const cases[] = {
      {"/x", "/base", "/x"},     {"x", "/base", "/base/x"},          {"x", "/base/", "/base/x"},
      {".", "/base", "/base/."}, {"../x", "/base", "/base/../x"},    {"", "/base", "/base"},
      {"x", "", here + "/x"},    {"x", "d", here + "/d/x"},          {"", "", here},
      {".", "", here + "/."},    {"to-e/..", "", here + "/to-e/.."},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(fl::filesystem::absolute(local(c.path), local(c.base)).native()), c.absolute)
        << c.path << " from " << c.base;
  }
  EXPECT_FALSE(fl::filesystem::absolute(upath(u"x", false), local("/base")).flag());
}

TEST_F(LocalPathOperations, CanonicalFollowsLinks) {
  std::string const here = top();
  upath const base = local(folder_.path());
  struct {
    std::string path;
    std::string canonical;
  } const cases[] = {
      {".", here},
      {"to-e", here + "/d/e"},
      {"to-e/..", here + "/d"},
      {"d//e/./f.txt", here + "/d/e/f.txt"},
      {"d/\xFF", here + "/d/\xFF"},
      {folder_.path() + "/to-e/", here + "/d/e"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(fl::filesystem::canonical(local(c.path), base).native()), c.canonical) << c.path;
  }
}

TEST_F(LocalPathOperations, WhatIsntThereIsAnError) {
  upath const base = local(folder_.path());
  struct {
    std::u16string path;
    int error;
  } const cases[] = {
      {u"nowhere", ENOENT},
      {u"broken", ENOENT},
      {u"d/e/f.txt/x", ENOTDIR},
      {u"self", ELOOP},
      {std::u16string(u"d\0", 2), ENOENT},
      {u"\xD800", ENOENT},
  };
  for (auto const& c : cases) {
    try {
      fl::filesystem::canonical(upath(c.path), base);
      ADD_FAILURE() << testing::PrintToString(c.path);
    } catch (FsysExceptionBase const& e) {
      EXPECT_EQ(e.error(), c.error) << e.what();
      EXPECT_NE(e.path().find(c.path), std::u16string::npos) << e.what();
    }
    upath const whole = fl::filesystem::absolute(upath(c.path), base);
    EXPECT_THROW(fl::filesystem::equivalent(whole, base), FsysExceptionBase) << testing::PrintToString(c.path);
    EXPECT_THROW(fl::filesystem::equivalent(base, whole), FsysExceptionBase) << testing::PrintToString(c.path);
  }
}

TEST_F(LocalPathOperations, RelativeLeadsFromTheBase) {
  CurrentFolder const current(folder_.path());
  struct {
    std::string path;
    std::string base;
    std::string relative;
  } const cases[] = {
      {"d/e", "d", "e"},
      {"d", "d/e", ".."},
      {"d", "d", "."},
      {"", "", "."},
      {"", "d/e", "../.."},
      {"d/e/f.txt", "", "d/e/f.txt"},
      {"nowhere/x", "nowhere/y/z", "../../x"},
      {"nowhere/", "nowhere", "."},
      {"broken", ".", "broken"},
      {"d/\xFF", "d/e", "../\xFF"},
      // A link's own ".." leads out of what it leads to.
      {"d/e/f.txt", "to-e", "f.txt"},
      {"to-e/..", ".", "d"},
      {"nowhere", "to-e", "../../nowhere"},
      {folder_.path() + "/d", "", "d"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(fl::filesystem::relative(local(c.path), local(c.base)).native()), c.relative)
        << c.path << " from " << c.base;
  }
}

TEST_F(LocalPathOperations, EquivalentComparesFilesNotTexts) {
  CurrentFolder const current(folder_.path());
  EXPECT_TRUE(fl::filesystem::equivalent(local("to-e"), local("d/e")));
  EXPECT_TRUE(fl::filesystem::equivalent(local("."), local(folder_.path())));
  EXPECT_TRUE(fl::filesystem::equivalent(local("d/e/f.txt"), local("to-e/f.txt")));
  EXPECT_FALSE(fl::filesystem::equivalent(local("d"), local("d/e")));
}

}  // namespace
