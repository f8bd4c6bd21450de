# SPDX-License-Identifier: Apache-2.0
# The point 1 2 3 of a camera, in millimetres, lies 3 mm ahead, 1 mm to the right and 2 mm below.
file(MAKE_DIRECTORY ${FOLDER})
file(WRITE ${FOLDER}/theirs.ply
    "ply\nformat ascii 1.0\nelement vertex 1\nproperty double x\nproperty double y\nproperty double z\nend_header\n1 2 3\n")
execute_process(COMMAND ${PROGRAM} ${FOLDER}/theirs.ply ${FOLDER}/ours.xyz COMMAND_ERROR_IS_FATAL ANY)
file(READ ${FOLDER}/ours.xyz ours)
set(wanted "# unit meter\n# axes RIGHT_HANDED_Z_UP_AND_X_FORWARD\n# x y z\n3e-3 -1e-3 -2e-3\n")
if(NOT ours STREQUAL wanted)
    message(FATAL_ERROR "convert_cloud wrote\n${ours}instead of\n${wanted}")
endif()
execute_process(COMMAND ${PROGRAM} ${FOLDER}/none.ply ${FOLDER}/b.xyz RESULT_VARIABLE status ERROR_VARIABLE text)
if(NOT status EQUAL 1 OR NOT text STREQUAL "${FOLDER}/none.ply: no such file or directory\n")
    message(FATAL_ERROR "a missing file: ${status}, ${text}")
endif()
