// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/ErrorCode.hpp"

#include "vela_core/types/detail/enum_table.hpp"
#include "vela_gpu/runtime.hpp"

#include <string>

namespace vela {
using namespace detail;
namespace {

constexpr const char* UNKNOWN_MESSAGE = "Unknown error";

struct ErrorTexts {
    const char* name;
    const char* message;
};

// Indexed by value. These texts are part of the interface, typos included ("INVALID ARE FILE", "choosen").
constexpr ErrorTexts ERROR_TEXTS[] = {
    {"SUCCESS", "The function works as expected."},
    {"FAILURE", "The function does not perform as expected."},
    {"NO GPU COMPATIBLE", "An NVIDIA GPU (Kepler or newer) is required to run this software."},
    {"NOT ENOUGH GPU MEMORY", "GPU memory limit reached."},
    {"CAMERA NOT DETECTED", "Camera not detected. Replug your device or connect to another USB port."},
    {},  // reserved
    {"CAMERA MOTION SENSORS NOT DETECTED", "Reconnect your KITE, the device did not properly start."},
    {"INVALID RESOLUTION",
     "The Jetson TX1 do not support the selected resolution and frame rate. Try a lower "
     "resolution or frame rate."},
    {"LOW USB BANDWIDTH", "Cannot capture images from camera. Connect the device to another USB port."},
    {"CALIBRATION FILE NOT AVAILABLE",
     "Calibration file not found. Download your factory calibration file from "
     "calibration.kite.example or use KITE calibration tool to recalibrate."},
    {"INVALID CALIBRATION FILE",
     "Calibration file found but it is corrupted. Download your factory calibration file from "
     "calibration.kite.example or use KITE calibration tool to recalibrate."},
    {"INVALID QVR FILE", "Invalid QVR file."},
    {"QVR RECORDING ERROR",
     "Cannot record QVR. Make sure you have administrator rights and enough storage space to "
     "write the QVR."},
    {"QVR UNSUPPORTED HARDWARE FOR COMPRESSION",
     "Cannot record QVR due to unsupported compression mode. Make sure your graphic card is "
     "compatible with the choosen mode. Note that HEVC compression mode is mostly supported "
     "on Pascal NVIDIA graphic card only."},
    {"END OF QVR FILE REACHED", "End of QVR file has been reached. No more frames available."},
    {"INVALID COORDINATE SYSTEM", "Invalid coordinate system."},
    {"INVALID FIRMWARE", "Your firmware needs to be updated. Please update it in KITE Explorer."},
    {"INVALID FUNCTION PARAMETERS", "Invalid function arguments detected."},
    {"CUDA ERROR", "A CUDA related error has been caught, data may be corrupted."},
    {"CAMERA NOT INITIALIZED", "Camera:open must be called before using any other functions of the API."},
    {"NVIDIA DRIVER OUT OF DATE", "Your graphics driver need to be updated."},
    {"INVALID FUNCTION CALL",
     "This function call cannot be processed because of the current state of your Camera "
     "instance."},
    {"CORRUPTED SDK INSTALLATION",
     "Corrupted SDK detected. Please reinstall the KITE SDK, or check for missing "
     "dependencies when using vela_ai(cuDNN, TensorRT)."},
    {"INCOMPATIBLE SDK VERSION",
     "The software you are using is not compatible with your current SDK version. Please "
     "update to a compatible KITE SDK."},
    {"INVALID ARE FILE", "Invalid area file. Make sure to specify the path of an existing '.area' file."},
    {"INCOMPATIBLE AREA FILE",
     "The area file you are using has not been recorded with the same DEPTH_MODE. Either "
     "select the DEPTH_MODE used to create the area file, or create a new one."},
    {"CAMERA FAILED TO SETUP",
     "Unable to open camera. Replug your device or connect to another USB 3.0 port."},
    {"CAMERA DETECTION ISSUE",
     "Camera not detected. Replug your device on USB 3.0 or flip the Type-C connector "
     "(KITE-S)."},
    {"CAMERA STREAM FAILED TO START",
     "Cannot start camera stream. Make sure your camera is not already used by another "
     "process or blocked by firewall or antivirus."},
    {"NO GPU DETECTED",
     "No NVIDIA graphics card detected. Install an NVIDIA GPU, CUDA and restart your computer "
     "after completing installation."},
    {"PLANE NOT FOUND", "No plane detected in the scene or at the specified coordinates."},
    {"MODULE NOT COMPATIBLE WITH CAMERA", "The object detection module is not compatible with the KITE"},
    {"MOTION SENSORS REQUIRED",
     "The module needs the sensors to be enabled (see InitParameters::sensors_required) "},
    {"MODULE NOT COMPATIBLE WITH CUDA VERSION",
     "Some features requires newer version of CUDA to be supported (CUDA 10.2 or newer)"},
};

/// The texts of a code, or null for a value without enumerator.
const ErrorTexts* findTexts(ERROR_CODE code) {
    const ErrorTexts* const texts = rowAt(ERROR_TEXTS, code);
    return texts == nullptr || texts->name == nullptr ? nullptr : texts;
}

}  // namespace

String toString(const ERROR_CODE& code) {
    // Asking for the name clears the error; callers rely on it.
    if (code == ERROR_CODE::CUDA_ERROR) cudaGetLastError();
    const ErrorTexts* const texts = findTexts(code);
    return texts == nullptr ? UNKNOWN_NAME : texts->name;
}

String toVerbose(const ERROR_CODE& code) {
    const ErrorTexts* const texts = findTexts(code);
    if (texts == nullptr) return UNKNOWN_MESSAGE;
    if (code != ERROR_CODE::CUDA_ERROR) return texts->message;
    return std::string(texts->message) + " CUDA Err: " + cudaGetErrorString(cudaGetLastError());
}

String errorCode2str(ERROR_CODE code) {
    return toString(code);
}

}  // namespace vela
