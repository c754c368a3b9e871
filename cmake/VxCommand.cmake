# What a test executes to run a program that was built here.
#
# vx_command(<variable> <target>): the program itself, or where it is built for another processor a
# script beside it that starts it in the emulator. The tools of the desk are never emulated (and no
# emulator mounts and serves a file system): they are taken from VX_NATIVE_BUILD, a build directory
# of the same sources for the machine that runs the tests.
function(vx_command variable target)
  if(NOT CMAKE_CROSSCOMPILING)
    set(${variable} $<TARGET_FILE:${target}> PARENT_SCOPE)
  elseif(target STREQUAL vx-sandbox)
    set(${variable} ${VX_NATIVE_BUILD}/tools/sandbox/vx-sandbox PARENT_SCOPE)
  elseif(target STREQUAL vx-case)
    set(${variable} ${VX_NATIVE_BUILD}/tools/case/vx-case PARENT_SCOPE)
  elseif(target STREQUAL vx-campaign)
    set(${variable} ${VX_NATIVE_BUILD}/tools/campaign/vx-campaign PARENT_SCOPE)
  else()
    set(launcher $<TARGET_FILE:${target}>-emulated)
    set(${variable} ${launcher} PARENT_SCOPE)
    get_property(isMade GLOBAL PROPERTY vx-${target}-launcher SET)
    if(isMade)
      return()
    endif()
    set_property(GLOBAL PROPERTY vx-${target}-launcher ${launcher})
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    file(GENERATE OUTPUT ${launcher}
      CONTENT "#!/bin/sh\nexec ${emulator} $<TARGET_FILE:${target}> \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
        WORLD_READ WORLD_EXECUTE)
  endif()
endfunction()
