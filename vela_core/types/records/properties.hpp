#pragma once

#include "vela_core/types/Camera.hpp"
#include "vela_core/types/String.hpp"

#include <cstdint>

namespace vela {

/// A camera found on this machine.
struct DeviceProperties {
    CAMERA_STATE state = CAMERA_STATE::NOT_AVAILABLE;
    int id = -1;  ///< index on this machine
    String path;  ///< system device, may be empty
    MODEL model = MODEL::KITE;
    std::uint32_t serial = 0;  ///< 0 is unknown
};

/// A camera that streams over the network.
struct StreamingProperties {
    String ip;
    std::uint16_t port = 0;
    std::uint32_t serial = 0;
    int bitrate = 0;
};

/// "MODEL (ID) PATH SNSERIAL STATE"; without path and serial number two blanks stand before the state.
String toString(const DeviceProperties& properties);

/// Four lines, each with its line end: "IP : ", "Port : ", "SN : " and "Bitrate : ".
String toString(const StreamingProperties& properties);

}  // namespace vela
