// SPDX-License-Identifier: Apache-2.0
#pragma once

// Templates over the message types: nothing of ROS is included; sensor_msgs of ROS 1 and ROS 2 both fit. The
// header (frame, time stamp) is left to the caller. ROS uses metres, and an optical frame has the axes of
// COORDINATE_SYSTEM::IMAGE.

#include "vela_core/utils/Mat.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace vela::interop {

namespace detail {

struct RosEncoding {
    const char* name;
    MAT_TYPE type;
    bool redFirst;
};
/// The first name of a type is the one that is written. Pictures in a Mat are blue first, as `read` makes
/// them.
inline constexpr RosEncoding ROS_ENCODINGS[] = {
    {"32FC1", MAT_TYPE::MAT_32F_C1, false},   {"32FC2", MAT_TYPE::MAT_32F_C2, false},
    {"32FC3", MAT_TYPE::MAT_32F_C3, false},   {"32FC4", MAT_TYPE::MAT_32F_C4, false},
    {"mono8", MAT_TYPE::MAT_8U_C1, false},    {"8UC2", MAT_TYPE::MAT_8U_C2, false},
    {"bgr8", MAT_TYPE::MAT_8U_C3, false},     {"bgra8", MAT_TYPE::MAT_8U_C4, false},
    {"mono16", MAT_TYPE::MAT_US16_C1, false}, {"8SC4", MAT_TYPE::MAT_8S_C4, false},
    {"8UC1", MAT_TYPE::MAT_8U_C1, false},     {"8UC3", MAT_TYPE::MAT_8U_C3, false},
    {"8UC4", MAT_TYPE::MAT_8U_C4, false},     {"16UC1", MAT_TYPE::MAT_US16_C1, false},
    {"rgb8", MAT_TYPE::MAT_8U_C3, true},      {"rgba8", MAT_TYPE::MAT_8U_C4, true}};

inline const RosEncoding* rosEncoding(const std::string& name) {
    for (const RosEncoding& row : ROS_ENCODINGS) {
        if (row.name == name) return &row;
    }
    return nullptr;
}
inline const RosEncoding* rosEncoding(MAT_TYPE type) {
    for (const RosEncoding& row : ROS_ENCODINGS) {
        if (row.type == type) return &row;
    }
    return nullptr;
}

constexpr std::uint64_t ROS_LIMIT = std::numeric_limits<std::uint32_t>::max();

/// Whether `height` rows of `rowBytes`, `step` bytes apart, lie within `size` bytes.
inline bool rowsFit(std::uint64_t height, std::uint64_t rowBytes, std::uint64_t step, std::uint64_t size) {
    return rowBytes <= step && height * step <= size;  // products of 32-bit numbers
}

/// Reverses the bytes of each element in a row.
inline void swapElements(unsigned char* row, std::size_t bytes, std::size_t element) {
    for (std::size_t i = 0; i + element <= bytes; i += element)
        std::reverse(row + i, row + i + element);
}

}  // namespace detail

/// Copies a Mat into a `sensor_msgs` Image: rows packed, `step` and `encoding` set, channels in the Mat's
/// order, so pictures are "bgr8" or "bgra8".
///
/// `encoding` states another of ROS's names for the same memory, such as "16UC1" for depth in millimetres or
/// "rgb8" for a Mat that is red first. False, with the message unchanged, without a host buffer, for a name
/// of another pixel type, or for rows that 32 bits cannot count.
///
///     sensor_msgs::msg::Image message;
///     message.header.frame_id = "left_optical";
///     if (!toRosImage(picture, message)) return 1;
template <class Image>
[[nodiscard]] bool toRosImage(const Mat& mat, Image& message, const char* encoding = nullptr) {
    const detail::RosEncoding* const row =
        encoding == nullptr ? detail::rosEncoding(mat.dataType) : detail::rosEncoding(encoding);
    if (!mat.isOnHost() || mat.ptrCPU == nullptr || row == nullptr || row->type != mat.dataType) return false;
    const std::size_t rowBytes = mat.width * mat.pixelBytes;
    if (rowBytes > detail::ROS_LIMIT || mat.height > detail::ROS_LIMIT) return false;
    message.encoding = row->name;
    message.width = static_cast<std::uint32_t>(mat.width);
    message.height = static_cast<std::uint32_t>(mat.height);
    message.step = static_cast<std::uint32_t>(rowBytes);
    message.is_bigendian = 0;
    message.data.resize(rowBytes * mat.height);
    for (std::size_t y = 0; y < mat.height; ++y) {
        std::copy_n(mat.ptrCPU + y * mat.stepBytesCPU, rowBytes,
                    message.data.begin() + static_cast<std::ptrdiff_t>(y * rowBytes));
    }
    return true;
}

