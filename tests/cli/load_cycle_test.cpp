// Loads the library, calls it and unloads it again and again, as a host does that lives for weeks.
#include <filesystem>
#include <iterator>

#include <dlfcn.h>
#include <malloc.h>

#include "cli/search.hpp"
#include "cli/search_library.hpp"
#include "gtest/gtest.h"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interpreter/string_array.hpp"
#include "support/temporary_folder.hpp"

namespace {

std::string const libraryFile = KORVAN_LIBRARY_FILE;

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

/// One life of the library: a search that succeeds, and one whose error crosses from the library to here.
void loadCallUnload(kglob::Scope const& scope) {
  kglob::SearchLibrary const library(libraryFile);
  auto const matches = kglob::search(library, u"*/*.txt", scope);
  ASSERT_EQ(Quindarel::String::getString(matches).size(), 1U);
  EXPECT_THROW(kglob::search(library, u"file:///100%", scope), Quindarel::InterpreterError);
}

TEST(LoadCycle, LeaksNothingInTenThousandLives) {
  korvan::test::TemporaryFolder const folder;
  folder.addFile("sub/a.txt");
  kglob::Scope const scope{folder.text(), true};

  for (int i = 0; i < 10; ++i) loadCallUnload(scope);  // what is made once is made now
  std::ptrdiff_t const descriptors = openDescriptors();
  std::size_t const heap = mallinfo2().uordblks;
  for (int i = 0; i < 10'000 && !HasFatalFailure(); ++i) loadCallUnload(scope);
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_LT(mallinfo2().uordblks, heap + 10'000) << "a byte or more lost in each life";
  EXPECT_EQ(dlopen(libraryFile.c_str(), RTLD_LAZY | RTLD_NOLOAD), nullptr) << "the library was never unloaded";
}

}  // namespace
