# 32-bit ARM Linux with hard float, against the system root that scripts/make-sysroot.sh makes.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# No notes about a calling convention that changed with a compiler nobody links against any more.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

if(NOT DEFINED VX_SYSROOT)
  set(VX_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-armhf)
endif()
get_filename_component(VX_SYSROOT ${VX_SYSROOT} ABSOLUTE)
if(NOT EXISTS ${VX_SYSROOT}/usr/include)
  message(FATAL_ERROR "No system root in ${VX_SYSROOT}; make it with scripts/make-sysroot.sh")
endif()
# The compiler tests of CMake read this file again, in a project of their own.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VX_SYSROOT)

set(CMAKE_SYSROOT ${VX_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_LIBDIR}
  ${VX_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${VX_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${VX_SYSROOT})

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${VX_SYSROOT})
