include(CMakePackageConfigHelpers)

# Installed layout:
#   include/TavrinDatabase.h            the whole public interface
#   include/tavrin/<layer>/<Header>.h   every header, as the library itself includes it
#   include/tavrin/Version.h            generated
#   lib/libtavrinbase.*, lib/libtavrindatabase.*
#   lib/cmake/TavrinDatabase/           the CMake package, with its version file
#   lib/pkgconfig/tavrin.pc             for builds without CMake
install(TARGETS TavrinBase TavrinDatabase EXPORT TavrinDatabaseTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/tavrin DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_SOURCE_DIR}/src/TavrinDatabase.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/tavrin/Version.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavrin)
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

# pkg-config: the paths are made relative to the file's own place, so the package can be moved.
file(RELATIVE_PATH TAVRIN_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" TAVRIN_PC_PREFIX "${TAVRIN_PC_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/tavrin.pc.in ${PROJECT_BINARY_DIR}/tavrin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavrin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
