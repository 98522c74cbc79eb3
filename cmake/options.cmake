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
