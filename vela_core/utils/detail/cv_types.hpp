// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/types/PixelType.hpp"

#include <opencv2/core.hpp>

namespace vela::detail {

/// What OpenCV calls a pixel type, and whether `Mat::write` leaves images of that type to OpenCV.
struct CvType {
    MAT_TYPE value;
    int cvType;
    bool isEncoded;
};

/// Every pixel type, in the order of the values.
inline constexpr CvType CV_TYPES[] = {
    {MAT_TYPE::MAT_32F_C1, CV_32FC1, false}, {MAT_TYPE::MAT_32F_C2, CV_32FC2, false},
    {MAT_TYPE::MAT_32F_C3, CV_32FC3, false}, {MAT_TYPE::MAT_32F_C4, CV_32FC4, false},
    {MAT_TYPE::MAT_8U_C1, CV_8UC1, true},    {MAT_TYPE::MAT_8U_C2, CV_8UC2, false},
    {MAT_TYPE::MAT_8U_C3, CV_8UC3, true},    {MAT_TYPE::MAT_8U_C4, CV_8UC4, true},
    {MAT_TYPE::MAT_US16_C1, CV_16UC1, true}, {MAT_TYPE::MAT_8S_C4, CV_8SC4, true},
};

}  // namespace vela::detail
