# What every target is built with.

option(SVGIMPORT_TESTS "Build the tests" ON)
option(SVGIMPORT_BENCH "Build the benchmarks" ON)
option(SVGIMPORT_FUZZ "Build the fuzz targets (clang)" OFF)
set(SVGIMPORT_SANITIZE "" CACHE STRING "Sanitizers for every target, as -fsanitize takes them")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(svgimport-settings INTERFACE)
target_compile_options(svgimport-settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wconversion -Wno-sign-conversion
  -Werror
  -ffp-contract=off)
target_include_directories(svgimport-settings INTERFACE
  ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})

# A template's or an inline function's static must not keep a library loaded for good.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(svgimport-settings INTERFACE -fno-gnu-unique)
endif()

if(SVGIMPORT_SANITIZE)
  target_compile_options(svgimport-settings INTERFACE
    -fsanitize=${SVGIMPORT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(svgimport-settings INTERFACE -fsanitize=${SVGIMPORT_SANITIZE})
endif()

# What an optimised build that is shipped checks and closes at no cost that can be felt. Code that is compiled without
# optimisation sets SVGIMPORT_UNOPTIMISED, since the checks of the C library need it.
if(NOT SVGIMPORT_SANITIZE)
  set(optimised $<AND:$<CONFIG:Release,RelWithDebInfo>,$<NOT:$<BOOL:$<TARGET_PROPERTY:SVGIMPORT_UNOPTIMISED>>>>)
  target_compile_options(svgimport-settings INTERFACE
    $<${optimised}:-fstack-protector-strong> $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=3>)
  # With "now" all calls into other libraries are bound when the library is loaded, and go there directly.
  target_compile_options(svgimport-settings INTERFACE $<${optimised}:-fno-plt>)
  target_link_options(svgimport-settings INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
endif()
