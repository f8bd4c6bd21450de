# SPDX-License-Identifier: Apache-2.0
# Runs an example in a separate folder and compares its whole output with a file.
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${PROGRAM} WORKING_DIRECTORY ${FOLDER} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${WANTED} wanted)
if(NOT status EQUAL 0 OR NOT printed STREQUAL wanted)
    message(FATAL_ERROR "exit code ${status}, printed:\n${printed}")
endif()
