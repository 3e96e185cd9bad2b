# Cross build for the appliance's 32-bit ARM core (Debian's armhf toolchain).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# armhf libraries from Debian's multiarch packages (libcjson-dev:armhf).
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabihf/pkgconfig:/usr/share/pkgconfig)

# Unit tests run under user-mode emulation with the armhf libraries of
# Debian's multiarch packages (libc6:armhf comes with libcjson-dev:armhf).
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /)

# 64-bit file offsets: directory reads and large files behave the same on a
# 32-bit box as on the 64-bit host the tests run on.
set(CMAKE_C_FLAGS_INIT "-D_FILE_OFFSET_BITS=64")
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64")
