# `sdk`: the libraries that the frame is compiled and linked against, the reference ones or a site's.

add_library(tev_sdk INTERFACE)
add_library(Tev::Sdk ALIAS tev_sdk)
target_compile_features(tev_sdk INTERFACE cxx_std_17)
target_include_directories(tev_sdk INTERFACE ${TEV_SITE_SDK} ${PROJECT_SOURCE_DIR})
if(TEV_SITE_SDK)
  # Without a header of the site's, the compiler would read ours.
  foreach(header base/log base/path base/thread kpx/platform lpc/lpc os/export os/os xrt/lock
      xrt/runtime)
    if(NOT EXISTS ${TEV_SITE_SDK}/sdk/${header}.h)
      message(FATAL_ERROR "${TEV_SITE_SDK}/sdk/${header}.h is missing")
    endif()
  endforeach()
  foreach(library KpxBase KpxPlatform TevLpcFrame XrtRuntime)
    find_library(TEV_SITE_${library} ${library} PATHS ${TEV_SITE_SDK}/lib NO_DEFAULT_PATH REQUIRED)
    target_link_libraries(tev_sdk INTERFACE ${TEV_SITE_${library}})
  endforeach()
  if(NOT WIN32)
    find_library(TEV_SITE_XrtOs XrtOs PATHS ${TEV_SITE_SDK}/lib NO_DEFAULT_PATH REQUIRED)
    target_link_libraries(tev_sdk INTERFACE ${TEV_SITE_XrtOs})
  endif()
else()
  target_link_libraries(tev_sdk
    INTERFACE tev_kpx_base tev_kpx_platform tev_lpc_frame tev_xrt_runtime tev_xrt_os)
endif()
