# One library per room of Sources/, and the settings that all rooms share.

add_library(corvantile_warnings INTERFACE)
target_compile_options(corvantile_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${CORVANTILE_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Wrong about ordinary std::string insertions in optimised builds.
  target_compile_options(corvantile_warnings INTERFACE -Wno-restrict)
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # In a batch it takes a source's unnamed namespace for a header's.
  target_compile_options(corvantile_warnings INTERFACE -Wno-subobject-linkage)
endif()

# corvantile_room(NAME Reactive TARGET corvantile_reactive
#   SOURCES … HEADERS …        files beside the room's CMakeLists.txt, named one by one
#   DEPENDS …                  rooms and libraries that the headers show
#   PRIVATE_DEPENDS …          those that only the sources use
#   BUILD_DEPENDS …)           header-only libraries that only the sources use; users of the package need not have them
# Users write Corvantile::NAME, whether they add the source tree or find an installed package.
function(corvantile_room)
  cmake_parse_arguments(PARSE_ARGV 0 room "" "NAME;TARGET" "SOURCES;HEADERS;DEPENDS;PRIVATE_DEPENDS;BUILD_DEPENDS")
  if(room_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "corvantile_room(${room_NAME}) does not know: ${room_UNPARSED_ARGUMENTS}")
  endif()
  foreach(need IN LISTS room_DEPENDS room_PRIVATE_DEPENDS)
    if(NOT TARGET ${need})
      message(FATAL_ERROR "${room_NAME} needs ${need}, which is no target")
    endif()
  endforeach()

  add_library(${room_TARGET} ${room_SOURCES})
  add_library(Corvantile::${room_NAME} ALIAS ${room_TARGET})
  target_sources(${room_TARGET} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/Sources FILES ${room_HEADERS})
  target_compile_features(${room_TARGET} PUBLIC cxx_std_20)
  target_link_libraries(${room_TARGET} PUBLIC ${room_DEPENDS} PRIVATE ${room_PRIVATE_DEPENDS})
  foreach(need IN ITEMS corvantile_warnings LISTS room_BUILD_DEPENDS)
    target_link_libraries(${room_TARGET} PRIVATE $<BUILD_INTERFACE:${need}>)
  endforeach()
  set_target_properties(${room_TARGET} PROPERTIES
    EXPORT_NAME ${room_NAME}
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  # A shared room names every library that it calls, so a symbol that another room hides is missed here, not at the user's.
  get_target_property(type ${room_TARGET} TYPE)
  if(type STREQUAL SHARED_LIBRARY AND NOT (CORVANTILE_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
    target_link_options(${room_TARGET} PRIVATE -Wl,--no-undefined)
  endif()
  set_property(GLOBAL APPEND PROPERTY CORVANTILE_ROOMS ${room_TARGET})
endfunction()
