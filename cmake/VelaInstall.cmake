# Makes the library usable by find_package, from an install prefix and from the build tree.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(vela_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vela)
configure_package_config_file(cmake/velaConfig.cmake.in ${PROJECT_BINARY_DIR}/velaConfig.cmake
    INSTALL_DESTINATION ${vela_config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velaConfigVersion.cmake COMPATIBILITY SameMajorVersion)

install(TARGETS vela_core EXPORT velaTargets)
install(EXPORT velaTargets NAMESPACE vela:: DESTINATION ${vela_config_dir})
install(FILES ${PROJECT_BINARY_DIR}/velaConfig.cmake ${PROJECT_BINARY_DIR}/velaConfigVersion.cmake
    DESTINATION ${vela_config_dir})
install(DIRECTORY vela_core vela_gpu vela_interop DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.hpp")
export(EXPORT velaTargets NAMESPACE vela:: FILE ${PROJECT_BINARY_DIR}/velaTargets.cmake)
