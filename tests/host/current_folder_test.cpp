#include <climits>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/storage/vfs/conversion.hpp"
#include "interpreter/dispatcher.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

std::string toldFolder() {
  auto const location = Kdispatcher::getDispatcher()->GetCurrentWorkingFolder()->get().getLocation();
  EXPECT_EQ(location.getScheme(), u"file");
  return toBytes(foundation::storage::vfs::fromAbsoluteIRI(location).native());
}

TEST(CurrentFolder, IsTheProcesssTakenAfresh) {
  TemporaryFolder const folder;
  CurrentFolder const current(folder.path());
  EXPECT_EQ(toldFolder(), folder.path());

  std::string const odd = folder.path() + "/100%#1?\xFF";
  ASSERT_EQ(::mkdir(odd.c_str(), 0700), 0);
  ASSERT_EQ(::chdir(odd.c_str()), 0);
  EXPECT_EQ(toldFolder(), odd);

  std::string deep = odd;
  std::string const name(200, 'd');
  while (deep.size() <= PATH_MAX) {
    ASSERT_EQ(::mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(::chdir(name.c_str()), 0);
    deep += '/' + name;
  }
  EXPECT_EQ(toldFolder(), deep);

  ASSERT_EQ(::mkdir("gone", 0700), 0);
  ASSERT_EQ(::chdir("gone"), 0);
  ASSERT_EQ(::rmdir("../gone"), 0);
  EXPECT_THROW(toldFolder(), Quindarel::current_working_folder::UnknownFolderException);
}

}  // namespace
}  // namespace korvan::test
