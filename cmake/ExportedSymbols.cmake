# korvan_limit_exports(TARGET LIST): makes the shared library export exactly the symbols in the file LIST, one demangled name per line.
# Visibility attributes alone would also export template instantiations of the standard library.
function(korvan_limit_exports target list)
  file(STRINGS "${list}" symbols REGEX "^[^#]")
  list(JOIN symbols "\";\n    \"" symbols)
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
  file(CONFIGURE OUTPUT "${script}" CONTENT "{\n  global:\n  extern \"C++\" {\n    \"@symbols@\";\n  };\n  local: *;\n};\n" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${script}")
endfunction()
