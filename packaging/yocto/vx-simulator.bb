# Builds the program, without its tools, from the tree that holds this file: add this directory to
# BBFILES. Needs a layer with Qt 5 (cmake_qt5, qtbase) and a recipe for log4cxx 1.0 or newer.
SUMMARY = "Simulated measuring hardware for a core system"
LICENSE = "CLOSED"
PV = "1.2.1524"

DEPENDS = "qtbase log4cxx"

inherit externalsrc cmake_qt5 systemd

EXTERNALSRC = "${THISDIR}/../.."
EXTERNALSRC_BUILD = "${WORKDIR}/build"

EXTRA_OECMAKE = "\
    -DVX_DEVELOPMENT=OFF \
    -DVX_SYSTEMD_UNIT_DIR=${systemd_system_unitdir} \
    -DVX_UDEV_RULES_DIR=${nonarch_base_libdir}/udev/rules.d \
"

# Started by the driver's device, see the unit; so it is enabled, and idle where there is none.
SYSTEMD_SERVICE:${PN} = "vx-simulator.service"

FILES:${PN} += "/opt/vx ${sysconfdir}/vx ${datadir}/bash-completion ${nonarch_base_libdir}/udev"
