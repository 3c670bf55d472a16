#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "fl/filesystem/operations.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "quindarel/interpreter/dispatcher.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

using fl::filesystem::upath;

upath local(std::string const& bytes) {
  return upath(toText(bytes));
}

class LocalPath : public testing::Test {
 protected:
  LocalPath() {
    folder_.addFile("d/e/f.txt");
    folder_.addFile("d/\xFF");
    folder_.addLink("to-e", "d/e");
    folder_.addLink("self", "self");
    folder_.addLink("broken", "nowhere");
  }

  TemporaryFolder folder_;
  CurrentFolder current_{folder_.path()};
};

TEST_F(LocalPath, ThatDoesNotExistIsAnError) {
  upath const base = local(folder_.path());
  struct {
    std::u16string path;
    int error;
  } const cases[] = {
      {u"nowhere", ENOENT},      {u"broken", ENOENT}, {u"self", ELOOP},
      {u"d/e/f.txt/x", ENOTDIR}, {u"\xD800", ENOENT}, {std::u16string(u"d\0", 2), ENOENT},
  };
  for (auto const& c : cases) {
    try {
      fl::filesystem::canonical(upath(c.path), base);
      ADD_FAILURE() << testing::PrintToString(c.path);
    } catch (fl::filesystem::FsysExceptionBase const& e) {
      EXPECT_EQ(e.error(), c.error) << e.what();
      EXPECT_NE(e.path().find(c.path), std::u16string::npos) << e.what();
    }
    EXPECT_THROW(fl::filesystem::equivalent(base, upath(c.path)), fl::filesystem::FsysExceptionBase) << c.error;
  }
}

TEST_F(LocalPath, RelativeLeadsFromTheBase) {
  struct {
    std::string path, base, relative;
  } const cases[] = {
      {"", "d/e", "../.."},
      {"d/e/f.txt", "", "d/e/f.txt"},
      {"nowhere/x", "nowhere/y/z", "../../x"},
      {"d/\xFF", "d/e", "../\xFF"},
      // After a link, ".." is the parent of the link's target.
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

TEST_F(LocalPath, OfTheCurrentFolderMayHaveAnyBytes) {
  folder_.addFolder("100%#1?\xFF");
  std::string const odd = folder_.path() + "/100%#1?\xFF";
  CurrentFolder const current(odd);
  auto const location = Kdispatcher::getDispatcher()->GetCurrentWorkingFolder()->get().getLocation();
  EXPECT_EQ(toBytes(foundation::storage::vfs::fromAbsoluteIRI(location).native()), odd);
}

}  // namespace
}  // namespace korvan::test
