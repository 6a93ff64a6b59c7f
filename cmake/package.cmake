# The Debian packages: svgimport, and svgimport-dev with what a host is built with. `script/package` makes them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME svgimport)
set(CPACK_PACKAGE_CONTACT "svgimport developers <svgimport@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "SVG import filter for drawing applications")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME svgimport)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"The filter as a shared library that an application loads, a reference host that
needs no application, and the tools svgimport and svgimport-ops that make its
command stream visible.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Loaded when an image is fetched, so that no library list names it.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS libcurl4)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME svgimport-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"Headers, CMake package, pkg-config files, guide and examples for an application
that loads the filter.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "svgimport (= ${PROJECT_VERSION})")

include(CPack)
