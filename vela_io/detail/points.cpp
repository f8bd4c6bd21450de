// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/points.hpp"

#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/units.hpp"
#include "vela_io/detail/mats.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>

namespace vela::io::detail {
namespace {

bool isFinite(const Point& point) {
    // A sum of products with 0 is 0 unless one of them is infinite or NaN.
    return point.x * 0 + point.y * 0 + point.z * 0 == 0;
}

template <class Vector>
void applyTo(Vector& vector, const std::array<std::size_t, 3>& from, const std::array<float, 3>& factor) {
    const float in[] = {vector.x, vector.y, vector.z};
    vector.x = in[from[0]] * factor[0];
    vector.y = in[from[1]] * factor[1];
    vector.z = in[from[2]] * factor[2];
}

bool isKnown(UNIT unit) {
    return unit >= UNIT::MILLIMETER && unit <= UNIT::FOOT;
}

bool isKnown(COORDINATE_SYSTEM axes) {
    return axes >= COORDINATE_SYSTEM::IMAGE && axes <= COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
}

/// Copies the first `bytes` bytes of each of `count` pixels.
template <class Out>
void copyPixels(Out* out, const unsigned char* pixels, std::size_t count, std::size_t pixelBytes) {
    if (sizeof(Out) == pixelBytes) {
        std::memcpy(out, pixels, count * pixelBytes);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(static_cast<void*>(out + i), pixels + i * pixelBytes,
                    std::min(sizeof(Out), std::size_t{12}));
    }
}

/// Puts the valid ones of `count` pixels into the block, and closes up the normals that lie there.
template <std::size_t pixelBytes>
void takeValid(PointBlock& block, const unsigned char* pixels, std::size_t count, bool normals) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Point point;
        std::memcpy(static_cast<void*>(&point), pixels + i * pixelBytes, pixelBytes);
        block.points[kept] = point;
        if (normals) block.normals[kept] = block.normals[i];
        kept += isFinite(point) ? 1 : 0;
    }
    block.count = kept;
}

void requireCloud(const Mat& cloud) {
    requireHostSide(cloud, "the cloud");
    if (cloud.dataType != MAT_TYPE::MAT_32F_C3 && cloud.dataType != MAT_TYPE::MAT_32F_C4) {
        refuse("a cloud is a Mat of three or four floats (MAT_32F_C3, MAT_32F_C4)");
    }
}

void requireNormals(const Mat& normals, const Mat& cloud) {
    requireHostSide(normals, "the Mat of normals");
    if (normals.dataType != MAT_TYPE::MAT_32F_C3 && normals.dataType != MAT_TYPE::MAT_32F_C4) {
        refuse("normals are a Mat of three or four floats (MAT_32F_C3, MAT_32F_C4)");
    }
    if (normals.width != cloud.width || normals.height != cloud.height) {
        refuse("the normals have another size than the cloud");
    }
}

}  // namespace

float unitFactor(UNIT from, UNIT to) {
    if (!isKnown(from) || !isKnown(to)) refuse("an unknown unit");
    return getUnitScale(from, to);
}

Conversion::Conversion(const std::optional<UNIT>& unit, const std::optional<COORDINATE_SYSTEM>& axes,
                       const std::optional<UNIT>& targetUnit,
                       const std::optional<COORDINATE_SYSTEM>& targetAxes) {
    for (const auto& given : {unit, targetUnit}) {
        if (given && !isKnown(*given)) refuse("an unknown unit");
    }
    for (const auto& given : {axes, targetAxes}) {
        if (given && !isKnown(*given)) {
            throw Failure{ERROR_CODE::INVALID_COORDINATE_SYSTEM, "an unknown axis convention"};
        }
    }
    if (targetUnit && !unit) refuse("the unit is not known: give the option 'unit' to convert it");
    if (targetAxes && !axes) refuse("the axis convention is not known: give the option 'axes' to convert it");
    const float scale = targetUnit ? unitFactor(*unit, *targetUnit) : 1.0F;
    const Matrix3f matrix = targetAxes ? getCoordinateTransformConversion3f(*axes, *targetAxes) : Matrix3f();
    for (std::size_t row = 0; row < 3 && targetAxes; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const float value = matrix.m[3 * row + column];
            if (std::fabs(value) < 0.5F) continue;
            from_[row] = column;
            sign_[row] = value < 0 ? -1.0F : 1.0F;
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        factor_[i] = sign_[i] * scale;
        changes_ = changes_ || from_[i] != i || factor_[i] != 1.0F;
    }
}

void Conversion::apply(PointBlock& block, bool normals) const {
    if (!changes_) return;
    const auto from = from_;  // copies, since for the compiler the points might alias the members
    const auto factor = factor_;
    const auto sign = sign_;
    for (std::size_t i = 0; i < block.count; ++i) {
        applyTo(block.points[i], from, factor);
    }
    for (std::size_t i = 0; normals && i < block.count; ++i) {
        applyTo(block.normals[i], from, sign);
    }
}

PointSource::PointSource(const Mat& cloud, const CloudOptions& options)
    : cloud_(cloud),
      normals_(options.normals),
      keepAll_(options.keepGrid),
      conversion_(options.unit, options.axes, options.targetUnit, options.targetAxes) {
    requireCloud(cloud);
    if (normals_ != nullptr) requireNormals(*normals_, cloud);
    count_ = keepAll_ ? cloud.width * cloud.height : countValid();
}

