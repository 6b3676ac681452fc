# 64-bit Windows, cross-built with Debian's mingw-w64 (g++-mingw-w64-x86-64-posix:
# GoogleTest needs std::mutex, which the win32 thread model's GCC 12 lacks).
# With Debian's wine64 installed, the tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# The DLL and the programs carry their own C++ and thread runtimes, so that
# they load without the toolchain's DLLs beside them.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Debian installs Wine's 64-bit launcher outside PATH.
find_program(ORNEX_WINE64 NAMES wine64 PATHS /usr/lib/wine)
if(ORNEX_WINE64)
  set(CMAKE_CROSSCOMPILING_EMULATOR
    ${CMAKE_CURRENT_LIST_DIR}/run-under-wine.sh ${ORNEX_WINE64} ${CMAKE_BINARY_DIR}/wine-prefix)
endif()
