# What `cmake --install` installs: headers, library, test kit, tool, and the files by which
# find_package and pkg-config find them.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvoAPI)

install(DIRECTORY OrvoAPI testing/OrvoAPI ${PROJECT_BINARY_DIR}/include/OrvoAPI
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE)
install(TARGETS OrvoAPI OrvoAPITesting EXPORT OrvoAPITargets)
install(EXPORT OrvoAPITargets NAMESPACE OrvoAPI:: DESTINATION ${package_dir})
if(TARGET orvo)
  file(RELATIVE_PATH bin_to_lib
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(orvo PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS orvo)
endif()
if(TARGET orvo-picture)
  install(TARGETS orvo-picture DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/orvo)
endif()

configure_package_config_file(cmake/OrvoAPIConfig.cmake.in
  ${PROJECT_BINARY_DIR}/OrvoAPIConfig.cmake INSTALL_DESTINATION ${package_dir})
# Before 1.0 a minor version may change the interface.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvoAPIConfigVersion.cmake
  COMPATIBILITY ${compatibility})
install(FILES ${PROJECT_BINARY_DIR}/OrvoAPIConfig.cmake
  ${PROJECT_BINARY_DIR}/OrvoAPIConfigVersion.cmake DESTINATION ${package_dir})

# pkg-config reads the private requirements of a shared library too when it is asked for compiler
# flags, so they are named only where they are needed.
if(NOT BUILD_SHARED_LIBS)
  set(pc_private_requires "libcurl simdjson liburiparser")
  set(pc_private_libs "-lstdc++ -pthread")
endif()
file(RELATIVE_PATH pc_dir_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/orvoapi.pc.in ${PROJECT_BINARY_DIR}/orvoapi.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvoapi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
