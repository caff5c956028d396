# Compiler settings shared by everything that is built here: one target to link, `tarvex_compiler`.
#
# The same input must give the same bits on every target, so products and sums are never fused and
# 32-bit x86 computes in SSE2 registers instead of the wider x87 ones.
add_library(tarvex_compiler INTERFACE)
target_compile_options(tarvex_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -ffp-contract=off
  $<$<BOOL:${TARVEX_WERROR}>:-Werror>)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86|AMD64")
  target_compile_options(tarvex_compiler INTERFACE -msse2 -mfpmath=sse)
  if(WIN32)  # where callers need not align the stack as SSE2 wants it
    target_compile_options(tarvex_compiler INTERFACE -mstackrealign)
  endif()
endif()
if(TARVEX_SANITIZE)
  add_compile_options(-fsanitize=${TARVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TARVEX_SANITIZE})
endif()
if(TARVEX_BUILD_FUZZ AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_compile_options(-fsanitize=fuzzer-no-link)  # the fuzz targets see which code an input reaches
endif()

# A checkout is rebuilt from another's objects: paths are taken relative to the source, and precompiled
# headers may be cached.
find_program(TARVEX_CCACHE ccache)
if(TARVEX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
      CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${TARVEX_CCACHE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fpch-preprocess)
  elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
  endif()
endif()
