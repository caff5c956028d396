# What users get: the shared library, its headers, a CMake package (`find_package(Tarvex)` gives the
# target Tarvex::tarvex) and a pkg-config file. The program installs itself, its man page and completions
# (apps/). The components are what becomes a package each: library, development, program.
include(CMakePackageConfigHelpers)

install(TARGETS tarvex EXPORT TarvexTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tarvex
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")

# The version is below 1: a new minor version may change the interface.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Tarvex)
install(EXPORT TarvexTargets NAMESPACE Tarvex:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/TarvexConfig.cmake.in ${PROJECT_BINARY_DIR}/TarvexConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/TarvexConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TarvexConfig.cmake ${PROJECT_BINARY_DIR}/TarvexConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The file finds its prefix from where it lies, so that an installed tree may be moved.
file(RELATIVE_PATH pc_to_prefix
  "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/tarvex.pc.in ${PROJECT_BINARY_DIR}/tarvex.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarvex.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
