# spdlog and the fmt beneath it as headers alone: the installed packages' libraries are not Windows'.
if(NOT TARGET spdlog::spdlog)
  add_library(spdlog::spdlog INTERFACE IMPORTED)
  target_compile_definitions(spdlog::spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
  target_include_directories(spdlog::spdlog INTERFACE ${CMAKE_CURRENT_LIST_DIR}/../../../include)
endif()
