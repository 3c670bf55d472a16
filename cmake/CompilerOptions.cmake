# Options that make calls within our shared libraries as cheap as in a program: our functions are never interposed.
add_library(korvan_library_options INTERFACE)
target_compile_options(korvan_library_options INTERFACE -fno-semantic-interposition)
target_link_options(korvan_library_options INTERFACE "LINKER:-Bsymbolic-functions")

# No file name in what is built, such as in a failed assertion, depends on the folder of the sources.
add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")

# An undefined symbol is an error when a library is linked, not only when a program loads it. With clang, only programs
# contain the run-time library of a sanitizer, so the shared libraries' references to it must stay undefined.
if(NOT (CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_CXX_FLAGS MATCHES "-fsanitize="))
  add_link_options("$<$<IN_LIST:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY;MODULE_LIBRARY>:LINKER:-z,defs>")
endif()

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
            $<$<BOOL:${KORVAN_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives of these two inside the standard library's own strings and vectors at -O2.
  target_compile_options(korvan_warnings INTERFACE -Wno-null-dereference -Wno-restrict)
elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # Checks that what a mutex guards (foundation/core/threads/mutex.hpp) is used only while the mutex is held.
  target_compile_options(korvan_warnings INTERFACE -Wthread-safety)
endif()
