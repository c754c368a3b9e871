# What every target of our own code has in common.

# Hardening of the optimised builds. A level of fortifying that the compiler has by itself is replaced.
set(VX_HARDENED $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
set(VX_HARDENING_OPTIONS
  $<${VX_HARDENED}:-fstack-protector-strong>
  $<${VX_HARDENED}:-U_FORTIFY_SOURCE>
  $<${VX_HARDENED}:-D_FORTIFY_SOURCE=2>)

# vx_target(<target>): C++17 without extensions; warnings, which our presets make errors; hardening;
# source paths relative to the project, so that a build does not depend on where it was made; file
# sizes and times of 64 bits on every target, also for whoever uses its headers: a 32-bit build would
# otherwise end in January 2038.
#
# Two warnings are off. -Wsign-conversion: for C++ it is not part of -Wconversion of g++, but of clang.
# -Wsubobject-linkage: g++ takes the files that a unity build joins for headers, and warns of classes
# with members from an unnamed namespace.
function(vx_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_definitions(${target} PUBLIC _FILE_OFFSET_BITS=64)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_definitions(${target} PUBLIC _TIME_BITS=64)
  endif()
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wno-sign-conversion -Wshadow
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>
    ${VX_HARDENING_OPTIONS}
    # gdb in the build directory finds the sources by their whole paths.
    $<IF:$<CONFIG:Debug>,-fmacro-prefix-map,-ffile-prefix-map>=${vx-simulator_SOURCE_DIR}/=
    # The last map wins: objects that the cache shares between presets name one build directory.
    $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${vx-simulator_BINARY_DIR}=build>)
  target_link_options(${target} PRIVATE $<${VX_HARDENED}:-Wl,-z,relro,-z,now>)
endfunction()

# For code that runs once, such as the parsing of a command line, or only in tests: less optimisation
# for a shorter build. With full optimisation its template headers would take twice as long.
set(VX_BRIEF_OPTIONS "$<$<CONFIG:RelWithDebInfo>:-O1>" "$<$<CONFIG:RelWithDebInfo>:-g1>"
  "$<$<CONFIG:Debug>:-O0>")

# vx_brief_target(<target>): as vx_target, for a target that has only such code.
function(vx_brief_target target)
  vx_target(${target})
  target_compile_options(${target} PRIVATE ${VX_BRIEF_OPTIONS})
endfunction()
