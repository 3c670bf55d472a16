#include "cli/search_library.hpp"

#include <dlfcn.h>

namespace kglob {
namespace {

/// The address of what the library must export; closes the library and throws when it doesn't.
template <class Function>
Function exported(void* handle, std::string const& file, char const* symbol) {
  if (void* const address = dlsym(handle, symbol)) return reinterpret_cast<Function>(address);
  dlclose(handle);
  throw LibraryError(file + " is not the search library: it lacks " + symbol);
}

}  // namespace

SearchLibrary::SearchLibrary(std::string const& file)
    : handle_(dlopen((file.find('/') == std::string::npos ? "./" + file : file).c_str(), RTLD_LAZY | RTLD_LOCAL)) {
  if (!handle_) throw LibraryError("cannot load the search library: " + std::string(dlerror()));
  builtin_ = exported<Builtin>(handle_, file, builtinSymbol);
  auto const initialize = exported<Hook>(handle_, file, "KVInitialize_libqdkorvanautomationio");
  terminate_ = exported<Hook>(handle_, file, "KVTerminate_libqdkorvanautomationio");
  initialize();
}

SearchLibrary::~SearchLibrary() {
  terminate_();
  dlclose(handle_);
}

}  // namespace kglob
