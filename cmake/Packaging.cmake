# Debian packages, one for each component of Install.cmake: see scripts/package.
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} developers <developers@korvan.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "file search over local disks and object stores")
set(CPACK_COMPONENTS_ALL Runtime Development Program Python)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/CompressDocuments.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies on other libraries are read from the binaries. Our own libraries aren't in a package yet; they are found
# in the build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
# The libraries change together, so the packages must be of the same version.
set(korvan_runtime_package "lib${PROJECT_NAME}${PROJECT_VERSION_MAJOR}")
set(korvan_runtime_dependency "${korvan_runtime_package} (= ${PROJECT_VERSION})")

# The libraries that the module for "s3" needs (HTTP, XML) are ordinary dependencies, so that the scheme works once the
# package is installed.
configure_file(cmake/debian/shlibs.in debian/shlibs @ONLY)
add_custom_command(
  OUTPUT "${PROJECT_BINARY_DIR}/debian/symbols"
  COMMAND
    sh "${PROJECT_SOURCE_DIR}/cmake/debian/write-symbols" ${korvan_runtime_package} ${PROJECT_VERSION}
    $<TARGET_FILE:qdkorvanautomationio> $<TARGET_FILE:korvan_host> $<TARGET_FILE:kglob_library> >
    "${PROJECT_BINARY_DIR}/debian/symbols"
  DEPENDS cmake/debian/write-symbols qdkorvanautomationio korvan_host kglob_library)
add_custom_target(kglob-debian-symbols DEPENDS "${PROJECT_BINARY_DIR}/debian/symbols")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${korvan_runtime_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/shlibs" "${PROJECT_BINARY_DIR}/debian/symbols"
                                               "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
# The certificates with which the module for "s3" checks a store's identity.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "The library that an interpreter host loads, the C interface, the platform\nlibraries that both use, and the storage module for object stores.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "lib${PROJECT_NAME}-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${korvan_runtime_dependency}, libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "The headers, the CMake package and the pkg-config files.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME kglob)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${korvan_runtime_dependency}")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION
    "The program kglob, its manual page and completions for bash, zsh and fish.")

# The scripts compile the modules when the package is installed, and remove what was compiled.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kglob)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${korvan_runtime_dependency}, python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/postinst"
                                              "${PROJECT_SOURCE_DIR}/cmake/debian/prerm")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "The Python package kglob: the same search from Python.")

include(CPack)