/// Replaces `mat` by the pixels of a `sensor_msgs` Image, as an owned Mat on the host.
///
/// "rgb8" and "rgba8" become blue first, as pictures in a Mat are; elements of a big-endian message are
/// byte-swapped. False, with `mat` unchanged, for an encoding that no Mat has (Bayer patterns, YUV) and for a
/// message whose width, height, step and data disagree.
///
///     Mat picture;
///     if (!fromRosImage(*message, picture)) return;  // not a picture of ours, or damaged
template <class Image>
[[nodiscard]] bool fromRosImage(const Image& message, Mat& mat) {
    const detail::RosEncoding* const encoding = detail::rosEncoding(message.encoding);
    if (encoding == nullptr || message.width == 0 || message.height == 0) return false;
    const std::size_t pixelBytes = getPixelBytes(encoding->type);
    const std::size_t rowBytes = std::size_t{message.width} * pixelBytes;
    if (!detail::rowsFit(message.height, rowBytes, message.step, message.data.size())) return false;
    mat.alloc(message.width, message.height, encoding->type);
    for (std::size_t y = 0; y < mat.height; ++y) {
        unsigned char* const row = mat.ptrCPU + y * mat.stepBytesCPU;
        std::copy_n(message.data.begin() + static_cast<std::ptrdiff_t>(y * message.step), rowBytes, row);
        if (message.is_bigendian != 0) detail::swapElements(row, rowBytes, pixelBytes / mat.channels);
        if (encoding->redFirst) {
            for (std::size_t x = 0; x < rowBytes; x += pixelBytes)
                std::swap(row[x], row[x + 2]);
        }
    }
    return true;
}

/// Copies a cloud, `MAT_32F_C3` or `MAT_32F_C4`, into a `sensor_msgs` PointCloud2 with the fields x, y, z
/// and, for four channels, rgb.
///
/// Width, height and invalid points are kept, and `is_dense` says whether all points are finite. ROS packs
/// colour as 0x00RRGGBB, blue first in memory, so red and blue are swapped; the fourth colour byte is lost.
/// False, with the message unchanged, for another type, no host buffer, or rows that 32 bits cannot count.
///
///     sensor_msgs::msg::PointCloud2 message;
///     message.header.frame_id = "left_optical";
///     if (!toRosCloud(cloud, message)) return 1;
template <class PointCloud2>
[[nodiscard]] bool toRosCloud(const Mat& cloud, PointCloud2& message) {
    const bool four = cloud.dataType == MAT_TYPE::MAT_32F_C4;
    if (!cloud.isOnHost() || cloud.ptrCPU == nullptr) return false;
    if (!four && cloud.dataType != MAT_TYPE::MAT_32F_C3) return false;
    const std::size_t rowBytes = cloud.width * cloud.pixelBytes;
    if (rowBytes > detail::ROS_LIMIT || cloud.height > detail::ROS_LIMIT) return false;

    using Field = typename std::decay_t<decltype(message.fields)>::value_type;
    static constexpr const char* NAMES[] = {"x", "y", "z", "rgb"};
    message.fields.resize(cloud.channels);
    for (std::uint32_t i = 0; i < cloud.channels; ++i) {
        message.fields[i].name = NAMES[i];
        message.fields[i].offset = 4 * i;
        message.fields[i].datatype = Field::FLOAT32;
        message.fields[i].count = 1;
    }
    message.width = static_cast<std::uint32_t>(cloud.width);
    message.height = static_cast<std::uint32_t>(cloud.height);
    message.point_step = static_cast<std::uint32_t>(cloud.pixelBytes);
    message.row_step = static_cast<std::uint32_t>(rowBytes);
    message.is_bigendian = false;
    message.is_dense = true;
    message.data.resize(rowBytes * cloud.height);
    unsigned char* out = message.data.data();
    for (std::size_t y = 0; y < cloud.height; ++y) {
        const unsigned char* in = cloud.ptrCPU + y * cloud.stepBytesCPU;
        for (std::size_t x = 0; x < cloud.width; ++x, in += cloud.pixelBytes, out += cloud.pixelBytes) {
            float v[3];
            std::memcpy(v, in, sizeof v);
            std::memcpy(out, v, sizeof v);
            if (!std::isfinite(v[0]) || !std::isfinite(v[1]) || !std::isfinite(v[2]))
                message.is_dense = false;
            if (!four) continue;
            const unsigned char color[] = {in[14], in[13], in[12], 0};
            std::memcpy(out + sizeof v, color, sizeof color);
        }
    }
    return true;
}

