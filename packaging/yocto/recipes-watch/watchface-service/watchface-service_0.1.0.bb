SUMMARY = "Service that keeps the faces of a smart watch"
LICENSE = "Apache-2.0"
LIC_FILES_CHKSUM = "file://LICENSE;md5=3b83ef96387f14655fc854ddc3c6bd57"

# The sources are the checkout that this recipe lies in. To build a release instead, unset EXTERNALSRC and set SRC_URI.
inherit externalsrc
EXTERNALSRC ?= "${@os.path.realpath(d.getVar('THISDIR') + '/../../../..')}"

inherit cmake cmake-qemu pkgconfig systemd features_check
REQUIRED_DISTRO_FEATURES = "systemd usrmerge"

DEPENDS = "cairo cli11 expat fontconfig icu jpeg libpng nettle nlohmann-json pango pugixml sqlite3 systemd"

PACKAGECONFIG ??= ""
PACKAGECONFIG[tests] = "-DWATCH_TESTS=ON,-DWATCH_TESTS=OFF,googletest"
PACKAGECONFIG[bench] = "-DWATCH_BENCH=ON,-DWATCH_BENCH=OFF"
PACKAGECONFIG[fuzz] = "-DWATCH_FUZZ=ON,-DWATCH_FUZZ=OFF"
PACKAGECONFIG[werror] = "-DWATCH_WERROR=ON,-DWATCH_WERROR=OFF"
# Where the machine that builds has the watch's fonts.
PACKAGECONFIG[previews] = "-DWATCH_PREVIEWS=ON,-DWATCH_PREVIEWS=OFF"

# Sanitizers, as for -fsanitize=.
WATCH_SANITIZE ?= ""
# What the programs may read beside the watch's files, with ":" between.
WATCH_MEDIA_DIRS ?= "/srv/media"
# Programs that run while building are run by QEMU. Where the machine has none (MACHINE_FEATURES without qemu-usermode), this
# names the folder where a build for the building machine left them.
WATCH_NATIVE_TOOLS ?= ""

EXTRA_OECMAKE = " \
    -DWATCH_SANITIZE=${WATCH_SANITIZE} \
    -DWATCH_MEDIA_DIRS=${WATCH_MEDIA_DIRS} \
    -DWATCH_NATIVE_TOOLS=${WATCH_NATIVE_TOOLS} \
"

# The service and its capture application; the tool; the faces.
PACKAGE_BEFORE_PN = "wfctl watchfaces-mirel"
FILES:wfctl = "${bindir}/wfctl"
FILES:watchfaces-mirel = "${datadir}/watch/com.corvane.watchface"
FILES:${PN} += " \
    ${datadir}/dbus-1 ${datadir}/watch \
    ${nonarch_libdir}/sysusers.d ${nonarch_libdir}/tmpfiles.d \
    ${systemd_unitdir} ${systemd_user_unitdir} ${libdir}/watch \
"
RDEPENDS:${PN} = "dbus tzdata"
RRECOMMENDS:${PN} = "watchfaces-mirel"
RDEPENDS:wfctl = "${PN} dbus"

# The users are made from sysusers.d, when the image is put together or when the system first starts.
SYSTEMD_SERVICE:${PN} = "watchface-service.service"
