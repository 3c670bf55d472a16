#pragma once

#include <stdexcept>
#include <string>

#include "quindarel/interpreter/array_ptr.hpp"

namespace kglob {

/// The search library can't be found or loaded, or isn't one; `what` says so in one line.
class LibraryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The search library that belongs to this program: in the program's folder, or else in the library folder that it was
/// installed with. Throws `LibraryError` when there is none.
std::string findLibraryFile();

/// The mangled name (Itanium C++ ABI) of the builtin `korvan::io::internal::glob`, which the library exports beside the
/// core function of the same name.
inline constexpr char builtinSymbol[] =
    "_ZN6korvan2io8internal4globEiPSt10unique_ptrI11vxArray_tagN6matrix6detail17vxDestroy_deleterEEiPKPKS3_";

/// The search library, loaded and set up as an interpreter does it: its load hook is called by the constructor, its
/// unload hook by the destructor. Exceptions that it threw must be destroyed before it is.
class SearchLibrary {
 public:
  /// Loads the file; a name without "/" is a file in the current folder. Throws `LibraryError`.
  explicit SearchLibrary(std::string const& file);
  ~SearchLibrary();
  SearchLibrary(SearchLibrary const&) = delete;
  SearchLibrary& operator=(SearchLibrary const&) = delete;

  /// Calls the builtin; what it throws passes through.
  void call(int nlhs, matrix::detail::ArrayPtr* plhs, int nrhs, vxArray_tag const* const* prhs) const {
    builtin_(nlhs, plhs, nrhs, prhs);
  }

 private:
  using Builtin = void (*)(int, matrix::detail::ArrayPtr*, int, vxArray_tag const* const*);
  using Hook = void (*)();

  void* handle_;
  Builtin builtin_;
  Hook terminate_;
};

}  // namespace kglob
