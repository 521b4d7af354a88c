# The Debian package: library, headers and tool in one. `cpack --preset deb` makes it of the preset `release`.

if(NOT CORVANTILE_INSTALL OR NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

# A host that links a static library needs the headers' packages of what it calls; what the tool needs, dpkg finds out itself.
set(depends "")
foreach(module IN LISTS modules)
  corvantile_libraries(libraries ${module})
  foreach(library IN LISTS libraries)
    get_property(package GLOBAL PROPERTY CORVANTILE_DEBIAN_${library})
    list(APPEND depends ${package})
  endforeach()
endforeach()
if(CORVANTILE_DESKTOP_HTTP)
  list(APPEND depends ca-certificates) # without them no HTTPS server can prove who it is
endif()
list(REMOVE_DUPLICATES depends)
list(JOIN depends ", " CPACK_DEBIAN_PACKAGE_DEPENDS)

set(CPACK_PACKAGE_NAME corvantile)
set(CPACK_PACKAGE_CONTACT "The Corvantile authors")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ${BUILD_SHARED_LIBS})
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cmake, g++, pkg-config")
include(CPack)
