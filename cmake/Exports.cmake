# tev_export_only(target list): the shared library `target` exports the symbols that the file `list`
# names, one a line, and nothing else.
function(tev_export_only target list)
  cmake_path(ABSOLUTE_PATH list OUTPUT_VARIABLE list)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} symbols REGEX "^[A-Za-z_]")
  list(JOIN symbols ";\n    " symbols)
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${script} CONTENT "{\n  global:\n    @symbols@;\n  local: *;\n};\n" @ONLY)
  target_link_options(${target} PRIVATE -Wl,--version-script=${script} -Wl,--no-undefined)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
