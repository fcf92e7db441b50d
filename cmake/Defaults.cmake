# `defaults`: the compile options of all targets. Warnings are set only here.

add_library(tev_defaults INTERFACE)
target_compile_features(tev_defaults INTERFACE cxx_std_17)
target_compile_options(tev_defaults INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-qual -Wformat=2 -Wundef)
target_include_directories(tev_defaults INTERFACE ${PROJECT_SOURCE_DIR})
