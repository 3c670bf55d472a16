# Shared libraries export exactly the symbols in a list; visibility attributes alone would also export template
# instantiations of the standard library. scripts/check-exports compares a built library with its list.

# Reads the symbols of the file LIST into VARIABLE, for the version script SCRIPT of TARGET.
macro(korvan_read_exports variable target list)
  file(STRINGS "${list}" ${variable} REGEX "^[^#]")
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${script}")
endmacro()

# korvan_limit_exports(TARGET LIST): for C++, one demangled name per line.
function(korvan_limit_exports target list)
  korvan_read_exports(symbols ${target} "${list}")
  list(JOIN symbols "\";\n    \"" symbols)
  file(CONFIGURE OUTPUT "${script}" CONTENT "{\n  global:\n  extern \"C++\" {\n    \"@symbols@\";\n  };\n  local: *;\n};\n" @ONLY)
endfunction()

# korvan_limit_exports_to_versions(TARGET LIST): for C, one NAME@@VERSION per line. Versions depend on those before
# them.
function(korvan_limit_exports_to_versions target list)
  korvan_read_exports(symbols ${target} "${list}")
  list(TRANSFORM symbols REPLACE "^.*@@" "" OUTPUT_VARIABLE versions)
  list(REMOVE_DUPLICATES versions)
  set(text "")
  set(previous "")
  set(locals "  local: *;\n")
  foreach(version IN LISTS versions)
    set(names ${symbols})
    list(FILTER names INCLUDE REGEX "@@${version}$")
    list(TRANSFORM names REPLACE "@@.*$" "")
    list(JOIN names "; " names)
    string(APPEND text "${version} {\n  global: ${names};\n${locals}}${previous};\n")
    set(previous " ${version}")
    set(locals "")
  endforeach()
  file(CONFIGURE OUTPUT "${script}" CONTENT "@text@" @ONLY)
endfunction()
