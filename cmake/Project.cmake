# Compiler options of all targets, and functions that find packages.

add_library(rt305_4_options INTERFACE)
target_compile_features(rt305_4_options INTERFACE cxx_std_20 c_std_99)
target_compile_options(rt305_4_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # GCC 12 warns about impossible overlaps inside std::string at -O3 (GCC bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${RT305_4_WERROR}>:-Werror>
  # Sums, grids, axes and scale factors are fixed bit for bit, so the compiler must not fuse multiply and add.
  -ffp-contract=off
  # No code reads errno or the floating-point exception flags. With them, loops with sqrt or selects are not vectorised.
  -fno-math-errno -fno-trapping-math
  # The library runs inside its host's process: a buffer overrun must end that process, not be exploited.
  -fstack-protector-strong -fstack-clash-protection
  $<IF:$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},aarch64>,-mbranch-protection=standard,-fcf-protection>
  $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
target_link_options(rt305_4_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack
  $<$<NOT:$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},aarch64>>:-Wl,-z,shstk>)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# find_package, with a message that says how to install a missing package.
macro(rt305_4_require package)
  find_package(${package} ${ARGN} QUIET)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "${package} was not found. 'make setup' installs every package this project needs.")
  endif()
endmacro()

# The same for a library without a CMake package. Sets ${variable}_LIBRARY; the header must be on the default path.
macro(rt305_4_require_library variable name header)
  find_library(${variable}_LIBRARY ${name})
  find_path(${variable}_INCLUDE ${header})
  if(NOT ${variable}_LIBRARY OR NOT ${variable}_INCLUDE)
    message(FATAL_ERROR "lib${name} was not found. 'make setup' installs every package this project needs.")
  endif()
endmacro()
