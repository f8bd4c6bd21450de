// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>
#include <utility>

namespace vela VELA_API {

/// Kind of camera input.
enum class INPUT_TYPE : std::int32_t {
    USB = 0,     ///< a camera attached to this machine, by index or by serial number
    QVR = 1,     ///< a recorded file
    STREAM = 2,  ///< a camera on the network
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const INPUT_TYPE& value);

/// Where the capture library takes images from. A setter chooses a kind and stores the members of that kind
/// without checking them. The members of other kinds keep their values: readers use only those of the current
/// kind.
struct InputType {
    std::uint32_t kind = 0;  ///< 0 camera by index, 1 camera by serial number, 2 QVR file, 3 network stream
    std::uint32_t serial_number = 0;  ///< for kind 1
    std::uint32_t camera_index = 0;   ///< for kind 0: on this machine, from 0
    String path;                      ///< for kind 2; empty at first
    String address;                   ///< for kind 3: host name or IP address of the sender; empty at first
    std::uint16_t port = 0;           ///< for kind 3: port of the sender

    /// Chooses a camera of this machine by its index.
    void setFromCameraID(unsigned int id) {
        kind = 0;
        camera_index = id;
    }
    /// Chooses a camera of this machine by its serial number.
    void setFromSerialNumber(unsigned int serial) {
        kind = 1;
        serial_number = serial;
    }
    /// Chooses a recorded file.
    void setFromQVRFile(String file) {
        kind = 2;
        path = std::move(file);
    }
    /// Chooses a camera on the network: host name or IP address, and port, of the sender.
    void setFromStream(String sender, unsigned short senderPort) {
        kind = 3;
        address = std::move(sender);
        port = senderPort;
    }
};

}  // namespace vela
