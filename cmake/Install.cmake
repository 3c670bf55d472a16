# What `cmake --install` installs, and where. No installed file contains an absolute path, so that a copy still works
# after it is moved. Components: Runtime (what a process loads), Development (what a build needs), Program (kglob),
# Python (the package kglob).
include(CMakePackageConfigHelpers)

set(korvan_cmake_folder "${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME}")
set(korvan_pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(KORVAN_ZSH_COMPLETIONS_DIR
    "${CMAKE_INSTALL_DATADIR}/zsh/site-functions"
    CACHE STRING "Folder for the zsh completion, relative to the prefix")
set(KORVAN_PYTHON_DIR
    "lib/python3/dist-packages"
    CACHE STRING "Folder for the Python package, relative to the prefix")

install(
  TARGETS qdkorvanautomationio korvan_host
  EXPORT ${PROJECT_NAME}Targets
  LIBRARY COMPONENT Runtime
          NAMELINK_COMPONENT Development
  FILE_SET HEADERS
           DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${PROJECT_NAME}"
           COMPONENT Development
  INCLUDES
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${PROJECT_NAME}")
# The C interface: its header is found without a further folder in the include path.
install(
  TARGETS kglob_library
  EXPORT ${PROJECT_NAME}Targets
  LIBRARY COMPONENT Runtime
          NAMELINK_COMPONENT Development
  FILE_SET HEADERS
           DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
           COMPONENT Development)
# The folder in which StorageSystem looks for the modules of schemes.
if(KORVAN_BUILD_S3)
  install(TARGETS korvan_storage_s3 LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/korvanhost" COMPONENT Runtime)
endif()

configure_package_config_file(
  cmake/${PROJECT_NAME}Config.cmake.in "${PROJECT_BINARY_DIR}/${PROJECT_NAME}Config.cmake"
  INSTALL_DESTINATION "${korvan_cmake_folder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/${PROJECT_NAME}Config.cmake" "${PROJECT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake"
  DESTINATION "${korvan_cmake_folder}"
  COMPONENT Development)
install(
  EXPORT ${PROJECT_NAME}Targets
  NAMESPACE ${PROJECT_NAME}::
  DESTINATION "${korvan_cmake_folder}"
  COMPONENT Development)

# pkg-config derives the prefix from the location of the file itself.
file(RELATIVE_PATH korvan_prefix_from_pkgconfig "/prefix/${korvan_pkgconfig_folder}" "/prefix")
string(REGEX REPLACE "/$" "" korvan_prefix_from_pkgconfig "${korvan_prefix_from_pkgconfig}")
configure_file(cmake/${PROJECT_NAME}.pc.in ${PROJECT_NAME}.pc @ONLY)
configure_file(cmake/kglob.pc.in kglob.pc @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/${PROJECT_NAME}.pc" "${PROJECT_BINARY_DIR}/kglob.pc"
  DESTINATION "${korvan_pkgconfig_folder}"
  COMPONENT Development)

if(KORVAN_BUILD_PROGRAM)
  install(TARGETS kglob RUNTIME COMPONENT Program)
  set(korvan_documents "${PROJECT_BINARY_DIR}/cli/documents")  # made by the target kglob-documents
  install(
    FILES "${korvan_documents}/kglob.1"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
    COMPONENT Program)
  install(
    FILES "${korvan_documents}/kglob.bash"
    RENAME kglob
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    COMPONENT Program)
  install(
    FILES "${korvan_documents}/_kglob"
    DESTINATION "${KORVAN_ZSH_COMPLETIONS_DIR}"
    COMPONENT Program)
  install(
    FILES "${korvan_documents}/kglob.fish"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d"
    COMPONENT Program)
endif()

# pip, which installs from python/ alone, has the version from there.
file(STRINGS python/pyproject.toml korvan_python_version REGEX "^version = ")
if(NOT korvan_python_version MATCHES "\"${PROJECT_VERSION}\"")
  message(FATAL_ERROR "python/pyproject.toml doesn't have the version ${PROJECT_VERSION}")
endif()
install(
  DIRECTORY python/src/kglob
  DESTINATION "${KORVAN_PYTHON_DIR}"
  COMPONENT Python
  FILES_MATCHING
  REGEX "/(.*[.]py|py[.]typed)$"
  PATTERN __pycache__ EXCLUDE)

# Documents. Those of a component are in a folder named like its Debian package.
set(korvan_runtime_documents "lib${PROJECT_NAME}${PROJECT_VERSION_MAJOR}")
set(korvan_development_documents "lib${PROJECT_NAME}-dev")
set(korvan_program_documents kglob)
set(korvan_python_documents python3-kglob)
foreach(component IN ITEMS Runtime Development Program Python)
  string(TOLOWER "${component}" component_lower)
  install(
    FILES cmake/debian/copyright cmake/debian/changelog
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${korvan_${component_lower}_documents}"
    COMPONENT ${component})
endforeach()
install(
  FILES README.md CHANGELOG.md docs/patterns.md docs/object-stores.md
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${korvan_program_documents}"
  COMPONENT Program)
install(
  FILES docs/embedding.md
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${korvan_development_documents}"
  COMPONENT Development)
install(
  DIRECTORY examples
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${korvan_development_documents}"
  COMPONENT Development
  PATTERN fetch_content EXCLUDE)