namespace detail {

/// Where a PointCloud2 keeps coordinates and colour within a point.
struct RosLayout {
    std::uint32_t xyz[3] = {};
    std::uint32_t color = 0;
    bool hasColor = false;
    bool hasAlpha = false;
};

/// False unless x, y and z are there as floats and every field that is used lies inside the point.
template <class PointCloud2>
bool findRosFields(const PointCloud2& message, RosLayout& layout) {
    using Field = typename std::decay_t<decltype(message.fields)>::value_type;
    unsigned found = 0;
    for (const auto& field : message.fields) {
        const bool isFloat = field.datatype == Field::FLOAT32;
        const bool inside = std::uint64_t{field.offset} + sizeof(float) <= message.point_step;
        for (unsigned i = 0; i < 3; ++i) {
            if (field.name != std::string(1, static_cast<char>('x' + i))) continue;
            if (!isFloat || !inside) return false;
            layout.xyz[i] = field.offset;
            found |= 1U << i;
        }
        if (field.name == "rgb" || field.name == "rgba") {
            if ((!isFloat && field.datatype != Field::UINT32) || !inside) return false;
            layout.color = field.offset;
            layout.hasColor = true;
            layout.hasAlpha = field.name == "rgba";
        }
    }
    return found == 7;
}

/// Four bytes of a point as the little-endian number that they state.
inline void takeRosWord(const unsigned char* from, bool bigEndian, unsigned char (&word)[4]) {
    std::memcpy(word, from, sizeof word);
    if (bigEndian) std::reverse(word, word + sizeof word);
}

}  // namespace detail

/// Replaces `cloud` by the points of a `sensor_msgs` PointCloud2, as an owned `MAT_32F_C4` on the host.
///
/// The fields x, y, z (FLOAT32) and rgb or rgba (FLOAT32 or UINT32) may stand anywhere in a point and others
/// beside them; without colour the points are white. Width, height and invalid points are kept. False, with
/// `cloud` unchanged, when a coordinate is missing or of another type, a field reaches beyond `point_step`,
/// rows are shorter than their points, or data ends before the last row.
///
///     Mat cloud;
///     if (!fromRosCloud(*message, cloud)) return;
template <class PointCloud2>
[[nodiscard]] bool fromRosCloud(const PointCloud2& message, Mat& cloud) {
    detail::RosLayout layout;
    if (message.width == 0 || message.height == 0 || !detail::findRosFields(message, layout)) return false;
    const std::uint64_t rowBytes = std::uint64_t{message.width} * message.point_step;
    if (!detail::rowsFit(message.height, rowBytes, message.row_step, message.data.size())) return false;
    cloud.alloc(message.width, message.height, MAT_TYPE::MAT_32F_C4);
    const bool bigEndian = message.is_bigendian != 0;
    unsigned char* out = cloud.ptrCPU;
    for (std::size_t y = 0; y < message.height; ++y) {
        const unsigned char* point = message.data.data() + y * message.row_step;
        for (std::size_t x = 0; x < message.width; ++x, point += message.point_step, out += 16) {
            unsigned char word[4];
            for (std::size_t i = 0; i < 3; ++i) {
                detail::takeRosWord(point + layout.xyz[i], bigEndian, word);
                std::memcpy(out + i * sizeof word, word, sizeof word);
            }
            unsigned char color[] = {255, 255, 255, 255};
            if (layout.hasColor) {
                detail::takeRosWord(point + layout.color, bigEndian, word);  // blue, green, red, alpha
                std::reverse_copy(word, word + 3, color);
                if (layout.hasAlpha) color[3] = word[3];
            }
            std::memcpy(out + 12, color, sizeof color);
        }
    }
    return true;
}

}  // namespace vela::interop
