# What a build contains and how strictly it is checked. A project that adds Corvantile as a subdirectory gets
# the library alone, and no setting of its own is touched.

include(CMakeDependentOption)

option(CORVANTILE_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(CORVANTILE_BUILD_BENCHMARKS "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL})
option(CORVANTILE_BUILD_TOOLS "Build the command-line host" ${PROJECT_IS_TOP_LEVEL})
option(CORVANTILE_BUILD_EXAMPLES "Build the example host" ${PROJECT_IS_TOP_LEVEL})
option(CORVANTILE_BUILD_FUZZERS "Build the fuzz targets" OFF)
option(CORVANTILE_INSTALL "Make the install rules" ${PROJECT_IS_TOP_LEVEL})
cmake_dependent_option(CORVANTILE_BUILD_DESKTOP_PLATFORM "Build DesktopPlatform" ON "CMAKE_SYSTEM_NAME STREQUAL Linux" OFF)
option(CORVANTILE_WARNINGS_AS_ERRORS "Stop at the first compiler warning" OFF)
option(CORVANTILE_TEST_PER_BINARY "Give CTest one entry per test binary instead of one per case" OFF)
set(CORVANTILE_SANITIZE "" CACHE STRING "Sanitizers added to every target, as -fsanitize= takes them")

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
  endif()

  # A build that runs from its own folder and one that is installed both find their shared libraries.
  set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib")

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
