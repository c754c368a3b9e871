# What "cpack" makes: two Debian packages, and two with their debug symbols, for the machine that it
# runs on, in build/<preset>. Their paths are those of a distribution, so configure with
# CMAKE_INSTALL_PREFIX=/usr; the preset "package" does.

# dpkg-shlibdeps looks for the libraries among those that are installed.
if(CMAKE_CROSSCOMPILING)
  return()
endif()

set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(components program tools)
set(program_name vx-simulator)
set(tools_name vx-simulator-tools)

set(changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog})
file(STRINGS ${changelog} headings REGEX "^## ")
list(GET headings 0 newest)
if(NOT newest MATCHES "^## ([0-9.]+)-([0-9]+) " OR NOT CMAKE_MATCH_1 VERSION_EQUAL PROJECT_VERSION)
  message(FATAL_ERROR "${changelog}: '${newest}': expected version ${PROJECT_VERSION} and a revision")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})

find_program(VX_GZIP gzip REQUIRED)
set(script ${PROJECT_SOURCE_DIR}/scripts/debian-changelog.sh)
add_custom_command(OUTPUT ${generated}/changelog.Debian.gz
  COMMAND ${script} > ${generated}/changelog.Debian
  COMMAND ${VX_GZIP} -9nf ${generated}/changelog.Debian
  DEPENDS ${script} ${changelog} VERBATIM)
add_custom_target(package-changelog ALL DEPENDS ${generated}/changelog.Debian.gz)
foreach(component IN LISTS components)
  set(name ${${component}_name})
  install(FILES ${generated}/changelog.Debian.gz ${debian}/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endforeach()
install(FILES ${debian}/vx-simulator.lintian-overrides
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME vx-simulator COMPONENT program)

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_PACKAGE_CONTACT "vx-simulator maintainers <maintainers@vx-simulator.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
# cpack itself takes the symbols out of the programs, into packages of their own.
set(CPACK_STRIP_FILES OFF)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DebugSymbolPackages.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME ${program_name})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_CONTROL_EXTRA
  ${debian}/postinst ${debian}/prerm ${debian}/postrm)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS ${tools_name})
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "simulated measuring hardware for a core system
Reads sample sets from text files, stamps them on a simulated clock and writes
them, paced against the wall clock, into a simulated ADC driver. Which of them
are played is chosen by one-line commands while it runs.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools_name})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION misc)
# vx-case plot and vx-campaign draw with gnuplot, and its PNG pictures need a font.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "${program_name}, gnuplot-nox, fonts-dejavu-core")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "simulated driver and case tools for vx-simulator
vx-sandbox runs a program with a simulated ADC driver, without any change on
the host, and reports what arrived. vx-case makes, imports and checks what is
played, and explains what was recorded. vx-campaign plays the cases of a plan,
judges what arrives and reports.")

include(CPack)
