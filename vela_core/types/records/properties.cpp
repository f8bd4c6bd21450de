#include "vela_core/types/records/properties.hpp"

#include "vela_core/types/detail/text_format.hpp"
#include "vela_core/types/enum_names.hpp"

namespace vela {

String toString(const DeviceProperties& properties) {
    std::string text = formatText("%s (%d) ", toString(properties.model).c_str(), properties.id);
    text += toStdString(properties.path);
    if (properties.serial != 0) text += formatText(" SN%u", properties.serial);
    return text + " " + toString(properties.state).c_str();
}

String toString(const StreamingProperties& properties) {
    return formatText("IP : %s\nPort : %d\nSN : %u\nBitrate : %d\n", toStdString(properties.ip).c_str(),
                      properties.port, properties.serial, properties.bitrate);
}

}  // namespace vela
