# What `cmake --install` installs: headers, library, test kit, tool, and the files by which
# find_package and pkg-config find them. Each file belongs to one of the components runtime (the
# shared library), dev, testing and tool.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvoAPI)
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(DIRECTORY OrvoAPI ${PROJECT_BINARY_DIR}/include/OrvoAPI
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE)
install(TARGETS OrvoAPI EXPORT OrvoAPITargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE COMPONENT dev)
install(EXPORT OrvoAPITargets NAMESPACE OrvoAPI:: DESTINATION ${package_dir} COMPONENT dev)
install(DIRECTORY testing/OrvoAPI DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT testing
  FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE)
install(TARGETS OrvoAPITesting EXPORT OrvoAPITestingTargets ARCHIVE COMPONENT testing)
install(EXPORT OrvoAPITestingTargets NAMESPACE OrvoAPI:: DESTINATION ${package_dir}
  COMPONENT testing)
if(TARGET orvo)
  file(RELATIVE_PATH bin_to_lib
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(orvo PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS orvo COMPONENT tool)
endif()
if(TARGET orvo-picture)
  install(TARGETS orvo-picture DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/orvo COMPONENT tool)
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
  ${PROJECT_BINARY_DIR}/OrvoAPIConfigVersion.cmake DESTINATION ${package_dir} COMPONENT dev)

# Whoever links the static library links what it needs. These are public requirements because
# `pkg-config --static` would also ask for all that a static libcurl needs.
if(NOT BUILD_SHARED_LIBS)
  set(pc_requires "libcurl simdjson liburiparser")
  set(pc_libs " -pthread")
  set(pc_private_libs "-lstdc++")
endif()
file(RELATIVE_PATH pc_dir_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(module IN ITEMS orvoapi orvoapi-testing)
  configure_file(cmake/${module}.pc.in ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/orvoapi.pc DESTINATION ${pc_dir} COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/orvoapi-testing.pc DESTINATION ${pc_dir} COMPONENT testing)
