// SPDX-License-Identifier: Apache-2.0
#pragma once

// Needs OpenCV's core module in the program that includes it; link vela::opencv. Nothing of OpenCV crosses
// into the library, so its own OpenCV may be another version.

#include "vela_core/utils/Mat.hpp"

#include <climits>
#include <cstddef>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <utility>

/// Exchange with other libraries: views where memory can be shared, transfers of ownership, checked copies.
namespace vela::interop {

/// A pixel type and the OpenCV type of the same channels and elements.
struct CvType {
    MAT_TYPE type;  ///< ours
    int cv;         ///< OpenCV's
};
/// All pixel types with their OpenCV types.
inline constexpr CvType CV_TYPES[] = {{MAT_TYPE::MAT_32F_C1, CV_32FC1},  {MAT_TYPE::MAT_32F_C2, CV_32FC2},
                                      {MAT_TYPE::MAT_32F_C3, CV_32FC3},  {MAT_TYPE::MAT_32F_C4, CV_32FC4},
                                      {MAT_TYPE::MAT_8U_C1, CV_8UC1},    {MAT_TYPE::MAT_8U_C2, CV_8UC2},
                                      {MAT_TYPE::MAT_8U_C3, CV_8UC3},    {MAT_TYPE::MAT_8U_C4, CV_8UC4},
                                      {MAT_TYPE::MAT_US16_C1, CV_16UC1}, {MAT_TYPE::MAT_8S_C4, CV_8SC4}};

/// OpenCV's type of a pixel type; nothing for a value without enumerator.
inline std::optional<int> toCvType(MAT_TYPE type) {
    for (const CvType& row : CV_TYPES) {
        if (row.type == type) return row.cv;
    }
    return std::nullopt;
}

/// The pixel type of an OpenCV type; nothing for one that no Mat has.
inline std::optional<MAT_TYPE> fromCvType(int type) {
    for (const CvType& row : CV_TYPES) {
        if (row.cv == type) return row.type;
    }
    return std::nullopt;
}

/// A cv::Mat header on the host side of a Mat: no copy, with the Mat's row step and order of channels.
///
/// Empty when the Mat has no host buffer or no pixels, a size is above INT_MAX, or its step is not
/// a whole number of elements. The Mat keeps the memory: it must outlive the header and its copies and must
/// not reallocate meanwhile. A temporary is refused at compile time, and so is a const Mat, since every
/// cv::Mat is writable.
///
///     cv::Mat picture = viewAsCv(mat);
///     cv::GaussianBlur(picture, picture, {5, 5}, 1);  // blurs mat
inline cv::Mat viewAsCv(Mat& mat) {
    const std::optional<int> type = toCvType(mat.dataType);
    if (!type || !mat.isOnHost() || mat.ptrCPU == nullptr) return {};
    if (mat.width == 0 || mat.height == 0 || mat.width > INT_MAX || mat.height > INT_MAX) return {};
    if (mat.stepBytesCPU % CV_ELEM_SIZE1(*type) != 0) return {};
    return {static_cast<int>(mat.height), static_cast<int>(mat.width), *type, mat.ptrCPU, mat.stepBytesCPU};
}
cv::Mat viewAsCv(Mat&& temporary) = delete;
cv::Mat viewAsCv(const Mat& readOnly) = delete;

namespace detail {

/// Releases the Mat behind a cv::Mat when OpenCV's reference count reaches zero.
class KeepingAllocator : public cv::MatAllocator {
public:
    /// Never destroyed, because static cv::Mats may be released after any other static object.
    static const KeepingAllocator& instance() {
        static const auto* const allocator = new KeepingAllocator;
        return *allocator;
    }

    // `create` on such a cv::Mat keeps the allocator, which then provides ordinary memory.
    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* step,
                           cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        return cv::Mat::getStdAllocator()->allocate(dims, sizes, type, data, step, flags, usage);
    }
    bool allocate(cv::UMatData* data, cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        return cv::Mat::getStdAllocator()->allocate(data, flags, usage);
    }
    void deallocate(cv::UMatData* data) const override {
        delete static_cast<Mat*>(data->userdata);
        delete data;
    }
};

}  // namespace detail

/// A cv::Mat that takes over the buffers of a Mat, without a copy; the last cv::Mat that refers to them
/// releases them, by OpenCV's own reference count.
///
/// Empty, with the Mat unchanged, when `viewAsCv` would be empty or the Mat does not own its memory.
/// Otherwise the Mat is left empty; its device side, if any, lives as long as the host side.
///
///     cv::Mat capture() {
///         vela::Mat frame = grab();
///         return moveToCv(std::move(frame));
///     }
inline cv::Mat moveToCv(Mat&& mat) {
    cv::Mat result = viewAsCv(static_cast<Mat&>(mat));
    if (result.empty() || !mat.memoryOwner) return {};
    auto keeper = std::make_unique<Mat>();
    auto data = std::make_unique<cv::UMatData>(&detail::KeepingAllocator::instance());
    if (mat.move(*keeper) != ERROR_CODE::SUCCESS) return {};
    data->origdata = data->data = result.data;
    data->size = result.step[0] * static_cast<std::size_t>(result.rows);
    data->flags |= cv::UMatData::USER_ALLOCATED;
    data->userdata = keeper.release();
    data->refcount = 1;
    result.allocator = const_cast<detail::KeepingAllocator*>(&detail::KeepingAllocator::instance());
    result.u = data.release();
    return result;
}
cv::Mat moveToCv(Mat& mat) = delete;  // would empty mat: say std::move(mat)

/// A Mat that refers to the pixels of a cv::Mat: no copy, with its row step.
///
/// Empty for types that no Mat has, more than two dimensions, or no pixels. The pixels must outlive the Mat:
/// keep the cv::Mat, or one that shares them. A temporary is refused at compile time.
///
///     cv::Mat picture = cv::imread("left.png");
///     vela::Mat mat;
///     mat.clone(viewOfCv(picture));  // a copy that mat owns
inline Mat viewOfCv(cv::Mat& image) {
    const std::optional<MAT_TYPE> type = fromCvType(image.type());
    if (!type || image.empty() || image.dims != 2) return {};
    return {static_cast<std::size_t>(image.cols),
            static_cast<std::size_t>(image.rows),
            *type,
            image.data,
            image.step[0],
            MEM::CPU};
}
Mat viewOfCv(cv::Mat&& temporary) = delete;

}  // namespace vela::interop
