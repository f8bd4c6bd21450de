# SPDX-License-Identifier: Apache-2.0
# cmake -DPROGRAM=... -DWANTED=TRUE|FALSE: WANTED says whether the program must load OpenCV.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ldd ${PROGRAM} OUTPUT_VARIABLE libraries COMMAND_ERROR_IS_FATAL ANY)
string(FIND "${libraries}" libopencv_core found)
if(found LESS 0 AND WANTED OR found GREATER_EQUAL 0 AND NOT WANTED)
    message(FATAL_ERROR "loading OpenCV was to be ${WANTED}:\n${libraries}")
endif()
execute_process(COMMAND ${PROGRAM} COMMAND_ERROR_IS_FATAL ANY)
