// Links the library, so that the compiler and the linker say what kglob may only look up by name.
#include <dlfcn.h>

#include "cli/search_library.hpp"
#include "gateway/builtin_glob.hpp"
#include "gtest/gtest.h"

namespace {

TEST(BuiltinSymbol, IsTheMangledNameOfTheBuiltin) {
  using Builtin =
      void(int, std::unique_ptr<vxArray_tag, matrix::detail::vxDestroy_deleter>*, int, vxArray_tag const* const*);
  Builtin* const builtin = &korvan::io::internal::glob;
  EXPECT_EQ(dlsym(RTLD_DEFAULT, kglob::builtinSymbol), reinterpret_cast<void*>(builtin));
}

}  // namespace
