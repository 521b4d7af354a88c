# The installed package: find_package(Corvantile) gives the same targets as the source tree.

if(NOT CORVANTILE_INSTALL)
  return()
endif()

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

get_property(rooms GLOBAL PROPERTY CORVANTILE_ROOMS)
install(TARGETS ${rooms} EXPORT CorvantileTargets
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvantile)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Corvantile)
install(EXPORT CorvantileTargets NAMESPACE Corvantile:: DESTINATION ${package_dir})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/CorvantileConfig.cmake.in
  ${PROJECT_BINARY_DIR}/CorvantileConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CorvantileConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CorvantileConfig.cmake ${PROJECT_BINARY_DIR}/CorvantileConfigVersion.cmake
  DESTINATION ${package_dir})
