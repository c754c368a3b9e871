# What "cmake --install" puts where, in two components: the program, and the tools around it.
include(GNUInstallDirs)

# The program looks in two fixed directories. Somewhere else these are of use only below a DESTDIR,
# or where the program has been told to look there.
set(VX_DEFAULTS_DIR /opt/vx/share/vx-core/defaults CACHE STRING
  "Where the default configuration goes, second of the program's search directories")
set(VX_ETC_DIR /etc/vx CACHE STRING
  "Where a configuration goes that is preferred to the default one, and the control FIFO is made")
set(VX_SYSTEMD_UNIT_DIR lib/systemd/system CACHE STRING "Where the service's unit goes")
set(VX_UDEV_RULES_DIR lib/udev/rules.d CACHE STRING "Where the rule for the device node goes")

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(generated ${PROJECT_BINARY_DIR}/install)

# vx_install_manual(<component> <page>...): compressed, as distributions want it.
function(vx_install_manual component)
  find_program(VX_GZIP gzip REQUIRED)
  foreach(page IN LISTS ARGN)
    get_filename_component(section ${page} LAST_EXT)
    string(SUBSTRING ${section} 1 -1 section)
    set(source ${PROJECT_SOURCE_DIR}/man/${page})
    add_custom_command(OUTPUT ${generated}/${page}.gz
      COMMAND ${VX_GZIP} -9nc ${source} > ${generated}/${page}.gz
      DEPENDS ${source} VERBATIM)
    list(APPEND pages ${generated}/${page}.gz)
    install(FILES ${generated}/${page}.gz
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
  endforeach()
  add_custom_target(${component}-manual ALL DEPENDS ${pages})
endfunction()

# --- the program ---------------------------------------------------------------------------------

install(TARGETS vx-simulator vx-control RUNTIME COMPONENT program)
vx_install_manual(program vx-control.1 vx-simulator.1 vx-simulator.conf.5 vx-value-file.5)

# The two files below name the directory, which may be relative to the prefix.
cmake_path(ABSOLUTE_PATH VX_DEFAULTS_DIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
  OUTPUT_VARIABLE VX_DEFAULTS_FULL_DIR)
configure_file(${packaging}/defaults/vx-simulator.conf.in ${generated}/vx-simulator.conf @ONLY)
install(FILES
  ${generated}/vx-simulator.conf
  ${packaging}/defaults/steady-50hz.csv
  ${packaging}/defaults/sag-50hz.csv
  ${packaging}/defaults/vx-simulator.trackconfig.xml
  ${packaging}/defaults/vx-simulator.service.trackconfig.xml
  DESTINATION ${VX_DEFAULTS_DIR} COMPONENT program)
install(DIRECTORY DESTINATION ${VX_ETC_DIR} COMPONENT program)

configure_file(${packaging}/systemd/vx-simulator.service.in ${generated}/vx-simulator.service @ONLY)
install(FILES ${generated}/vx-simulator.service
  DESTINATION ${VX_SYSTEMD_UNIT_DIR} COMPONENT program)
install(FILES ${packaging}/systemd/90-vx-simulator.rules
  DESTINATION ${VX_UDEV_RULES_DIR} COMPONENT program)

set(completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/vx-simulator completions/vx-control DESTINATION ${completions} COMPONENT program)

# The pages link to each other, so all of them are installed. Their pictures are not: 256 kB are of no
# use on a device.
file(GLOB pages RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS doc/*.md)
foreach(page README.md CONTRIBUTING.md SECURITY.md ${pages})
  file(READ ${page} text)
  string(REGEX REPLACE "!\\[[^]]*\\]\\([^)]*\\)\n\n?" "" text "${text}")
  file(WRITE ${generated}/pages/${page} "${text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
endforeach()
install(DIRECTORY ${generated}/pages/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vx-simulator
  COMPONENT program)

# --- the tools -----------------------------------------------------------------------------------

if(NOT TARGET vx-sandbox)
  return()
endif()

install(TARGETS vx-campaign vx-case vx-sandbox RUNTIME COMPONENT tools)
vx_install_manual(tools vx-campaign.1 vx-case.1 vx-sandbox.1)
install(FILES completions/vx-campaign completions/vx-case completions/vx-sandbox
  DESTINATION ${completions} COMPONENT tools)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vx-simulator-tools
  USE_SOURCE_PERMISSIONS COMPONENT tools)

include(${CMAKE_CURRENT_LIST_DIR}/Package.cmake)
