# spdlog and fmt, header-only: the libraries in the installed packages are not for Windows.
if(NOT TARGET spdlog::spdlog)
  add_library(spdlog::spdlog INTERFACE IMPORTED)
  target_compile_definitions(spdlog::spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
  target_include_directories(spdlog::spdlog INTERFACE ${CMAKE_CURRENT_LIST_DIR}/../../../include)
endif()
