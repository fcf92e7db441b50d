# fmt, header-only: the library in the installed package is not for Windows.
if(NOT TARGET fmt::fmt-header-only)
  add_library(fmt::fmt-header-only INTERFACE IMPORTED)
  target_compile_definitions(fmt::fmt-header-only INTERFACE FMT_HEADER_ONLY)
  target_include_directories(fmt::fmt-header-only INTERFACE
    ${CMAKE_CURRENT_LIST_DIR}/../../../include)
endif()
