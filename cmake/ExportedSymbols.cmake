# korvan_limit_exports(TARGET LIST): a shared library that exports exactly what the file LIST names by demangled name, one a line. Visibility
# attributes alone let the standard library's template instantiations through.
function(korvan_limit_exports target list)
  file(STRINGS "${list}" symbols REGEX "^[^#]")
  list(JOIN symbols "\";\n    \"" symbols)
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
  file(CONFIGURE OUTPUT "${script}" CONTENT "{\n  global:\n  extern \"C++\" {\n    \"@symbols@\";\n  };\n  local: *;\n};\n" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${script}")
endfunction()
