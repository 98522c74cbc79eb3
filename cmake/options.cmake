# What a build may choose. Every option is also named in the recipes below packaging/.
option(WATCH_WERROR "Treat warnings as errors" OFF)
option(WATCH_TESTS "Build the tests" ON)
option(WATCH_BENCH "Build the benchmarks" ON)
option(WATCH_FUZZ "Build the fuzz targets (clang only)" OFF)
set(WATCH_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize= (address,undefined or thread)")
set(WATCH_NATIVE_TOOLS "" CACHE PATH "Where a build for another machine finds the programs that run while it is built")
set(WATCH_UNIT_DIR lib/systemd/system CACHE STRING "Where system units go, below the prefix")
set(WATCH_MEDIA_DIRS /srv/media CACHE STRING "What a device's programs may read beside the watch's files, with : between")

# Warnings, hardening and sanitizers that every target of this project takes.
add_library(watch-options INTERFACE)
target_compile_options(watch-options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # GCC 12 gives false alarms where strings are joined
  $<$<BOOL:${WATCH_WERROR}>:-Werror>
  -fvisibility=hidden $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>)
target_link_options(watch-options INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,--as-needed)
if(WATCH_SANITIZE)
  target_compile_options(watch-options INTERFACE
    -fsanitize=${WATCH_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(watch-options INTERFACE -fsanitize=${WATCH_SANITIZE})
  target_compile_definitions(watch-options INTERFACE WATCH_SANITIZED)
endif()
