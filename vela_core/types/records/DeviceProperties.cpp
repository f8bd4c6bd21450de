// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/DeviceProperties.hpp"

#include "vela_core/types/detail/enum_table.hpp"
#include "vela_core/types/detail/text_format.hpp"

#include <string>

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<MODEL> MODEL_NAMES[] = {
    {MODEL::KITE, "KITE"},
    {MODEL::KITE_S, "KITE-S"},
    {MODEL::KITE_3, "KITE 3"},
    {MODEL::KITE_3E, "KITE 3e"},
};

constexpr EnumName<CAMERA_STATE> CAMERA_STATE_NAMES[] = {
    {CAMERA_STATE::AVAILABLE, "AVAILABLE"},
    {CAMERA_STATE::NOT_AVAILABLE, "NOT AVAILABLE"},
};

}  // namespace

String toString(const MODEL& value) {
    return nameIn(MODEL_NAMES, value);
}

String toString(const CAMERA_STATE& value) {
    return nameIn(CAMERA_STATE_NAMES, value);
}

String model2str(MODEL model) {
    return toString(model);
}

String toString(const DeviceProperties& properties) {
    std::string text = formatText("%s (%d) ", toString(properties.model).c_str(), properties.id);
    text += toStdString(properties.path);
    if (properties.serial != 0) text += formatText(" SN%u", properties.serial);
    return text + " " + toString(properties.state).c_str();
}

}  // namespace vela
