# SPDX-License-Identifier: Apache-2.0
# Makes a program that runs where nothing of ours is installed: it needs the C library and nothing else.
function(vela_make_portable target)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/arc4random.cpp)
    # Code that needs OpenCV is not linked in, so --as-needed drops its libraries.
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc LINKER:--as-needed)
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
endfunction()
