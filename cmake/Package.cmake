# What "cpack" makes: two Debian packages for the machine that it runs on, in build/<preset>. Their
# paths are those of a distribution, so configure with CMAKE_INSTALL_PREFIX=/usr; the preset
# "package" does.

# dpkg-shlibdeps looks for the libraries among those that are installed.
if(CMAKE_CROSSCOMPILING)
  return()
endif()

set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(components program tools)
set(program_name vx-simulator)
set(tools_name vx-simulator-tools)

find_program(VX_GZIP gzip REQUIRED)
add_custom_command(OUTPUT ${generated}/changelog.gz
  COMMAND ${VX_GZIP} -9nc ${debian}/changelog > ${generated}/changelog.gz
  DEPENDS ${debian}/changelog VERBATIM)
add_custom_target(package-changelog ALL DEPENDS ${generated}/changelog.gz)
foreach(component IN LISTS components)
  set(name ${${component}_name})
  install(FILES ${generated}/changelog.gz ${debian}/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endforeach()
install(FILES ${debian}/vx-simulator.lintian-overrides
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME vx-simulator COMPONENT program)

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_PACKAGE_CONTACT "vx-simulator maintainers <maintainers@vx-simulator.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME ${program_name})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS ${tools_name})
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "simulated measuring hardware for a core system
Reads sample sets from text files, stamps them on a simulated clock and writes
them, paced against the wall clock, into a simulated ADC driver. Which of them
are played is chosen by one-line commands while it runs.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools_name})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS ${program_name})
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "stand-in driver and case maker for vx-simulator
vx-sandbox runs a program with a stand-in for the simulated ADC driver,
without any change on the host, and tells what arrived. vx-case makes what is
played.")

include(CPack)
