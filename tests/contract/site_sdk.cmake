# Builds the frame and the contract suite as a site does, against copies of the SDK's headers and of the
# reference libraries, runs the suite there, and shows that no header of ours stood in for a site's.
#
# Defined by the caller: SOURCE, FOLDER (of the test's own), LIBRARIES, MAKE_PROGRAM (Ninja) and
# COMPILER. Without optimisation, which is quicker to build.

cmake_minimum_required(VERSION 3.25)

set(site ${FOLDER}/site)
set(build ${FOLDER}/build)

set(folders base kpx lpc os xrt)
list(TRANSFORM folders PREPEND ${SOURCE}/sdk/)
file(REMOVE_RECURSE ${site})
file(COPY ${folders} DESTINATION ${site}/sdk)
file(COPY ${LIBRARIES} DESTINATION ${site}/lib)

set(configure ${CMAKE_COMMAND} -S ${SOURCE} -B ${build} -G Ninja -DTEV_SITE_SDK=${site}
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_BUILD_TYPE=)

# A site's SDK that lacks a header is refused.
file(RENAME ${site}/sdk/lpc/lpc.h ${site}/lpc.h)
execute_process(COMMAND ${configure} RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
file(RENAME ${site}/lpc.h ${site}/sdk/lpc/lpc.h)
string(REGEX REPLACE "[ \n]+" " " errors "${errors}")  # CMake breaks lines by the path's length
if(result EQUAL 0 OR NOT errors MATCHES "sdk/lpc/lpc.h is missing")
  message(FATAL_ERROR "an SDK without lpc.h was not refused for that reason: ${errors}")
endif()

# In another project it adds the frame alone.
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE}/tests/consumer -B ${FOLDER}/consumer -G Ninja
  -DTEV_ROOT=${SOURCE} -DTEV_SITE_SDK=${site} -DCMAKE_CXX_COMPILER=${COMPILER}
  COMMAND_ERROR_IS_FATAL ANY)

execute_process(COMMAND ${configure} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} --parallel 2 COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_CTEST_COMMAND} --test-dir ${build} --parallel 2 --output-on-failure
  --no-tests=error COMMAND_ERROR_IS_FATAL ANY)

# What the compiler has read, by Ninja's record of its dependency lists.
execute_process(COMMAND ${MAKE_PROGRAM} -C ${build} -t deps OUTPUT_VARIABLE dependencies
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^ \n]+/sdk/[^\n]+" used "${dependencies}")
list(REMOVE_DUPLICATES used)
set(headers)
foreach(header IN LISTS used)
  cmake_path(ABSOLUTE_PATH header BASE_DIRECTORY ${build} NORMALIZE)
  list(APPEND headers ${header})
endforeach()
list(REMOVE_DUPLICATES headers)
list(SORT headers)
file(GLOB_RECURSE expected ${site}/sdk/*.h)
list(APPEND expected ${SOURCE}/sdk/frame/PluginFrame.h)  # the frame's own entries
list(SORT expected)
if(NOT headers STREQUAL expected)
  list(JOIN headers "\n  " headers)
  list(JOIN expected "\n  " expected)
  message(FATAL_ERROR "headers that were read:\n  ${headers}\nheaders of a site's build:\n  ${expected}")
endif()
