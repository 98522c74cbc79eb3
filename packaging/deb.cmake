# Debian packages: cpack --config BUILD/CPackConfig.cmake (docs/packages.md).
#
# Three of them, because products differ in what they want: the service with its capture application and all that a device needs
# around them, the tool, the faces.

set(debian ${CMAKE_CURRENT_SOURCE_DIR}/debian)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME watchface-service)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each has its own, in the first line
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
# What is installed names its own prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL service wfctl faces)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The watchface-service maintainers <maintainers@corvane.com>")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The fonts that faces are drawn with are those that a watch is built and tested with.
file(STRINGS packages.txt fonts REGEX "^run +fonts-")
list(TRANSFORM fonts REPLACE "^run +([^ ]+).*" "\\1")
list(JOIN fonts ", " fonts)

set(CPACK_DEBIAN_SERVICE_PACKAGE_NAME watchface-service)
set(CPACK_DEBIAN_SERVICE_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_SERVICE_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_SERVICE_PACKAGE_DEPENDS
    "default-dbus-system-bus | dbus-system-bus, systemd | systemd-sysusers, systemd | systemd-tmpfiles, tzdata")
set(CPACK_DEBIAN_SERVICE_PACKAGE_RECOMMENDS "watchfaces-mirel, ${fonts}")
set(CPACK_DEBIAN_SERVICE_PACKAGE_SUGGESTS wfctl)
set(CPACK_DEBIAN_SERVICE_PACKAGE_CONTROL_EXTRA "${debian}/postinst;${debian}/prerm;${debian}/postrm")
set(CPACK_DEBIAN_SERVICE_DESCRIPTION "service that keeps the faces of a smart watch
It stores what peers install, makes each face's document ready to draw, has
previews drawn again when they are stale, keeps the current face, and tells
the phone-side manager, the editor, the home screen and the settings list what
they must know. Peers talk to it over D-Bus.

The capture application, which draws previews, comes with it.")

set(CPACK_DEBIAN_WFCTL_PACKAGE_NAME wfctl)
set(CPACK_DEBIAN_WFCTL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_WFCTL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_WFCTL_PACKAGE_DEPENDS "watchface-service (= ${PROJECT_VERSION}), dbus-daemon")
set(CPACK_DEBIAN_WFCTL_DESCRIPTION "command-line tool for watch faces
It talks to the watch of the system, or brings up private watches to try
things on. It speaks as any application of the watch, installs, edits, checks
and draws faces, and shows the watch's keys, preferences and settings.")

set(CPACK_DEBIAN_FACES_PACKAGE_NAME watchfaces-mirel)
set(CPACK_DEBIAN_FACES_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_FACES_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_FACES_PACKAGE_ENHANCES watchface-service)
set(CPACK_DEBIAN_FACES_DESCRIPTION "Mirel watch faces
The faces that a watch ships: analog and digital ones with styles, palettes
and complications, each with its document ready to draw and its preview.")

# Every package has its own copyright and changelog.
set(compressed ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
add_custom_command(
  OUTPUT ${compressed}
  COMMAND ${WATCH_GZIP} -9nc ${debian}/changelog > ${compressed}
  DEPENDS ${debian}/changelog
  VERBATIM)
add_custom_target(debian-changelog ALL DEPENDS ${compressed})
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES ${debian}/copyright ${compressed}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
          COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
install(FILES ${debian}/lintian-overrides RENAME watchface-service
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        COMPONENT service EXCLUDE_FROM_ALL)

include(CPack)
