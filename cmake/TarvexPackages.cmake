# Debian packages of an installation under /usr: libtarvex0, libtarvex-dev and tarvex. `cpack` in the build
# folder of the preset `package` makes them; scripts/package.sh does all of it.
if(WIN32 OR NOT TARGET tarvex_documents)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvex)
set(CPACK_PACKAGE_VENDOR "The Tarvex authors")
set(CPACK_PACKAGE_CONTACT "The Tarvex authors <maintainers@tarvex.example>" CACHE STRING
  "Maintainer of the packages: name and address of whoever gives them to others")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "plane geometry, Bezier curves and raster tracing")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)  # the library's, for the program
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")  # below version 1 any version may change the interface

set(about "Tarvex traces pictures to Bezier outlines, centre lines, edges or regions of
colour, combines, offsets, bends and measures outlines, fits curves to points,
and breaks filled shapes up into columns that can be stitched.")
set(runtime_package libtarvex${TARVEX_ABI})
set(full_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/packages/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${about}

This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtarvex-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${full_version})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${about}

This package holds what is needed to build programs with the library: headers,
a CMake package and a pkg-config file.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME tarvex)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${runtime_package} (= ${full_version})")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "${about}

This package holds the command-line program tarvex, which does that to
pictures, SVG drawings and text, its man page and shell completions.")

# Each package says whose it is and what changed, where Debian's rules want that to be read.
string(TIMESTAMP packaged_on "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH's, where that is set
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(REGEX REPLACE "^MIT License\n\n(Copyright \\(c\\) ([^\n]*))\n\n" "" licence "${licence}")
set(copyright "${CMAKE_MATCH_2}")
string(STRIP "${licence}" licence)
string(REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REPLACE "\n" "\n " licence "${licence}")
set(CPACK_TARVEX_TEXTS ${PROJECT_BINARY_DIR}/packages)
configure_file(${CMAKE_CURRENT_LIST_DIR}/packages/copyright.in ${CPACK_TARVEX_TEXTS}/copyright @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/packages/changelog.in ${CPACK_TARVEX_TEXTS}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${CPACK_TARVEX_TEXTS}/changelog COPYONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/packages/add_texts.cmake)

include(CPack)
