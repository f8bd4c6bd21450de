// SPDX-License-Identifier: Apache-2.0
// Includes all headers twice in one file; that it compiles shows that they do not clash.
#include "vela_interop/dlpack.hpp"
#include "vela_interop/eigen.hpp"
#include "vela_interop/opencv.hpp"
#include "vela_interop/pcl.hpp"
#include "vela_interop/ros.hpp"
#include "vela_interop/view.hpp"
// NOLINTBEGIN(readability-duplicate-include)
#include "vela_interop/dlpack.hpp"
#include "vela_interop/eigen.hpp"
#include "vela_interop/opencv.hpp"
#include "vela_interop/pcl.hpp"
#include "vela_interop/ros.hpp"
#include "vela_interop/view.hpp"
// NOLINTEND(readability-duplicate-include)
