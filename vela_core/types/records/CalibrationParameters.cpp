// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/CalibrationParameters.hpp"

#include <cmath>

namespace vela {

float CalibrationParameters::getCameraBaseline() const {
    const Translation t = camera_pair_transform.getTranslation();
    return std::sqrt(t.tz * t.tz + (t.tx * t.tx + t.ty * t.ty));
}

}  // namespace vela
