# 64-bit ARM Linux, cross-built with Debian's g++-aarch64-linux-gnu; the
# tests run under qemu-user's qemu-aarch64, with the target's C library from
# /usr/aarch64-linux-gnu.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
find_program(ORNEX_QEMU_AARCH64 qemu-aarch64)
if(ORNEX_QEMU_AARCH64)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ORNEX_QEMU_AARCH64} -L /usr/aarch64-linux-gnu)
endif()
