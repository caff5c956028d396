# Windows, x86, by Debian's MinGW-w64 with POSIX threads.
set(TARVEX_MINGW i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
