# Programs of this project that run while it is built or installed.
#
# A build for another machine either runs them in an emulator (CMAKE_CROSSCOMPILING_EMULATOR), or takes them from a build
# for this machine (WATCH_NATIVE_TOOLS), which gives them with
#
#   cmake --install BUILD --component build-tools --prefix DIR     # then they are in DIR/libexec/watch-build-tools

# watch_build_tool(VARIABLE TARGET): VARIABLE becomes what a command calls, and depends on, to run TARGET.
function(watch_build_tool variable target)
  if(WATCH_NATIVE_TOOLS)
    set(${variable} ${WATCH_NATIVE_TOOLS}/${target} PARENT_SCOPE)
  else()
    set(${variable} ${target} PARENT_SCOPE)
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/watch-build-tools
            COMPONENT build-tools EXCLUDE_FROM_ALL)
  endif()
endfunction()
