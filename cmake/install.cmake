# What `cmake --install` puts where, in two components: runtime (tools and libraries) and development (headers, CMake
# package, pkg-config files, example sources). Everything may be moved as a whole.

include(CMakePackageConfigHelpers)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)  # tests and benchmarks need not be built for it
set(SVGIMPORT_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/svgimport)
set(SVGIMPORT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/svgimport)

# --- Libraries and tools

set_target_properties(svgimport svgimport-host PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
set_target_properties(svgimport-tool svgimport-ops PROPERTIES
  INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN/../lib")
# The build tree looks the same as the installed one. With a path of its own it would be padded with an empty entry, by
# which the loader would look for the host's services in the current folder.
set_target_properties(svgimport svgimport-host svgimport-tool svgimport-ops PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
set_target_properties(svgimport PROPERTIES EXPORT_NAME filter)
set_target_properties(svgimport-host PROPERTIES EXPORT_NAME host)

add_library(svgimport-headers INTERFACE)
set_target_properties(svgimport-headers PROPERTIES EXPORT_NAME headers)
# Headers include each other as "host/matrix.h"; users may write <svgimport/stream.h>.
target_include_directories(svgimport-headers INTERFACE
  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>" "$<INSTALL_INTERFACE:${SVGIMPORT_INCLUDE_DIR}>")
target_link_libraries(svgimport-host PUBLIC svgimport-headers)

install(TARGETS svgimport-tool svgimport-ops RUNTIME COMPONENT runtime)
# The filter is loaded by its plain name, which therefore belongs to the runtime.
install(TARGETS svgimport EXPORT svgimport LIBRARY COMPONENT runtime)
install(TARGETS svgimport-host EXPORT svgimport LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS svgimport-headers EXPORT svgimport)

# --- Headers

set(SVGIMPORT_HOST_HEADERS
  allocator.h application.h base_dir.h bitmap.h colour.h composer.h export.h fills.h font_manager.h matrix.h polygon.h
  settings.h transparency.h)
list(TRANSFORM SVGIMPORT_HOST_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/src/host/)
install(FILES ${SVGIMPORT_HOST_HEADERS} DESTINATION ${SVGIMPORT_INCLUDE_DIR}/host COMPONENT development)
install(FILES src/run/import_command.h DESTINATION ${SVGIMPORT_INCLUDE_DIR}/run COMPONENT development)
install(FILES headless_host/headless_host.h headless_host/inspection.h
  DESTINATION ${SVGIMPORT_INCLUDE_DIR}/headless_host COMPONENT development)
install(FILES include/svgimport/stream.h DESTINATION ${SVGIMPORT_INCLUDE_DIR} COMPONENT development)

# --- How a build finds all this

install(EXPORT svgimport NAMESPACE svgimport:: FILE svgimportTargets.cmake
  DESTINATION ${SVGIMPORT_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/svgimportConfig.cmake.in ${PROJECT_BINARY_DIR}/svgimportConfig.cmake
  INSTALL_DESTINATION ${SVGIMPORT_CMAKE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/svgimportConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/svgimportConfig.cmake ${PROJECT_BINARY_DIR}/svgimportConfigVersion.cmake
  DESTINATION ${SVGIMPORT_CMAKE_DIR} COMPONENT development)

file(RELATIVE_PATH SVGIMPORT_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" SVGIMPORT_PC_PREFIX ${SVGIMPORT_PC_PREFIX})
foreach(name svgimport svgimport-host)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# --- Manual pages, completion, documents, examples

install(FILES man/svgimport.1 man/svgimport-ops.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
foreach(tool svgimport svgimport-ops)
  install(FILES completion/svgimport.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME ${tool} COMPONENT runtime)
endforeach()
install(FILES docs/host-guide.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY examples/host examples/python DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
  USE_SOURCE_PERMISSIONS COMPONENT development)
