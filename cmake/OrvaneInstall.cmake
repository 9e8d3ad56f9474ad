# `cmake --install`: libraries, headers under their own paths, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS orvane orvane_platform EXPORT OrvaneTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY orvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "lanes/*-inl.h" EXCLUDE)
if(TARGET orvane_tool)
  install(TARGETS orvane_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Orvane)
install(EXPORT OrvaneTargets NAMESPACE Orvane:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/OrvaneConfig.cmake.in ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The prefix as seen from the file itself, so that an installed tree can be moved.
file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/orvane.pc.in ${PROJECT_BINARY_DIR}/orvane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
