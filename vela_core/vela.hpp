#pragma once

// The whole public API of the KITE SDK's core types. It brings in the CUDA runtime's types through
// vela_gpu/runtime.hpp and no other library.

#include "vela_core/geometry/Matrix3f.hpp"
#include "vela_core/geometry/Matrix4f.hpp"
#include "vela_core/geometry/Orientation.hpp"
#include "vela_core/geometry/Pose.hpp"
#include "vela_core/geometry/Rotation.hpp"
#include "vela_core/geometry/Transform.hpp"
#include "vela_core/geometry/Translation.hpp"
#include "vela_core/geometry/conversion.hpp"
#include "vela_core/geometry/mat_conversion.hpp"
#include "vela_core/log/CudaSafeCall.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/Frames.hpp"
#include "vela_core/types/Memory.hpp"
#include "vela_core/types/Resolution.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/utils/Mat.hpp"
#include "vela_core/utils/depth_export.hpp"
#include "vela_core/utils/image_conversion.hpp"
#include "vela_core/utils/point_cloud_export.hpp"
