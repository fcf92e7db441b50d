# Copies the libraries that all Windows programs need, the compiler's and libxml2, to the programs'
# folder, and lists them in TEV_WINDOWS_RUNTIME.
set(TEV_WINDOWS_RUNTIME ${TEV_WINDOWS_PREFIX}/bin/libxml2.dll)
foreach(library libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}.dll
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT IS_ABSOLUTE ${file})
    message(FATAL_ERROR "the compiler has no ${library}.dll")
  endif()
  cmake_path(NORMAL_PATH file)
  list(APPEND TEV_WINDOWS_RUNTIME ${file})
endforeach()
file(COPY ${TEV_WINDOWS_RUNTIME} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
