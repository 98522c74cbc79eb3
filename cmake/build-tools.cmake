# Programs of this project that run while it is built or installed.

# watch_build_tool(VARIABLE TARGET): VARIABLE becomes what a command calls, and depends on, to run TARGET: the target, or
# its twin for this machine when the build is for another one.
function(watch_build_tool variable target)
  if(WATCH_NATIVE_TOOLS)
    set(${variable} ${WATCH_NATIVE_TOOLS}/${target} PARENT_SCOPE)
  else()
    set(${variable} ${target} PARENT_SCOPE)
    # What a build for another machine needs of one for this: cmake --install BUILD --component build-tools
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/watch-build-tools
            COMPONENT build-tools EXCLUDE_FROM_ALL)
  endif()
endfunction()
