include(${CMAKE_CURRENT_LIST_DIR}/BoostTargets.cmake)
set(Boost_thread_FOUND TRUE)
set(Boost_filesystem_FOUND TRUE)
