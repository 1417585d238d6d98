# cmake --install: the library, <traguardo/exports.h>, a pkg-config file, a CMake package (traguardo::traguardo), the tool and
# its man page.
include(CMakePackageConfigHelpers)

set_target_properties(traguardo PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
install(TARGETS traguardo EXPORT traguardo-targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES src/api/exports.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/traguardo)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/traguardo)
install(EXPORT traguardo-targets NAMESPACE traguardo:: DESTINATION ${package_folder})
configure_package_config_file(cmake/traguardo-config.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/traguardo-config.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/traguardo-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/traguardo-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/traguardo-config-version.cmake DESTINATION ${package_folder})

configure_file(cmake/traguardo.pc.in ${CMAKE_CURRENT_BINARY_DIR}/traguardo.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/traguardo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
