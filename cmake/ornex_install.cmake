include(CMakePackageConfigHelpers)

install(TARGETS ornex_rt EXPORT ornex_rtTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ornex DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(ornex_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ornex_rt)
install(EXPORT ornex_rtTargets
  NAMESPACE ornex::
  DESTINATION ${ornex_cmake_dir})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/ornex_rtConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ornex_rtConfig.cmake
  INSTALL_DESTINATION ${ornex_cmake_dir})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/ornex_rtConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/ornex_rtConfig.cmake
  ${PROJECT_BINARY_DIR}/ornex_rtConfigVersion.cmake
  DESTINATION ${ornex_cmake_dir})

# The pkg-config file finds its prefix from where it lies, so that an install
# with a different --prefix stays usable.
file(RELATIVE_PATH ornex_pc_to_prefix
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/ornex_rt.pc.in
  ${PROJECT_BINARY_DIR}/ornex_rt.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ornex_rt.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
