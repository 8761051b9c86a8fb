include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS TavrinBase TavrinDatabase EXPORT TavrinDatabaseTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavrin
        FILES_MATCHING PATTERN "*.h")
install(EXPORT TavrinDatabaseTargets NAMESPACE Tavrin::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TavrinDatabase)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TavrinDatabaseConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TavrinDatabaseConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TavrinDatabase)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TavrinDatabaseConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TavrinDatabaseConfig.cmake
              ${PROJECT_BINARY_DIR}/TavrinDatabaseConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TavrinDatabase)
