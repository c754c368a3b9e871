# Builds the program, without the desk's tools, from the tree that holds this file: add this directory
# to BBFILES.
#
# Written for Yocto 4.0 (kirkstone) with the layer meta-qt5 (cmake_qt5, qtbase). Needs besides, as a
# recipe of your own if your layers have none, log4cxx 0.11 or newer with its apr-util and expat.
#
# Not tried: it was never built with bitbake. What it runs was tried with cmake and a DESTDIR.
SUMMARY = "Simulated measuring hardware for a core system"
LICENSE = "CLOSED"
PV = "${@vx_version(d)}"

DEPENDS = "qtbase log4cxx"

inherit externalsrc cmake_qt5 systemd

EXTERNALSRC = "${THISDIR}/../.."
EXTERNALSRC_BUILD = "${WORKDIR}/build"

EXTRA_OECMAKE = "\
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVX_DEVELOPMENT=OFF \
    -DVX_SYSTEMD_UNIT_DIR=${systemd_system_unitdir} \
    -DVX_UDEV_RULES_DIR=${nonarch_base_libdir}/udev/rules.d \
"

# Started by the driver's device, see the unit; so it is enabled, and idle where there is none.
SYSTEMD_SERVICE:${PN} = "vx-simulator.service"

FILES:${PN} += "/opt/vx ${sysconfdir}/vx ${datadir}/bash-completion ${nonarch_base_libdir}/udev"

# The version stands in the top CMakeLists.txt.
def vx_version(d):
    import os, re
    path = os.path.join(d.getVar("THISDIR"), "..", "..", "CMakeLists.txt")
    with open(path) as lists:
        return re.search(r"project\(vx-simulator VERSION ([0-9.]+)", lists.read()).group(1)
