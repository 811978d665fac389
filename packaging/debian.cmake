# Debian packages: `cmake --workflow --preset package` makes build/package/packages/*.deb, with the prefix /usr.
set(RT305_4_MAINTAINER "The rt305_4 developers <maintainers@rt305-4.invalid>" CACHE STRING
  "Maintainer of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
  WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_NAME rt305-4)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${RT305_4_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Defines the package of a component: its name, section and content.
macro(rt305_4_debian_package component name section content)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION
    "Computes voltages, currents, frequency, distortion, power, spectra and
harmonics from one record of sampled three-phase voltages and currents.

This package holds ${content}.")
  install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/debian/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

rt305_4_debian_package(runtime librt305-4-1 libs "the library")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# CPack would call ldconfig in maintainer scripts as well; lintian warns about that.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/triggers)

rt305_4_debian_package(development librt305-4-dev libdevel "the development files")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "librt305-4-1 (= ${PROJECT_VERSION})")

rt305_4_debian_package(python python3-rt305-4 python "the Python package")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "librt305-4-1 (>= ${PROJECT_VERSION}), python3 (>= 3.10), python3-numpy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/python/postinst ${CMAKE_CURRENT_SOURCE_DIR}/debian/python/prerm)

if(RT305_4_BUILD_HOST)
  rt305_4_debian_package(tool rt305 science "the command-line tool")
  set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "librt305-4-1 (>= ${PROJECT_VERSION})")
endif()

rt305_4_compressed(${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog changelog.gz)
include(CPack)
