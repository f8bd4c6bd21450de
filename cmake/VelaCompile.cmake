# SPDX-License-Identifier: Apache-2.0
# How our own targets are compiled; none of it reaches users of the library.
option(VELA_WARNINGS_AS_ERRORS "Treat warnings in our own sources as errors" OFF)

# An optimised build unless the user asks for another.
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)

function(vela_add_warnings target)
    target_compile_options(${target} PRIVATE
        $<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion>
        $<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=-Wall,-Wextra,-Wshadow>)
    if(VELA_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE
            $<$<COMPILE_LANGUAGE:CXX>:-Werror>
            $<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=-Werror;-Werror=all-warnings>)
    endif()
endfunction()

# Compiles the target's sources in groups of this size (0: all in one), for headers that cost more than the sources.
function(vela_group_sources target size)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${size})
    if(CMAKE_CXX_CLANG_TIDY)  # it would complain about the source that includes the others
        set_property(TARGET ${target} APPEND PROPERTY CXX_CLANG_TIDY --checks=-bugprone-suspicious-include)
    endif()
endfunction()

# What all installed libraries have in common: a version, and nothing exported that is not public.
function(vela_set_up_library library)
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_target_properties(${library} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        CUDA_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        INSTALL_RPATH $ORIGIN
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    target_link_options(${library} PRIVATE LINKER:--version-script=${exports} LINKER:--no-undefined)
    set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${exports})
    vela_add_warnings(${library})
endfunction()

# Disables FMA contraction in the sources, or in the whole target when none are given, so that they compute the same
# bits on every CPU and GPU.
function(vela_keep_bits target)
    set(options $<$<COMPILE_LANGUAGE:CXX>:-ffp-contract=off> $<$<COMPILE_LANGUAGE:CUDA>:-fmad=false>)
    if(ARGN)
        set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS ${options})
    else()
        target_compile_options(${target} PRIVATE ${options})
    endif()
endfunction()
