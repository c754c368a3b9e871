# Run by cpack after it has made the packages. In the packages of debug symbols it writes the checksums
# with paths of the build directory, and leaves out the documents: this corrects both. The documents
# are those of the package that the symbols are for.
cmake_minimum_required(VERSION 3.22)

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "\\.ddeb$")
    continue()
  endif()
  set(root ${CPACK_TEMPORARY_DIRECTORY}/debug-symbols)
  file(REMOVE_RECURSE ${root})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${root} COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE files RELATIVE ${root} ${root}/usr/*)
  list(SORT files)
  set(sums "")
  foreach(file IN LISTS files)
    file(MD5 ${root}/${file} sum)
    string(APPEND sums "${sum}  ${file}\n")
  endforeach()
  file(WRITE ${root}/DEBIAN/md5sums "${sums}")
  cmake_path(GET package FILENAME name)
  string(REGEX REPLACE "-dbgsym_.*" "" name ${name})
  file(MAKE_DIRECTORY ${root}/usr/share/doc)
  file(CREATE_LINK ${name} ${root}/usr/share/doc/${name}-dbgsym SYMBOLIC)
  execute_process(COMMAND dpkg-deb --root-owner-group -Zgzip --build ${root} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${root})
endforeach()
