# watch_application(TARGET ID): links TARGET with the id that it has on the bus. The id is part
# of the executable, so no caller can make a program speak as another application.
function(watch_application target id)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}-application-id.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT
"extern \"C\" {
extern const char kEmbeddedApplicationId[];
const char kEmbeddedApplicationId[] = \"${id}\";
}
" @ONLY)
  target_sources(${target} PRIVATE ${source})
endfunction()

# watch_late_modules(TARGET FOLDER): TARGET, installed in FOLDER below the prefix, opens the platform's modules
# late, and they call back into it.
function(watch_late_modules target folder)
  file(RELATIVE_PATH modules /${folder} /${CMAKE_INSTALL_LIBDIR}/watch)
  set_target_properties(${target} PROPERTIES
    ENABLE_EXPORTS ON
    BUILD_RPATH ${WATCH_STAGE_MODULES}
    INSTALL_RPATH $ORIGIN/${modules})
endfunction()
