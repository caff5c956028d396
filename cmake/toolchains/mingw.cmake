# What the Windows toolchains have in common. The runtime is linked in, so that Tarvex.dll needs nothing
# beside it that Windows does not bring; programs are run by Wine where it is there.
set(CMAKE_SYSTEM_NAME Windows)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR "${TARVEX_MINGW}")
set(CMAKE_C_COMPILER ${TARVEX_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARVEX_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${TARVEX_MINGW}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TARVEX_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Tests are run by the emulator that is given, for x64 by Debian's Wine where none is.
if(NOT DEFINED CMAKE_CROSSCOMPILING_EMULATOR AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  find_program(TARVEX_WINE wine64-stable wine64 PATHS /usr/lib/wine)
  if(TARVEX_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${TARVEX_WINE})
  endif()
endif()