std::size_t PointSource::countValid() const {
    const std::size_t pixelBytes = getPixelBytes(cloud_.dataType);
    std::size_t valid = 0;
    for (std::size_t y = 0; y < cloud_.height; ++y) {
        const unsigned char* pixel = rowOf(cloud_, y);
        for (std::size_t x = 0; x < cloud_.width; ++x, pixel += pixelBytes) {
            Point point;
            std::memcpy(static_cast<void*>(&point), pixel, 3 * sizeof(float));
            valid += isFinite(point) ? 1 : 0;
        }
    }
    return valid;
}

bool PointSource::next(PointBlock& block) {
    const std::size_t total = cloud_.width * cloud_.height;
    const std::size_t pixelBytes = getPixelBytes(cloud_.dataType);
    block.count = 0;
    while (block.count == 0 && place_ < total) {
        const std::size_t y = place_ / cloud_.width;
        const std::size_t x = place_ % cloud_.width;
        const std::size_t count = std::min(PointBlock::CAPACITY, cloud_.width - x);
        const unsigned char* const pixels = rowOf(cloud_, y) + x * pixelBytes;
        place_ += count;
        if (normals_ != nullptr) {
            const std::size_t normalBytes = getPixelBytes(normals_->dataType);
            copyPixels(block.normals.data(), rowOf(*normals_, y) + x * normalBytes, count, normalBytes);
        }
        if (keepAll_ || count_ == total) {
            copyPixels(block.points.data(), pixels, count, pixelBytes);
            block.count = count;
        } else if (pixelBytes == sizeof(Point)) {
            takeValid<sizeof(Point)>(block, pixels, count, normals_ != nullptr);
        } else {
            takeValid<3 * sizeof(float)>(block, pixels, count, normals_ != nullptr);
        }
    }
    conversion_.apply(block, normals_ != nullptr);
    return block.count > 0;
}

bool PointSink::begin(const CloudHeader& header) {
    header_ = header;
    header_.color = header.color && options_.color;
    header_.alpha = header.alpha && options_.color;
    if (!header_.unit) header_.unit = options_.unit;
    if (!header_.axes) header_.axes = options_.axes;
    if (headerOnly_) return false;
    if (header.count > options_.maxPoints) {
        failFormat("more points than allowed: " + std::to_string(header.count));
    }
    conversion_.emplace(header_.unit, header_.axes, options_.targetUnit, options_.targetAxes);
    const bool four = header_.color || options_.fourChannels;
    const std::size_t width = header.count == 0 ? 0 : header.width;
    const std::size_t height = header.count == 0 ? 1 : header.height;
    cloud_ = newMat(width, height, four ? MAT_TYPE::MAT_32F_C4 : MAT_TYPE::MAT_32F_C3);
    if (options_.normals != nullptr && header.normals) normals_ = newMat(width, height, MAT_TYPE::MAT_32F_C4);
    return true;
}

void PointSink::add() {
    if (block_.count > header_.count - added_) failFormat("more points than the header says");
    conversion_->apply(block_, header_.normals);
    for (std::size_t i = 0; i < block_.count; ++i) {
        invalid_ += isFinite(block_.points[i]) ? 0 : 1;
    }
    const std::size_t pixelBytes = getPixelBytes(cloud_.dataType);
    unsigned char* out = cloud_.ptrCPU + added_ * pixelBytes;
    if (pixelBytes == sizeof(Point)) {
        if (!header_.color) {
            for (std::size_t i = 0; i < block_.count; ++i) {
                block_.points[i].color = {};
            }
        }
        std::memcpy(out, block_.points.data(), block_.count * sizeof(Point));
    } else {
        for (std::size_t i = 0; i < block_.count; ++i) {
            std::memcpy(out + i * pixelBytes, &block_.points[i], 3 * sizeof(float));
        }
    }
    for (std::size_t i = 0; normals_.isInit && i < block_.count; ++i) {
        const float four[] = {block_.normals[i].x, block_.normals[i].y, block_.normals[i].z, 0.0F};
        std::memcpy(normals_.ptrCPU + (added_ + i) * sizeof four, four, sizeof four);
    }
    added_ += block_.count;
    block_.count = 0;
}

void PointSink::note(const std::string& text) {
    notes_ += (notes_.empty() ? "" : ", ") + text;
}

void PointSink::finish(Mat& cloud) {
    if (missing() > 0) failFormat("the file ends " + std::to_string(missing()) + " points too early");
    deliver(cloud_, cloud);
    if (options_.normals == nullptr) return;
    if (!normals_.isInit) {
        options_.normals->free();
    } else {
        deliver(normals_, *options_.normals);
    }
}

void PointSink::describe(CloudInfo& info) const {
    info.encoding = header_.encoding;
    info.width = header_.width;
    info.height = header_.height;
    info.points = header_.count;
    info.invalid = invalid_;
    info.hasColor = header_.color;
    info.hasAlpha = header_.alpha;
    info.hasNormals = header_.normals;
    info.unit = headerOnly_ || !options_.targetUnit ? header_.unit : options_.targetUnit;
    info.axes = headerOnly_ || !options_.targetAxes ? header_.axes : options_.targetAxes;
    info.separator = header_.separator;
}

}  // namespace vela::io::detail
