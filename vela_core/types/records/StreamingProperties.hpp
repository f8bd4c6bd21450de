// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <cstdint>

namespace vela VELA_API {

/// A camera that streams over the network.
struct StreamingProperties {
    String ip;                 ///< address of the sender, as text; empty at first
    std::uint16_t port = 0;    ///< port of the sender; 0 means unknown
    std::uint32_t serial = 0;  ///< serial number of the camera; 0 means unknown
    int bitrate = 0;  ///< in kilobits per second, this library's convention: it only prints the number
};

/// Four lines, each ended by a line feed: "IP : ", "Port : ", "SN : " and "Bitrate : " with their values.
String toString(const StreamingProperties& properties);

}  // namespace vela
