# What `cmake --install` gives: library, header, command, a CMake package and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS libtessarmont EXPORT tessarmont-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/src/frame/exports.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tessarmont)
install(TARGETS tessarmont_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT tessarmont-targets NAMESPACE tessarmont:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tessarmont)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tessarmont-config.cmake.in
  ${PROJECT_BINARY_DIR}/tessarmont-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tessarmont)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tessarmont-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tessarmont-config.cmake ${PROJECT_BINARY_DIR}/tessarmont-config-version.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tessarmont)

configure_file(${PROJECT_SOURCE_DIR}/cmake/tessarmont.pc.in ${PROJECT_BINARY_DIR}/tessarmont.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessarmont.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
