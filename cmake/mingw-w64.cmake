# CMake toolchain: 64-bit Windows programs, compiled here by MinGW-w64 and run, when tests run, by Wine.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The compilers with POSIX threads: the others have no std::thread.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# TANDEKO_QT: where Qt for Windows was installed; not needed for the engine and the console tools.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TANDEKO_QT)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${TANDEKO_QT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../packaging/windows/wine)
