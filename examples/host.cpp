// host LIBRARY PATTERN FOLDER: the smallest interpreter host. Loads the library and calls its builtin as
// glob(PATTERN, "RootFolder", FOLDER).
#include <iostream>

#include <dlfcn.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/errors.hpp"

using foundation::core::text::fromBytes;
using foundation::core::text::toBytesLossy;
using matrix::detail::ArrayPtr;

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::cerr << dlerror() << "\n";
    return 2;
  }
  // The builtin's mangled name (Itanium C++ ABI), since it shares the name "glob" with the core search.
  constexpr char const* builtinName =
      "_ZN6korvan2io8internal4globEiPSt10unique_ptrI11vxArray_tagN6matrix6detail17vxDestroy_deleterEEiPKPKS3_";
  using Builtin = void (*)(int, ArrayPtr*, int, vxArray_tag const* const*);
  using Hook = void (*)();
  auto const glob = reinterpret_cast<Builtin>(dlsym(library, builtinName));
  auto const initialize = reinterpret_cast<Hook>(dlsym(library, "KVInitialize_libqdkorvanautomationio"));
  auto const terminate = reinterpret_cast<Hook>(dlsym(library, "KVTerminate_libqdkorvanautomationio"));
  if (glob == nullptr || initialize == nullptr || terminate == nullptr) return 2;

  int status = 0;
  initialize();
  try {
    ArrayPtr const pattern = Quindarel::createCharacterRow(fromBytes(argv[2]));
    ArrayPtr const name = Quindarel::createCharacterRow(u"RootFolder");
    ArrayPtr const folder = Quindarel::createCharacterRow(fromBytes(argv[3]));
    vxArray_tag const* const inputs[] = {pattern.get(), name.get(), folder.get()};
    ArrayPtr output;
    foundation::storage::vfs::ReadSession const session;  // the call sees a single state of each folder
    glob(1, &output, 3, inputs);
    Quindarel::String::StringArray const& matches = Quindarel::String::getString(output);
    for (std::size_t i = 0; i < matches.size(); ++i) std::cout << toBytesLossy(*matches[i]) << "\n";
    for (auto const& failure : session.failedListings()) std::cerr << failure.what() << "\n";
    if (!session.failedListings().empty()) status = 2;
  } catch (...) {
    Quindarel::InterpreterError const error = Quindarel::currentInterpreterError();
    std::cerr << error.identifier() << ": " << toBytesLossy(error.message()) << "\n";
    status = 2;
  }
  // No exception of the library is left here, so it may be unloaded.
  terminate();
  dlclose(library);
  return status;
}
