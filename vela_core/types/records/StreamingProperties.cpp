// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/StreamingProperties.hpp"

#include "vela_core/types/detail/text_format.hpp"

namespace vela {
using namespace detail;

String toString(const StreamingProperties& properties) {
    return formatText("IP : %s\nPort : %d\nSN : %u\nBitrate : %d\n", toStdString(properties.ip).c_str(),
                      properties.port, properties.serial, properties.bitrate);
}

}  // namespace vela
