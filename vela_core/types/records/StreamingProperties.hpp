// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/String.hpp"

#include <cstdint>

namespace vela {

/// A camera that streams over the network.
struct StreamingProperties {
    String ip;
    std::uint16_t port = 0;
    std::uint32_t serial = 0;
    int bitrate = 0;
};

/// Four lines, each with its line end: "IP : ", "Port : ", "SN : " and "Bitrate : ".
String toString(const StreamingProperties& properties);

}  // namespace vela
