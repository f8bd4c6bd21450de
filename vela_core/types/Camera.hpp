#pragma once

#include <cstdint>

namespace vela {

/// Camera model.
enum class MODEL : std::int32_t {
    KITE = 0,
    KITE_S = 1,
    KITE_3 = 2,
    KITE_3E = 3,
};

/// Kind of camera input.
enum class INPUT_TYPE : std::int32_t {
    USB = 0,
    QVR = 1,     ///< a recorded file
    STREAM = 2,  ///< a camera on the network
};

/// Whether a camera can be opened.
enum class CAMERA_STATE : std::int32_t {
    AVAILABLE = 0,
    NOT_AVAILABLE = 1,
};

}  // namespace vela
