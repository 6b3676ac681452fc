# 32-bit x86 Linux build on a 64-bit host with Debian's i686 cross compiler
# (gcc-multilib cannot be installed beside the other cross compilers the
# tests use). The programs run natively, with the cross toolchain's own
# loader and libraries.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(ornex_i686_root /usr/i686-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${ornex_i686_root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--dynamic-linker=${ornex_i686_root}/lib/ld-linux.so.2 -Wl,-rpath,${ornex_i686_root}/lib")
