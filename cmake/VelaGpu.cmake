# SPDX-License-Identifier: Apache-2.0
# Chooses what the library runs on: the CUDA runtime, or the software device.
set(VELA_GPU auto CACHE STRING "cuda, software, or auto: cuda where a toolkit and a driver are present")
set_property(CACHE VELA_GPU PROPERTY STRINGS auto cuda software)
if(NOT VELA_GPU MATCHES "^(auto|cuda|software)$")
    message(FATAL_ERROR "VELA_GPU is '${VELA_GPU}'; it must be auto, cuda or software")
endif()

# The toolkit's default folder is often not on PATH.
find_program(VELA_NVCC nvcc
    HINTS ENV CUDACXX ENV CUDA_PATH ENV CUDA_HOME
    PATHS /usr/local/cuda
    PATH_SUFFIXES bin)
mark_as_advanced(VELA_NVCC)

set(VELA_GPU_FLAVOUR ${VELA_GPU})
if(VELA_GPU STREQUAL "auto")
    set(VELA_GPU_FLAVOUR software)
    # The first two are discrete cards, the last two embedded boards.
    foreach(driver /proc/driver/nvidia/version /dev/nvidiactl /dev/nvhost-gpu /etc/nv_tegra_release)
        if(VELA_NVCC AND EXISTS ${driver})
            set(VELA_GPU_FLAVOUR cuda)
        endif()
    endforeach()
endif()
message(STATUS "vela: GPU flavour is ${VELA_GPU_FLAVOUR} (VELA_GPU=${VELA_GPU})")

if(VELA_GPU_FLAVOUR STREQUAL "cuda")
    if(NOT CMAKE_CUDA_COMPILER AND NOT DEFINED ENV{CUDACXX})
        if(NOT VELA_NVCC)
            message(FATAL_ERROR "VELA_GPU=cuda needs nvcc; set CMAKE_CUDA_COMPILER or use VELA_GPU=software")
        endif()
        set(CMAKE_CUDA_COMPILER ${VELA_NVCC})
    endif()
    if(NOT DEFINED CMAKE_CUDA_ARCHITECTURES)
        # 8.7 are embedded boards; the last entry adds PTX for later ones.
        set(CMAKE_CUDA_ARCHITECTURES 75-real 80-real 86-real 87-real 89-real 90)
    endif()
    enable_language(CUDA)
    set(CMAKE_CUDA_STANDARD 17)
    set(CMAKE_CUDA_EXTENSIONS OFF)
    find_package(CUDAToolkit REQUIRED)
endif()

# Adds the chosen flavour to a target, and the macro that names it to users.
function(vela_add_gpu_sources target)
    if(VELA_GPU_FLAVOUR STREQUAL "cuda")
        target_sources(${target} PRIVATE vela_gpu/kernels/launchers.cu)
        target_compile_definitions(${target} PUBLIC VELA_GPU_CUDA=1)
        target_link_libraries(${target} PUBLIC CUDA::cudart_static)
        vela_keep_bits(${target} vela_gpu/kernels/launchers.cu)
    else()
        target_sources(${target} PRIVATE
            vela_gpu/software/detail/DeviceMemory.cpp
            vela_gpu/software/detail/SoftwareDevice.cpp
            vela_gpu/software/error_texts.cpp
            vela_gpu/kernels/launchers.cpp
            vela_gpu/software/runtime.cpp)
        target_compile_definitions(${target} PUBLIC VELA_GPU_SOFTWARE=1)
    endif()
endfunction()
