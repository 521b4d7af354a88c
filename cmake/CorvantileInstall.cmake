# The installed package: find_package(Corvantile) gives the same targets as the source tree, and each module is a component
# with an export of its own, so that a host needs what its components need and nothing else.

if(NOT CORVANTILE_INSTALL)
  return()
endif()

include(CMakePackageConfigHelpers)

get_property(modules GLOBAL PROPERTY CORVANTILE_MODULES)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Corvantile)

# A static module leaves the libraries that it calls to the host, a shared one has them already.
function(corvantile_libraries result target)
  get_target_property(libraries ${target} CORVANTILE_LIBRARIES)
  if(BUILD_SHARED_LIBS OR NOT libraries)
    set(libraries "")
  endif()
  set(${result} "${libraries}" PARENT_SCOPE)
endfunction()

# What the package configuration knows of a module, as lines that set variables.
function(corvantile_component_lines result target)
  set(needs "")
  foreach(property IN ITEMS CORVANTILE_PUBLIC_MODULES CORVANTILE_PRIVATE_MODULES)
    get_target_property(list ${target} ${property})
    list(APPEND needs ${list})
  endforeach()
  set(lines "set(Corvantile_${target}_NEEDS ${needs})\n")
  set(packages "")
  corvantile_libraries(libraries ${target})
  foreach(library IN LISTS libraries)
    get_property(find GLOBAL PROPERTY CORVANTILE_FIND_${library})
    list(GET find 0 package)
    list(APPEND packages ${package})
    string(APPEND lines "set(Corvantile_FIND_${package} ${find})\n")
  endforeach()
  list(REMOVE_DUPLICATES packages)
  string(APPEND lines "set(Corvantile_${target}_PACKAGES ${packages})\n")
  string(REPLACE ";" " " lines "${lines}")
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# pkg-config's entry for a module, called as its library.
function(corvantile_pkg_config target)
  get_target_property(name ${target} OUTPUT_NAME)
  get_target_property(public_modules ${target} CORVANTILE_PUBLIC_MODULES)
  get_target_property(private_modules ${target} CORVANTILE_PRIVATE_MODULES)
  list(TRANSFORM public_modules REPLACE "^HostCore$" CorvantileHostCore)
  set(requires ${public_modules})
  set(requires_private ${private_modules})
  if(NOT BUILD_SHARED_LIBS)
    # The host links these itself, so they are not private: `pkg-config --libs` has to name them without --static, which
    # would bring in what the third-party libraries themselves are made of.
    list(APPEND requires ${private_modules})
    set(requires_private "")
    corvantile_libraries(libraries ${target})
    foreach(library IN LISTS libraries)
      get_property(modules GLOBAL PROPERTY CORVANTILE_PKG_CONFIG_${library})
      list(APPEND requires ${modules})
    endforeach()
    list(REMOVE_DUPLICATES requires)
  endif()
  list(JOIN requires ", " requires)
  list(JOIN requires_private ", " requires_private)
  file(RELATIVE_PATH include ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR}/corvantile)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/module.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

set(component_lines "")
foreach(module IN LISTS modules)
  corvantile_component_lines(lines ${module})
  string(APPEND component_lines "${lines}")
  corvantile_pkg_config(${module})
  install(TARGETS ${module} EXPORT Corvantile${module}Targets
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvantile)
  install(EXPORT Corvantile${module}Targets NAMESPACE Corvantile:: DESTINATION ${package_dir})
endforeach()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/CorvantileConfig.cmake.in
  ${PROJECT_BINARY_DIR}/CorvantileConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CorvantileConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CorvantileConfig.cmake ${PROJECT_BINARY_DIR}/CorvantileConfigVersion.cmake
  ${CMAKE_CURRENT_LIST_DIR}/Findhttplib.cmake ${CMAKE_CURRENT_LIST_DIR}/Findlibedit.cmake DESTINATION ${package_dir})

# Debian looks for the licence under its second name.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/corvantile)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/corvantile RENAME copyright)
