# SPDX-License-Identifier: Apache-2.0
# Makes the library usable by find_package and pkg-config, from an install prefix and from the build tree.
if(NOT VELA_INSTALL)
    return()
endif()
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(vela_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vela)
configure_package_config_file(cmake/velaConfig.cmake.in ${PROJECT_BINARY_DIR}/velaConfig.cmake
    INSTALL_DESTINATION ${vela_config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
configure_file(cmake/VelaOpenCV.cmake ${PROJECT_BINARY_DIR}/VelaOpenCV.cmake COPYONLY)

install(TARGETS vela_core vela_core_opencv vela_core_all EXPORT velaTargets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE COMPONENT dev
    FILE_SET HEADERS COMPONENT dev
    FILE_SET generated COMPONENT dev)
export(EXPORT velaTargets NAMESPACE vela:: FILE ${PROJECT_BINARY_DIR}/velaTargets.cmake)
install(EXPORT velaTargets NAMESPACE vela:: DESTINATION ${vela_config_dir} COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/velaConfig.cmake ${PROJECT_BINARY_DIR}/velaConfigVersion.cmake
    cmake/VelaOpenCV.cmake
    DESTINATION ${vela_config_dir} COMPONENT dev)

install(DIRECTORY vela_interop DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.hpp")

# The .pc file's own location gives the folders. --as-needed drops libraries that a program does not use.
file(RELATIVE_PATH vela_pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" vela_pc_prefix "${vela_pc_prefix}")
set(vela_pc_flavour VELA_GPU_SOFTWARE)
set(vela_pc_gpu "")
if(VELA_GPU_FLAVOUR STREQUAL "cuda")
    set(vela_pc_flavour VELA_GPU_CUDA)
    set(vela_pc_gpu "-L${CUDAToolkit_LIBRARY_DIR} -lcudart_static -ldl -lrt")
endif()
if(BUILD_SHARED_LIBS)
    set(vela_pc_libs "-lvela_core -Wl,--push-state,--as-needed,-lvela_core_opencv,--pop-state")
else()
    set(vela_pc_libs "-lvela_core_opencv -lvela_core -Wl,--push-state,--as-needed,-lopencv_imgcodecs,-lopencv_calib3d,-lopencv_core,--pop-state -pthread ${vela_pc_gpu}")
endif()
set(vela_io_pc_libs "-lvela_io")
if(NOT BUILD_SHARED_LIBS)
    string(APPEND vela_io_pc_libs " -lpng -lz")
endif()
set(vela_pc_names vela)
if(VELA_BUILD_IO)
    list(APPEND vela_pc_names vela_io)
endif()
foreach(name ${vela_pc_names})
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endforeach()
