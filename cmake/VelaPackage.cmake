# SPDX-License-Identifier: Apache-2.0
# Debian packages of a shared build: cpack -G DEB --config build/NAME/CPackConfig.cmake
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "KITE <kite@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "core types of a stereo camera's SDK")
set(CPACK_PACKAGE_DESCRIPTION "Images, depth maps, point clouds, poses, sensor samples and detections, as the programs of a
stereo camera exchange them, and their files.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvela${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
# One of our libraries depends on another, which no package has yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/vela_io)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvela-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libvela${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "libeigen3-dev, libopencv-dev, quill-dev")
include(CPack)
