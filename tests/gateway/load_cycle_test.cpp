// Loads the library, calls the builtin and unloads the library again and again, as a host does that lives for weeks.
#include <filesystem>
#include <iterator>

#include <dlfcn.h>
#include <malloc.h>

#include "gtest/gtest.h"
#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interpreter/string_array.hpp"
#include "support/temporary_folder.hpp"

namespace {

using matrix::detail::ArrayPtr;

template <class Function>
auto exported(void* library, char const* symbol) {
  return reinterpret_cast<Function*>(dlsym(library, symbol));
}

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

/// One life of the library: a search that succeeds, and one whose error crosses from the library to here.
void loadCallUnload(std::u16string const& folder) {
  void* const library = dlopen(KORVAN_LIBRARY_FILE, RTLD_LAZY | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  auto* const glob = exported<void(int, ArrayPtr*, int, vxArray_tag const* const*)>(
      library,
      "_ZN6korvan2io8internal4globEiPSt10unique_ptrI11vxArray_tagN6matrix6detail17vxDestroy_deleterEEiPKPKS3_");
  ASSERT_NE(glob, nullptr);
  exported<void()>(library, "KVInitialize_libqdkorvanautomationio")();
  auto const search = [&](std::u16string const& pattern) {
    ArrayPtr const text = Quindarel::createCharacterRow(pattern);
    ArrayPtr const name = Quindarel::createCharacterRow(u"RootFolder");
    ArrayPtr const value = Quindarel::createCharacterRow(folder);
    vxArray_tag const* const inputs[] = {text.get(), name.get(), value.get()};
    ArrayPtr output;
    glob(1, &output, 3, inputs);
    return Quindarel::String::getString(output).size();
  };
  EXPECT_EQ(search(u"*/*.txt"), 1U);
  EXPECT_THROW(search(u"file:///100%"), Quindarel::InterpreterError);
  exported<void()>(library, "KVTerminate_libqdkorvanautomationio")();
  dlclose(library);
}

TEST(LoadCycle, LeaksNothingInTenThousandLives) {
  korvan::test::TemporaryFolder const folder;
  folder.addFile("sub/a.txt");

  for (int i = 0; i < 10; ++i) loadCallUnload(folder.text());  // what is made once is made now
  std::ptrdiff_t const descriptors = openDescriptors();
  std::size_t const heap = mallinfo2().uordblks;
  for (int i = 0; i < 10'000 && !HasFatalFailure(); ++i) loadCallUnload(folder.text());
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_LT(mallinfo2().uordblks, heap + 10'000) << "a byte or more lost in each life";
  EXPECT_EQ(dlopen(KORVAN_LIBRARY_FILE, RTLD_LAZY | RTLD_NOLOAD), nullptr) << "the library was never unloaded";
}

}  // namespace
