# SPDX-License-Identifier: Apache-2.0
# Headers of PCL and ROS, for tests and examples only: VELA_PCL_INCLUDE and VELA_ROS_INCLUDE, empty where they or
# Boost, which they include, are missing. Only their types are used, so nothing is linked.
file(GLOB vela_pcl_folders /usr/include/pcl-*)
find_path(VELA_PCL_INCLUDE pcl/point_cloud.h HINTS ${vela_pcl_folders})
find_path(VELA_ROS_INCLUDE sensor_msgs/PointCloud2.h)
find_path(VELA_BOOST_INCLUDE boost/version.hpp)
mark_as_advanced(VELA_PCL_INCLUDE VELA_ROS_INCLUDE VELA_BOOST_INCLUDE)
if(NOT VELA_BOOST_INCLUDE)
    set(VELA_PCL_INCLUDE "")
    set(VELA_ROS_INCLUDE "")
endif()
