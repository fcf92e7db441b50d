# tev_add_library(target Tev::Name file_name sources...): a shared library of the product, with the
# folder that its headers are included from. Others link it as Tev::Name.
function(tev_add_library target alias file_name)
  add_library(${target} SHARED ${ARGN})
  add_library(${alias} ALIAS ${target})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${file_name})
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
  endif()
  target_compile_features(${target} INTERFACE cxx_std_17)
  target_include_directories(${target} INTERFACE ${TEV_SITE_SDK} ${PROJECT_SOURCE_DIR})
endfunction()
