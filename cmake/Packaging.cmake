# Debian packages, one for each component of Install.cmake: `cpack -G DEB` in a build configured by the preset "package".
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VENDOR "${PROJECT_NAME}")
set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} developers <developers@korvan.invalid>")
set(CPACK_COMPONENTS_ALL Runtime Development Program)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Both libraries change together, so the packages of one version belong together.
set(korvan_runtime_package "lib${PROJECT_NAME}${PROJECT_VERSION_MAJOR}")
set(korvan_runtime_dependency "${korvan_runtime_package} (= ${PROJECT_VERSION})")

# Depends on what the storage module of scheme "s3" needs (HTTP, XML): a scheme that is served must work once installed.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${korvan_runtime_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}
 The library that an interpreter host loads, the platform libraries below it,
 and the storage module for object stores.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "lib${PROJECT_NAME}-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${korvan_runtime_dependency}, libboost-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development files)
 Headers, the CMake package and the pkg-config file.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME kglob)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${korvan_runtime_dependency}")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "Find files by wildcard patterns, on disks and in object stores
 The program kglob, its manual page and completions for bash, zsh and fish.")

include(CPack)
