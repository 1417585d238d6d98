# SPDX-License-Identifier: MIT
# cmake --install: the library, <traguardo/exports.h>, a pkg-config file, a CMake package (traguardo::traguardo), the tool,
# its man page and the licence.
include(CMakePackageConfigHelpers)

install(TARGETS traguardo EXPORT traguardo-targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES src/api/exports.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/traguardo)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/traguardo)
install(EXPORT traguardo-targets NAMESPACE traguardo:: DESTINATION ${package_folder})
configure_package_config_file(cmake/traguardo-config.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/traguardo-config.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/traguardo-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/traguardo-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/traguardo-config-version.cmake DESTINATION ${package_folder})

# From the file's own place to the prefix, so that an installed copy can be moved as a whole.
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(cmake/traguardo.pc.in ${CMAKE_CURRENT_BINARY_DIR}/traguardo.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/traguardo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
