# SPDX-License-Identifier: Apache-2.0
# Builds and runs the consumer against the library: cmake -DHOW=build|install|deb|subdirectory -P consume.cmake
cmake_minimum_required(VERSION 3.25)

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGV}")
    endif()
endfunction()

file(REMOVE_RECURSE ${FOLDER})
if(HOW STREQUAL "build")
    set(found -Dvela_DIR=${BUILD_TREE})
elseif(HOW STREQUAL "install")
    set(prefix ${FOLDER}/prefix)
    run(${CMAKE_COMMAND} --install ${BUILD_TREE} --prefix ${prefix})
elseif(HOW STREQUAL "deb")
    set(prefix ${FOLDER}/root/usr)
    run(${CMAKE_CPACK_COMMAND} -G DEB --config ${BUILD_TREE}/CPackConfig.cmake -B ${FOLDER}/deb)
    file(GLOB packages ${FOLDER}/deb/*.deb)
    list(LENGTH packages count)
    if(NOT count EQUAL 2)
        message(FATAL_ERROR "two packages are wanted: ${packages}")
    endif()
    foreach(package ${packages})
        run(dpkg-deb --extract ${package} ${FOLDER}/root)
        run(dpkg-deb --info ${package})
    endforeach()
else()
    # The whole library is built once more, so as fast as compilers can.
    set(found -DSOURCE_TREE=${SOURCE_TREE} -DVELA_GPU=${FLAVOUR} -DCMAKE_CXX_FLAGS_RELEASE=-O0
        -DCMAKE_CUDA_ARCHITECTURES=90)
endif()

if(prefix)
    set(found -DCMAKE_PREFIX_PATH=${prefix})
    # The private headers stay behind.
    file(GLOB_RECURSE private ${prefix}/include/*/detail/*)
    if(private)
        message(FATAL_ERROR "installed, though private: ${private}")
    endif()
    # What needs nothing but a compiler and pkg-config.
    file(GLOB_RECURSE description ${prefix}/*/vela.pc)
    cmake_path(GET description PARENT_PATH pkgconfig)
    cmake_path(GET pkgconfig PARENT_PATH libraries)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pkgconfig} pkg-config --cflags --libs vela
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS} -std=c++17 -DFILES mat_alone.cpp ${flags} -o ${FOLDER}/by_pkg_config")
    run(${CMAKE_COMMAND} -E chdir ${CMAKE_CURRENT_LIST_DIR} ${CXX} ${flags})
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libraries} ${FOLDER}/by_pkg_config)
endif()

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${FOLDER}/build -G Ninja ${found}
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=${CXX_FLAGS})
run(${CMAKE_COMMAND} --build ${FOLDER}/build --target app)
run(${FOLDER}/build/app)
