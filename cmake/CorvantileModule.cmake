# One library per module of Sources/, and the settings that all modules share.

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

# What the installed package says of a module: the modules and the third-party libraries that it needs.
function(corvantile_record_module target depends private_depends)
  get_property(modules GLOBAL PROPERTY CORVANTILE_MODULES)
  set(libraries ${depends} ${private_depends})
  foreach(list IN ITEMS depends private_depends)
    set(${list}_modules "")
    foreach(need IN LISTS ${list})
      if(need IN_LIST modules)
        list(APPEND ${list}_modules ${need})
        list(REMOVE_ITEM libraries ${need})
      endif()
    endforeach()
  endforeach()
  set_target_properties(${target} PROPERTIES
    CORVANTILE_PUBLIC_MODULES "${depends_modules}"
    CORVANTILE_PRIVATE_MODULES "${private_depends_modules}"
    CORVANTILE_LIBRARIES "${libraries}")
  set_property(GLOBAL APPEND PROPERTY CORVANTILE_MODULES ${target})
endfunction()

# The files of a module are those of its folder. Without a part (WITHOUT, a folder) neither that folder nor the source
# With<PART>.cpp is compiled, but Without<PART>.cpp: what the part's ports then do. Sets `sources` and `headers`.
function(corvantile_module_files without)
  file(GLOB_RECURSE sources RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS *.cpp)
  file(GLOB_RECURSE headers RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS *.hpp)
  set(substitutes ${sources})
  list(FILTER substitutes INCLUDE REGEX "(^|/)Without[^/]*.cpp$")
  list(FILTER sources EXCLUDE REGEX "(^|/)Without[^/]*.cpp$")
  foreach(part IN LISTS without)
    list(FILTER sources EXCLUDE REGEX "^${part}/|(^|/)With${part}.cpp$")
    list(FILTER headers EXCLUDE REGEX "^${part}/")
    set(chosen ${substitutes})
    list(FILTER chosen INCLUDE REGEX "(^|/)Without${part}.cpp$")
    list(APPEND sources ${chosen})
  endforeach()
  set(sources "${sources}" PARENT_SCOPE)
  set(headers "${headers}" PARENT_SCOPE)
endfunction()

# What .ci/check-arrows compares the includes with: the modules that a module links, and which of its folders may include
# which. Each entry of `folder_arrows` is "FOLDER: FOLDER…".
function(corvantile_record_arrows target depends private_depends folder_arrows)
  list(FILTER depends EXCLUDE REGEX "::")
  list(FILTER private_depends EXCLUDE REGEX "::")
  list(JOIN depends " " depends)
  list(JOIN private_depends " " private_depends)
  set(lines "module ${target} public ${depends} private ${private_depends}\n")
  foreach(arrows IN LISTS folder_arrows)
    string(REGEX REPLACE ":? " " ${target}/" arrows "${arrows}")
    string(REPLACE ":" "" arrows "${arrows}")
    string(APPEND lines "folder ${target}/${arrows}\n")
  endforeach()
  set_property(GLOBAL APPEND_STRING PROPERTY CORVANTILE_ARROWS "${lines}")
endfunction()

# corvantile_module(CorvantileReactive
#   WITHOUT …                  folders of parts that this build leaves out
#   GENERATED …                headers that the build writes: FILE.in lies beside the module's CMakeLists.txt
#   DEPENDS …                  modules and libraries that the headers show
#   PRIVATE_DEPENDS …          those that only the sources use
#   BUILD_DEPENDS …            header-only libraries and internal modules that only the sources use; hosts need not have them
#   FOLDER_ARROWS …            "FOLDER: FOLDER…" for each folder: those whose headers it may include
#   INSTALL_DETAIL             the public headers are templates that need those of detail/; otherwise these stay here
#   INTERNAL)                  no host names it: its objects go into the modules that have it in BUILD_DEPENDS
# Its folder, its target and what its includes begin with have one name. Hosts write Corvantile::NAME, whether they add the source tree or find an installed package.
function(corvantile_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "INSTALL_DETAIL;INTERNAL" ""
    "WITHOUT;GENERATED;DEPENDS;PRIVATE_DEPENDS;BUILD_DEPENDS;FOLDER_ARROWS")
  if(module_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "corvantile_module(${name}) does not know: ${module_UNPARSED_ARGUMENTS}")
  endif()
  foreach(need IN LISTS module_DEPENDS module_PRIVATE_DEPENDS)
    if(NOT TARGET ${need})
      message(FATAL_ERROR "${name} needs ${need}, which is no target")
    endif()
  endforeach()

  corvantile_module_files("${module_WITHOUT}")
  if(NOT module_INSTALL_DETAIL)
    list(FILTER headers EXCLUDE REGEX "(^|/)detail/")
  endif()
  set(kind "")
  if(module_INTERNAL)
    set(kind OBJECT)
  endif()
  add_library(${name} ${kind} ${sources})
  add_library(Corvantile::${name} ALIAS ${name})
  foreach(header IN LISTS module_GENERATED)
    configure_file(${header}.in ${PROJECT_BINARY_DIR}/Generated/${name}/${header} @ONLY)
  endforeach()
  list(TRANSFORM module_GENERATED PREPEND ${PROJECT_BINARY_DIR}/Generated/${name}/)
  target_sources(${name} PUBLIC FILE_SET HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR}/Sources ${PROJECT_BINARY_DIR}/Generated FILES ${headers} ${module_GENERATED})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name} PUBLIC ${module_DEPENDS} PRIVATE ${module_PRIVATE_DEPENDS})
  foreach(need IN ITEMS corvantile_warnings LISTS module_BUILD_DEPENDS)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:${need}>)
  endforeach()
  set(file ${name})
  if(NOT file MATCHES "^Corvantile")
    string(PREPEND file Corvantile) # a library of the system's folder says whose it is
  endif()
  # A static module may end up in a shared library of a host's. What is compiled is the same for both kinds, so that a
  # compiler cache serves the second build.
  set_target_properties(${name} PROPERTIES
    OUTPUT_NAME ${file}
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON
    DEFINE_SYMBOL ""
    INSTALL_RPATH "$ORIGIN"
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  # A shared module names every library that it calls, so a symbol that another hides is missed here, not at the user's.
  get_target_property(type ${name} TYPE)
  if(type STREQUAL SHARED_LIBRARY AND NOT (CORVANTILE_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  corvantile_record_arrows(${name} "${module_DEPENDS}" "${module_PRIVATE_DEPENDS};${module_BUILD_DEPENDS}"
    "${module_FOLDER_ARROWS}")
  if(NOT module_INTERNAL)
    corvantile_record_module(${name} "${module_DEPENDS}" "${module_PRIVATE_DEPENDS}")
  endif()
endfunction()
