# Third-party libraries, each with the oldest version that will do. Header-only ones never reach an installed package.

# corvantile_missing(NAME VERSION WHO OPTION…): ends the configuring, and says what to leave out instead.
function(corvantile_missing name version who)
  list(JOIN ARGN " and " options)
  set(way_out "")
  if(options)
    set(way_out ", or turn off ${options}")
  endif()
  message(FATAL_ERROR "${name} ${version} or later was not found. ${who} needs it: install it${way_out}.")
endfunction()

# corvantile_dependency(OpenSSL 3.0 COMPONENTS Crypto
#   TARGETS OpenSSL::Crypto    what gives a module that links it the rest of this entry
#   PKG_CONFIG libcrypto       what it is called there
#   DEBIAN libssl-dev          the package that has its headers
#   WHO … OPTIONS …)           for the message: what needs it, and the options that save it
function(corvantile_dependency name version)
  cmake_parse_arguments(PARSE_ARGV 2 dependency "" "WHO;DEBIAN" "COMPONENTS;TARGETS;PKG_CONFIG;OPTIONS")
  set(find ${name} ${version})
  if(dependency_COMPONENTS)
    list(APPEND find COMPONENTS ${dependency_COMPONENTS})
  endif()
  find_package(${find})
  if(NOT ${name}_FOUND)
    corvantile_missing(${name} ${version} "${dependency_WHO}" ${dependency_OPTIONS})
  endif()
  list(TRANSFORM dependency_PKG_CONFIG APPEND " >= ${version}")
  foreach(target IN LISTS dependency_TARGETS)
    set_property(GLOBAL PROPERTY CORVANTILE_FIND_${target} "${find}")
    set_property(GLOBAL PROPERTY CORVANTILE_PKG_CONFIG_${target} "${dependency_PKG_CONFIG}")
    set_property(GLOBAL PROPERTY CORVANTILE_DEBIAN_${target} "${dependency_DEBIAN} (>= ${version})")
  endforeach()
endfunction()

# corvantile_header_version(RESULT FILE MACRO): the number that a header defines MACRO as; empty when there is none.
function(corvantile_header_version result file macro)
  if(NOT EXISTS ${file})
    set(${result} "" PARENT_SCOPE)
    return()
  endif()
  file(STRINGS ${file} line REGEX "^#[ ]*define[ ]+${macro}[ ]" LIMIT_COUNT 1)
  string(REGEX MATCH "[0-9.]+" version "${line}")
  set(${result} "${version}" PARENT_SCOPE)
endfunction()

find_package(Threads REQUIRED)
corvantile_dependency(nlohmann_json 3.11 WHO "Every part of Corvantile")

if(CORVANTILE_BUILD_LOCAL_STORE)
  corvantile_dependency(ICU 67 COMPONENTS uc i18n TARGETS ICU::uc ICU::i18n PKG_CONFIG icu-uc icu-i18n DEBIAN libicu-dev
    WHO CorvantileLocalStore OPTIONS CORVANTILE_BUILD_LOCAL_STORE)
endif()

set(with_openssl "")
foreach(option IN ITEMS CORVANTILE_BUILD_TEST_PLATFORM CORVANTILE_BUILD_DESKTOP_PLATFORM)
  if(${option})
    list(APPEND with_openssl ${option})
  endif()
endforeach()
if(with_openssl)
  corvantile_dependency(OpenSSL 3.0 COMPONENTS Crypto TARGETS OpenSSL::Crypto PKG_CONFIG libcrypto DEBIAN libssl-dev
    WHO "Each platform" OPTIONS ${with_openssl})
endif()

if(CORVANTILE_BUILD_DESKTOP_PLATFORM)
  corvantile_dependency(SQLite3 3.38 TARGETS SQLite::SQLite3 PKG_CONFIG sqlite3 DEBIAN libsqlite3-dev
    WHO CorvantileDesktop OPTIONS CORVANTILE_BUILD_DESKTOP_PLATFORM)
  if(CORVANTILE_DESKTOP_HTTP)
    corvantile_dependency(CURL 7.85 TARGETS CURL::libcurl PKG_CONFIG libcurl DEBIAN libcurl4-openssl-dev
      WHO "CorvantileDesktop's HTTP" OPTIONS CORVANTILE_DESKTOP_HTTP)
  endif()

  find_path(CORVANTILE_ASIO_INCLUDE_DIR asio.hpp)
  corvantile_header_version(asio ${CORVANTILE_ASIO_INCLUDE_DIR}/asio/version.hpp ASIO_VERSION)
  if(NOT asio GREATER_EQUAL 102200) # 1.22.0
    corvantile_missing(Asio 1.22 CorvantileDesktop CORVANTILE_BUILD_DESKTOP_PLATFORM)
  endif()
  add_library(corvantile_asio INTERFACE)
  target_include_directories(corvantile_asio SYSTEM INTERFACE ${CORVANTILE_ASIO_INCLUDE_DIR})
  # A host may have an Asio of its own, of another version. The linker would merge the two silently, in a static library as
  # in a shared one; so ours has a namespace of its own and shows nothing.
  target_compile_definitions(corvantile_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED ASIO_DISABLE_VISIBILITY
    asio=corvantile_asio asio_detail_posix_thread_function=corvantile_asio_posix_thread_function)
  target_link_libraries(corvantile_asio INTERFACE Threads::Threads)
  if(CORVANTILE_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # The thread sanitizer does not see Asio's fences; it judges by the locks that go with them.
    target_compile_options(corvantile_asio INTERFACE -Wno-tsan)
  endif()
endif()

if(CORVANTILE_BUILD_TESTS)
  corvantile_dependency(GTest 1.12 WHO "The test build" OPTIONS CORVANTILE_BUILD_TESTS)
endif()
if(CORVANTILE_BUILD_BENCHMARKS)
  corvantile_dependency(benchmark 1.7 WHO "The benchmark build" OPTIONS CORVANTILE_BUILD_BENCHMARKS)
endif()
if(CORVANTILE_BUILD_TOOLS)
  corvantile_dependency(CLI11 2.1 WHO "The command-line host" OPTIONS CORVANTILE_BUILD_TOOLS)
  corvantile_dependency(libedit 3.1 TARGETS libedit::libedit PKG_CONFIG libedit DEBIAN libedit-dev
    WHO "The prompt of the command-line host" OPTIONS CORVANTILE_BUILD_TOOLS)
endif()
if(CORVANTILE_BUILD_TOOLS OR (CORVANTILE_BUILD_TESTS AND CORVANTILE_BUILD_DESKTOP_PLATFORM))
  corvantile_dependency(httplib 0.11 TARGETS httplib::httplib PKG_CONFIG cpp-httplib DEBIAN libcpp-httplib-dev
    WHO "The server of the command-line host and of the tests" OPTIONS CORVANTILE_BUILD_TOOLS CORVANTILE_BUILD_TESTS)
endif()
