// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Status of every operation that can fail. Only `SUCCESS` means success; value 5 is reserved. `toVerbose`
/// has a sentence for each.
enum class ERROR_CODE : std::int32_t {
    SUCCESS = 0,
    FAILURE = 1,
    NO_GPU_COMPATIBLE = 2,
    NOT_ENOUGH_GPU_MEMORY = 3,
    CAMERA_NOT_DETECTED = 4,
    CAMERA_MOTION_SENSORS_NOT_DETECTED = 6,
    INVALID_RESOLUTION = 7,
    LOW_USB_BANDWIDTH = 8,
    CALIBRATION_FILE_NOT_AVAILABLE = 9,
    INVALID_CALIBRATION_FILE = 10,
    INVALID_QVR_FILE = 11,
    QVR_RECORDING_ERROR = 12,
    QVR_UNSUPPORTED_HARDWARE_FOR_COMPRESSION = 13,
    END_OF_QVR_FILE_REACHED = 14,
    INVALID_COORDINATE_SYSTEM = 15,
    INVALID_FIRMWARE = 16,
    INVALID_FUNCTION_PARAMETERS = 17,
    CUDA_ERROR = 18,
    CAMERA_NOT_INITIALIZED = 19,
    NVIDIA_DRIVER_OUT_OF_DATE = 20,
    INVALID_FUNCTION_CALL = 21,
    CORRUPTED_SDK_INSTALLATION = 22,
    INCOMPATIBLE_SDK_VERSION = 23,
    INVALID_AREA_FILE = 24,
    INCOMPATIBLE_AREA_FILE = 25,
    CAMERA_FAILED_TO_SETUP = 26,
    CAMERA_DETECTION_ISSUE = 27,
    CAMERA_STREAM_FAILED_TO_START = 28,
    NO_GPU_DETECTED = 29,
    PLANE_NOT_FOUND = 30,
    MODULE_NOT_COMPATIBLE_WITH_CAMERA = 31,
    MOTION_SENSORS_REQUIRED = 32,
    MODULE_NOT_COMPATIBLE_WITH_CUDA_VERSION = 33,
};

/// Display name in upper case; "Unknown" for a value without enumerator.
/// Asking for the name of `CUDA_ERROR` clears the last CUDA error of the calling thread.
String toString(const ERROR_CODE& code);

/// Sentence for the user; "Unknown error" for a value without enumerator.
/// For `CUDA_ERROR` it ends with the text of the calling thread's last CUDA error and clears that error.
String toVerbose(const ERROR_CODE& code);

/// The same text as `toString`.
String errorCode2str(ERROR_CODE code);

}  // namespace vela
