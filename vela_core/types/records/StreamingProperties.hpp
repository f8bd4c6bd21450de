// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <cstdint>

namespace vela VELA_API {

/// A camera that streams over the network.
struct StreamingProperties {
    String ip;                 ///< of the sender, as text; empty at first
    std::uint16_t port = 0;    ///< of the sender; 0 is unknown
    std::uint32_t serial = 0;  ///< of the camera; 0 is unknown
    int bitrate = 0;           ///< kilobits per second
};

/// Four lines, each with its line end: "IP : ", "Port : ", "SN : " and "Bitrate : ".
String toString(const StreamingProperties& properties);

}  // namespace vela
