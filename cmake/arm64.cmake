# SPDX-License-Identifier: Apache-2.0
# 64-bit ARM Linux, built and tested on another machine; scripts/arm64_sysroot prepares what this needs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
get_filename_component(VELA_ARM64_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64_sysroot ABSOLUTE)
if(NOT EXISTS ${VELA_ARM64_SYSROOT}/complete)
    message(FATAL_ERROR "the libraries for ARM are not here: run scripts/arm64_sysroot first")
endif()
set(CMAKE_FIND_ROOT_PATH ${VELA_ARM64_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Where the libraries that OpenCV needs are, for the linker and for qemu.
set(folders usr/lib/aarch64-linux-gnu lib/aarch64-linux-gnu usr/lib)
list(TRANSFORM folders PREPEND ${VELA_ARM64_SYSROOT}/)
list(JOIN folders : VELA_ARM64_LIBRARIES)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${VELA_ARM64_LIBRARIES}")
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-aarch64 -L ${VELA_ARM64_SYSROOT} -E LD_LIBRARY_PATH=${VELA_ARM64_LIBRARIES})
