# What a build may choose. Every option is also named in the recipes below packaging/.
option(WATCH_WERROR "Treat warnings as errors" OFF)
option(WATCH_TESTS "Build the tests" ON)
option(WATCH_BENCH "Build the benchmarks" ON)
option(WATCH_FUZZ "Build the fuzz targets (clang only)" OFF)
set(WATCH_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize= (address,undefined or thread)")
set(previews ON)
if(CMAKE_CROSSCOMPILING)
  set(previews OFF)  # the fonts of this machine are not the watch's; the service has them drawn when it first starts
endif()
option(WATCH_PREVIEWS "Draw the previews of the shipped faces" ${previews})
set(WATCH_NATIVE_TOOLS "" CACHE PATH "Programs that run while building, of a build for this machine (cmake/build-tools.cmake)")
set(WATCH_MEDIA_DIRS /srv/media CACHE STRING "What a device's programs may read beside the watch's files, with : between")

# Times and file sizes have 64 bits on processors of 32 bits too: the watch goes on after 2038.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_TIME_BITS=64 _FILE_OFFSET_BITS=64)
endif()

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
