# watch_application(TARGET PROGRAM): links TARGET with the id that the table of applications gives PROGRAM. The
# id is part of the executable, so no caller can make a program speak as another application.
function(watch_application target program)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}-application-id.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT
"#include \"application-table.h\"

extern \"C\" {
extern const char* const kEmbeddedApplicationId;
const char* const kEmbeddedApplicationId = Platform::IdOfProgram(\"${program}\");
}
" @ONLY)
  target_sources(${target} PRIVATE ${source})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/platform/core)
endfunction()

# watch_late_modules(TARGET): the modules that the platform opens late in TARGET log through it, and call nothing else
# of it.
function(watch_late_modules target)
  target_link_options(${target} PRIVATE -Wl,--export-dynamic-symbol=__dlog_print)
endfunction()

# watch_binds_little(TARGET): TARGET carries the C++ library in itself. Binding the shared one is most of the
# instructions of a start (bench/run), and nothing of it crosses to the modules.
function(watch_binds_little target)
  if(NOT WATCH_SANITIZE)
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
