# Builds and runs the consumer against the library: cmake -DHOW=build|install|subdirectory -P consume.cmake
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
    run(${CMAKE_COMMAND} --install ${BUILD_TREE} --prefix ${FOLDER}/prefix)
    set(found -DCMAKE_PREFIX_PATH=${FOLDER}/prefix)
else()
    # The whole library is built once more, so as fast as compilers can.
    set(found -DSOURCE_TREE=${SOURCE_TREE} -DVELA_GPU=${FLAVOUR} -DCMAKE_CXX_FLAGS_RELEASE=-O0
        -DCMAKE_CUDA_ARCHITECTURES=90)
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${FOLDER}/build -G Ninja ${found}
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=${CXX_FLAGS})
run(${CMAKE_COMMAND} --build ${FOLDER}/build --target app)
run(${FOLDER}/build/app)
