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

# What the installed package says of a room: the rooms and the third-party libraries that it needs.
function(corvantile_record_room target depends private_depends)
  set(public_rooms ${depends})
  set(private_rooms ${private_depends})
  list(FILTER public_rooms INCLUDE REGEX "^corvantile")
  list(FILTER private_rooms INCLUDE REGEX "^corvantile")
  set(libraries ${depends} ${private_depends})
  list(FILTER libraries EXCLUDE REGEX "^corvantile")
  set_target_properties(${target} PROPERTIES
    CORVANTILE_PUBLIC_ROOMS "${public_rooms}"
    CORVANTILE_PRIVATE_ROOMS "${private_rooms}"
    CORVANTILE_LIBRARIES "${libraries}")
  set_property(GLOBAL APPEND PROPERTY CORVANTILE_ROOMS ${target})
endfunction()

# corvantile_room(NAME Reactive TARGET corvantile_reactive
#   SOURCES … HEADERS …        files beside the room's CMakeLists.txt, named one by one
#   GENERATED …                headers that the build writes: FILE.in lies beside the room's CMakeLists.txt
#   DEPENDS …                  rooms and libraries that the headers show
#   PRIVATE_DEPENDS …          those that only the sources use
#   BUILD_DEPENDS …)           header-only libraries that only the sources use; users of the package need not have them
# Users write Corvantile::NAME, whether they add the source tree or find an installed package.
function(corvantile_room)
  cmake_parse_arguments(PARSE_ARGV 0 room "" "NAME;TARGET" "SOURCES;HEADERS;GENERATED;DEPENDS;PRIVATE_DEPENDS;BUILD_DEPENDS")
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
  foreach(header IN LISTS room_GENERATED)
    configure_file(${header}.in ${PROJECT_BINARY_DIR}/Generated/${room_NAME}/${header} @ONLY)
  endforeach()
  list(TRANSFORM room_GENERATED PREPEND ${PROJECT_BINARY_DIR}/Generated/${room_NAME}/)
  target_sources(${room_TARGET} PUBLIC FILE_SET HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR}/Sources ${PROJECT_BINARY_DIR}/Generated FILES ${room_HEADERS} ${room_GENERATED})
  target_compile_features(${room_TARGET} PUBLIC cxx_std_20)
  target_link_libraries(${room_TARGET} PUBLIC ${room_DEPENDS} PRIVATE ${room_PRIVATE_DEPENDS})
  foreach(need IN ITEMS corvantile_warnings LISTS room_BUILD_DEPENDS)
    target_link_libraries(${room_TARGET} PRIVATE $<BUILD_INTERFACE:${need}>)
  endforeach()
  # A static room may end up in a shared library of a host's. What is compiled is the same for both kinds, so that a
  # compiler cache serves the second build.
  set_target_properties(${room_TARGET} PROPERTIES
    EXPORT_NAME ${room_NAME}
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON
    DEFINE_SYMBOL ""
    INSTALL_RPATH "$ORIGIN"
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  # A shared room names every library that it calls, so a symbol that another room hides is missed here, not at the user's.
  get_target_property(type ${room_TARGET} TYPE)
  if(type STREQUAL SHARED_LIBRARY AND NOT (CORVANTILE_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
    target_link_options(${room_TARGET} PRIVATE -Wl,--no-undefined)
  endif()
  corvantile_record_room(${room_TARGET} "${room_DEPENDS}" "${room_PRIVATE_DEPENDS}")
endfunction()
