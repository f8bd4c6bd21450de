# Runs the example and compares all that it prints; what it logs goes to standard error.
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${PROGRAM} WORKING_DIRECTORY ${FOLDER} OUTPUT_VARIABLE printed ERROR_VARIABLE logged
    RESULT_VARIABLE status)
set(wanted [[
allocated                    owns
the caller's array holds     30
wrapped                      refers
the owner sees               1
copied                       refers
cloned                       owns
moved from                   empty
moved to                     owns
copied to the GPU            owns
a reference may not move:    FAILURE
nor grow a second side:      FAILURE
read back:                   n/a Ts 0 vela::Mat of size [4,3], with 3 channels of type uchar allocated on CPU (memory owned).
]])
if(NOT status EQUAL 0 OR NOT printed STREQUAL wanted)
    message(FATAL_ERROR "exit code ${status}, printed:\n${printed}")
endif()
if(NOT logged MATCHES "updateGPUfromCPU for reference Mat is forbidden")
    message(FATAL_ERROR "logged:\n${logged}")
endif()
