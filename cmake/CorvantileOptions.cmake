# What a build contains and how strictly it is checked. The default is the libraries alone, with nothing that only tests,
# benchmarks or the tool need; the presets add those. A project that adds Corvantile as a subdirectory keeps its settings.

include(CMakeDependentOption)
include(GNUInstallDirs)

# What is left out is not looked for: each option names the library that it saves.
option(CORVANTILE_BUILD_LOCAL_STORE "Build CorvantileLocalStore, which needs ICU" ON)
cmake_dependent_option(CORVANTILE_BUILD_TEST_PLATFORM "Build CorvantileTest, which needs CorvantileLocalStore and OpenSSL" ON
  "CORVANTILE_BUILD_LOCAL_STORE" OFF)
cmake_dependent_option(CORVANTILE_BUILD_DESKTOP_PLATFORM "Build CorvantileDesktop, which needs Asio, OpenSSL and SQLite" ON
  "CMAKE_SYSTEM_NAME STREQUAL Linux" OFF)
cmake_dependent_option(CORVANTILE_DESKTOP_HTTP "Give CorvantileDesktop HTTP, which needs libcurl" ON
  "CORVANTILE_BUILD_DESKTOP_PLATFORM" OFF)
cmake_dependent_option(CORVANTILE_DESKTOP_STORE "Give CorvantileDesktop a store, which needs CorvantileLocalStore" ON
  "CORVANTILE_BUILD_DESKTOP_PLATFORM;CORVANTILE_BUILD_LOCAL_STORE" OFF)
cmake_dependent_option(CORVANTILE_DESKTOP_OUTBOX "Give CorvantileDesktop the outbox that delivers attribution packages" ON
  "CORVANTILE_BUILD_DESKTOP_PLATFORM" OFF)

option(CORVANTILE_BUILD_TESTS "Build the tests" OFF)
option(CORVANTILE_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(CORVANTILE_BUILD_TOOLS "Build CorvantilePlay and the command-line host" OFF)
option(CORVANTILE_BUILD_EXAMPLES "Build the example hosts" OFF)
option(CORVANTILE_BUILD_FUZZERS "Build the fuzz targets" OFF)
option(CORVANTILE_INSTALL "Make the install rules" ${PROJECT_IS_TOP_LEVEL})
option(CORVANTILE_WARNINGS_AS_ERRORS "Stop at the first compiler warning" OFF)
option(CORVANTILE_TEST_PER_BINARY "Give CTest one entry per test binary instead of one per case" OFF)
set(CORVANTILE_SANITIZE "" CACHE STRING "Sanitizers added to every target, as -fsanitize= takes them")

# corvantile_require(OPTION NEED…): one that is on needs others that are. Checked before any library is looked for.
function(corvantile_require option)
  if(NOT ${option})
    return()
  endif()
  foreach(need IN LISTS ARGN)
    if(NOT ${need})
      message(FATAL_ERROR "${option} needs ${need}: turn that on, with what it needs, or ${option} off.")
    endif()
  endforeach()
endfunction()

set(whole_desktop
  CORVANTILE_BUILD_DESKTOP_PLATFORM CORVANTILE_DESKTOP_HTTP CORVANTILE_DESKTOP_STORE CORVANTILE_DESKTOP_OUTBOX)
corvantile_require(CORVANTILE_BUILD_TOOLS ${whole_desktop})
corvantile_require(CORVANTILE_BUILD_TESTS CORVANTILE_BUILD_TEST_PLATFORM)
corvantile_require(CORVANTILE_BUILD_BENCHMARKS CORVANTILE_BUILD_TEST_PLATFORM)
corvantile_require(CORVANTILE_BUILD_FUZZERS CORVANTILE_BUILD_TOOLS)
if(CORVANTILE_BUILD_DESKTOP_PLATFORM)
  corvantile_require(CORVANTILE_BUILD_TESTS ${whole_desktop})
  corvantile_require(CORVANTILE_BUILD_BENCHMARKS ${whole_desktop})
endif()

# No binary and no report shows where it was built: a path reads as if the compiler had run in the source folder.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)

# An installed program finds its libraries wherever the whole is moved, whatever their folder is called.
set(CORVANTILE_PROGRAM_RPATH "")
if(BUILD_SHARED_LIBS)
  file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CORVANTILE_PROGRAM_RPATH "$ORIGIN/${libraries_from_programs}")
endif()

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
  endif()

  if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CORVANTILE_CCACHE ccache)
    if(CORVANTILE_CCACHE)
      # Without this sloppiness no file with a precompiled header is ever found in the cache.
      set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CORVANTILE_CCACHE})
    endif()
  endif()

  if(CORVANTILE_SANITIZE)
    # Reports need lines, not variables; with more, or optimised, compiling takes up to twice as long.
    add_compile_options(-fsanitize=${CORVANTILE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${CORVANTILE_SANITIZE})
  endif()
endif()
