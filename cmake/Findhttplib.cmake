# cpp-httplib as a library, for which Debian has no package configuration. Target: httplib::httplib. Hosts that link the
# static CorvantilePlay find it with this file, too.

find_path(httplib_INCLUDE_DIR httplib.h)
find_library(httplib_LIBRARY cpp-httplib)
mark_as_advanced(httplib_INCLUDE_DIR httplib_LIBRARY)
set(httplib_VERSION "")
if(EXISTS ${httplib_INCLUDE_DIR}/httplib.h)
  file(STRINGS ${httplib_INCLUDE_DIR}/httplib.h line REGEX "^#define CPPHTTPLIB_VERSION " LIMIT_COUNT 1)
  string(REGEX MATCH "[0-9.]+" httplib_VERSION "${line}")
endif()
# The library is built with TLS, on which the layout of its classes depends.
find_package(OpenSSL 3.0 QUIET COMPONENTS SSL)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(httplib
  REQUIRED_VARS httplib_LIBRARY httplib_INCLUDE_DIR OPENSSL_FOUND VERSION_VAR httplib_VERSION)

if(httplib_FOUND AND NOT TARGET httplib::httplib)
  find_package(Threads REQUIRED)
  add_library(httplib::httplib UNKNOWN IMPORTED)
  set_target_properties(httplib::httplib PROPERTIES
    IMPORTED_LOCATION ${httplib_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${httplib_INCLUDE_DIR}
    INTERFACE_COMPILE_DEFINITIONS CPPHTTPLIB_OPENSSL_SUPPORT
    INTERFACE_LINK_LIBRARIES "OpenSSL::SSL;Threads::Threads")
endif()
