# corvantile_tests(NAME reactive_tests SOURCES … DEPENDS …)
# One binary with GoogleTest's main. CTest lists its cases one by one and runs each in a process of its own;
# with CORVANTILE_TEST_PER_BINARY all cases of a binary share one process, which is quicker under a sanitizer
# and shows a case that leaves something behind.

include(GoogleTest)

# GoogleTest's headers take longer to read than most test files: they are compiled once for all binaries.
add_library(corvantile_test_headers OBJECT ${CMAKE_CURRENT_LIST_DIR}/Precompiled.cpp)
target_compile_features(corvantile_test_headers PUBLIC cxx_std_20)
target_link_libraries(corvantile_test_headers PUBLIC GTest::gmock GTest::gtest corvantile_warnings)
target_precompile_headers(corvantile_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
set_target_properties(corvantile_test_headers PROPERTIES CXX_EXTENSIONS OFF)
# With these a compiler cache can tell whether the precompiled header is still the same.
set(cacheable $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess> "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
target_compile_options(corvantile_test_headers PUBLIC ${cacheable})

function(corvantile_tests)
  cmake_parse_arguments(PARSE_ARGV 0 tests "" "NAME" "SOURCES;DEPENDS")
  if(tests_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "corvantile_tests(${tests_NAME}) does not know: ${tests_UNPARSED_ARGUMENTS}")
  endif()
  foreach(need IN LISTS tests_DEPENDS)
    if(NOT TARGET ${need})
      if(CORVANTILE_BUILD_DESKTOP_PLATFORM)
        message(FATAL_ERROR "${tests_NAME} needs ${need}, which is no target")
      endif()
      message(STATUS "Skipping ${tests_NAME}: this build has no ${need}")
      return()
    endif()
  endforeach()
  add_executable(${tests_NAME} ${tests_SOURCES})
  target_link_libraries(${tests_NAME} PRIVATE ${tests_DEPENDS} corvantile_warnings GTest::gmock GTest::gtest_main)
  target_include_directories(${tests_NAME} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${tests_NAME} PRIVATE $<TARGET_PROPERTY:corvantile_test_headers,INTERFACE_COMPILE_OPTIONS>)
  target_precompile_headers(${tests_NAME} REUSE_FROM corvantile_test_headers)
  set_target_properties(${tests_NAME} PROPERTIES CXX_EXTENSIONS OFF)
  if(CORVANTILE_TEST_PER_BINARY)
    add_test(NAME ${tests_NAME} COMMAND ${tests_NAME} --gtest_brief=1)
    set_tests_properties(${tests_NAME} PROPERTIES TIMEOUT 600)
  else()
    gtest_discover_tests(${tests_NAME} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60)
  endif()
endfunction()
