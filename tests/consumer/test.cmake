# cmake -DROOT=folder -DWORK=folder -DOPTIONS=list -DRUNNER=command -DBESIDE=list -P test.cmake
#
# Configures the project beside this file with OPTIONS, builds it, and runs its host, by RUNNER,
# with the files BESIDE in the host's folder.

cmake_minimum_required(VERSION 3.25)

# run(what command...): fails with what the command said; else sets `output`.
function(run what)
  execute_process(COMMAND ${ARGN}
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "The consumer does not ${what} (${status}):\n${output}${errors}")
  endif()
  string(REPLACE "\r\n" "\n" output "${output}")
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}/product")
run(configure "${CMAKE_COMMAND}" --fresh -S "${CMAKE_CURRENT_LIST_DIR}" -B "${WORK}"
  -DTEV_ROOT=${ROOT} ${OPTIONS})
run(build "${CMAKE_COMMAND}" --build "${WORK}" --parallel 2)
if(BESIDE)
  file(COPY ${BESIDE} DESTINATION "${WORK}/product/bin")
endif()
file(GLOB host "${WORK}/product/bin/host" "${WORK}/product/bin/host.exe")
run(run ${RUNNER} "${host}")
set(expected "greeter.server is up\ngreeter.server is down\n")
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "The consumer's host printed:\n${output}\nnot:\n${expected}")
endif()
