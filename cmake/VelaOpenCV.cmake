# SPDX-License-Identifier: Apache-2.0
# VELA_OPENCV_LINK: OpenCV as programs link it. Shared libraries are named to the linker, but only a program that uses
# them loads them; static ones are linked as usual, since only the objects that are used get in.
get_target_property(vela_opencv_type opencv_core TYPE)
if(vela_opencv_type STREQUAL "STATIC_LIBRARY")
    set(VELA_OPENCV_LINK opencv_imgcodecs opencv_calib3d opencv_core)
else()
    set(VELA_OPENCV_LINK "-Wl,--push-state,--as-needed")
    foreach(library opencv_imgcodecs opencv_calib3d opencv_core)
        get_target_property(vela_opencv_path ${library} LOCATION)
        string(APPEND VELA_OPENCV_LINK ",${vela_opencv_path}")
    endforeach()
    string(APPEND VELA_OPENCV_LINK ",--pop-state")
endif()
