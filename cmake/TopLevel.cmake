# What a build of this project alone is like. A project that adds this one decides all of it itself.

option(TEV_BENCH "Build the benchmarks" OFF)
option(TEV_FUZZ "Build the fuzz targets, which needs Clang" OFF)

set(CMAKE_CXX_EXTENSIONS OFF)

# Programs and libraries lie side by side and find each other there, wherever the folder is moved.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH $ORIGIN)
set(CMAKE_INSTALL_RPATH $ORIGIN)

find_program(TEV_CCACHE ccache)
if(TEV_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TEV_CCACHE})
endif()

if(WIN32)
  include(cmake/windows/Runtime.cmake)
  # Tests are listed when they are run: the build needs no Wine.
  set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
endif()

set(DART_TESTING_TIMEOUT 300)  # seconds, of a test that sets no limit of its own
include(CTest)  # the option BUILD_TESTING
