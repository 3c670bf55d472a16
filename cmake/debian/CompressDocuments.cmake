# Run by cpack before it makes the packages: compresses the manual page and the changelogs, as Debian wants them. Without
# a name and a time inside (-n), the same document gives the same file.
set(packages "${CPACK_TEMPORARY_DIRECTORY}")
file(GLOB_RECURSE documents "${packages}/changelog" "${packages}/CHANGELOG.md" "${packages}/kglob.1")
foreach(document IN LISTS documents)
  execute_process(COMMAND gzip -9nf "${document}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
