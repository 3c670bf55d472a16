# Options that make calls within our shared libraries as cheap as in a program: our functions are never interposed.
add_library(korvan_library_options INTERFACE)
target_compile_options(korvan_library_options INTERFACE -fno-semantic-interposition)
target_link_options(korvan_library_options INTERFACE "LINKER:-Bsymbolic-functions")

# The warnings that every target of this repository is compiled with.
add_library(korvan_warnings INTERFACE)
target_compile_options(
  korvan_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wold-style-cast
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wnull-dereference
            -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives of these two inside the standard library's own strings and vectors at -O2.
  target_compile_options(korvan_warnings INTERFACE -Wno-null-dereference -Wno-restrict)
endif()
