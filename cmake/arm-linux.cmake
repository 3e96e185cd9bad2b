# Cross build for the appliance's 32-bit ARM core with any arm-*-linux-*
# compiler: Debian's (arm-linux-gnueabihf-, arm-linux-gnueabi-) or a
# vendor SDK's, whose libraries live in its sysroot.
#   -DOLEDD_CROSS_PREFIX=arm-hisiv500-linux-  the compiler's prefix, up to gcc/g++
#   -DOLEDD_SYSROOT=DIR                       the SDK's sysroot (none: Debian's multiarch folders)
#   -DOLEDD_CROSS_FLAGS="-mcpu=arm926ej-s -mfloat-abi=soft"  for a compiler whose defaults are not the box's
set(OLEDD_CROSS_PREFIX arm-linux-gnueabihf- CACHE STRING "prefix of the cross compiler, up to gcc/g++")
set(OLEDD_SYSROOT "" CACHE PATH "the SDK's sysroot; empty for Debian's multiarch cross compilers")
set(OLEDD_CROSS_FLAGS "" CACHE STRING "compiler flags for the box's core and float ABI, when not the compiler's defaults")
# try_compile reads this file again without the cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES OLEDD_CROSS_PREFIX OLEDD_SYSROOT OLEDD_CROSS_FLAGS)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER ${OLEDD_CROSS_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${OLEDD_CROSS_PREFIX}g++)

string(REGEX REPLACE "-$" "" _oledd_triplet "${OLEDD_CROSS_PREFIX}")
get_filename_component(_oledd_triplet "${_oledd_triplet}" NAME)
if(OLEDD_SYSROOT)
  set(CMAKE_SYSROOT ${OLEDD_SYSROOT})
  set(CMAKE_FIND_ROOT_PATH ${OLEDD_SYSROOT})
  # .pc files installed into the sysroot name their folders as on the box.
  set(ENV{PKG_CONFIG_SYSROOT_DIR} ${OLEDD_SYSROOT})
  set(ENV{PKG_CONFIG_LIBDIR} "${OLEDD_SYSROOT}/usr/lib/pkgconfig:${OLEDD_SYSROOT}/usr/lib/${_oledd_triplet}/pkgconfig:${OLEDD_SYSROOT}/usr/share/pkgconfig")
else()
  # Debian's multiarch packages (libcjson-dev:armhf, libcjson-dev:armel).
  set(CMAKE_FIND_ROOT_PATH /usr/${_oledd_triplet})
  set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${_oledd_triplet}/pkgconfig:/usr/share/pkgconfig)
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Unit tests run under user-mode emulation with the libraries of the
# sysroot, or of Debian's multiarch packages (libc6:armhf comes with
# libcjson-dev:armhf).
if(OLEDD_SYSROOT)
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${OLEDD_SYSROOT})
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /)
endif()

# 64-bit file offsets: directory reads and large files behave the same on a
# 32-bit box as on the 64-bit host the tests run on.
set(CMAKE_C_FLAGS_INIT "-D_FILE_OFFSET_BITS=64 ${OLEDD_CROSS_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64 ${OLEDD_CROSS_FLAGS}")
