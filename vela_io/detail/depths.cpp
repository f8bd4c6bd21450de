// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/depths.hpp"

#include "vela_io/detail/Failure.hpp"
#include "vela_io/detail/mats.hpp"
#include "vela_io/detail/number_text.hpp"
#include "vela_io/detail/points.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace vela::io::detail {
namespace {

/// Samples are millimetres where nothing else was asked for and the unit is known.
double usualScale(const std::optional<UNIT>& unit) {
    return unit ? static_cast<double>(getScaleMillimeter(*unit)) : 1.0;
}

void requireKnown(const std::optional<UNIT>& unit) {
    if (unit) unitFactor(*unit, *unit);
}

}  // namespace

DepthSource::DepthSource(const Mat& depth, const DepthOptions& options) : depth_(depth), options_(options) {
    requireHostSide(depth, "the depth map");
    if (depth.dataType != MAT_TYPE::MAT_32F_C1 && depth.dataType != MAT_TYPE::MAT_US16_C1) {
        refuse("a depth map is a Mat of one float or of 16 bits (MAT_32F_C1, MAT_US16_C1)");
    }
    requireKnown(options.unit);
    requireKnown(options.targetUnit);
    if (options.targetUnit && !options.unit) {
        refuse("the unit is not known: give the option 'unit' to convert it");
    }
    double exactFactor = 1;
    if (options.targetUnit && *options.targetUnit != *options.unit) {
        unitFactor_ = unitFactor(*options.unit, *options.targetUnit);
        exactFactor = static_cast<double>(getScaleMillimeter(*options.unit)) /
                      static_cast<double>(getScaleMillimeter(*options.targetUnit));
    }
    scale_ = options.scale.value_or(usualScale(options.targetUnit ? options.targetUnit : options.unit));
    if (!(scale_ > 0) || std::isinf(scale_)) refuse("the scale is not above 0");
    factor_ = exactFactor * scale_;
    const double invalid = options.invalid.value_or(0);
    if (std::isfinite(invalid)) invalidSample_ = static_cast<int>(std::clamp(invalid, -1.0, 65536.0));
}

double DepthSource::depthAt(std::size_t x, std::size_t y) const {
    const unsigned char* const row = rowOf(depth_, y);
    if (depth_.dataType == MAT_TYPE::MAT_US16_C1) {
        std::uint16_t value = 0;
        std::memcpy(&value, row + x * sizeof value, sizeof value);
        return value;
    }
    float value = 0;
    std::memcpy(&value, row + x * sizeof value, sizeof value);
    return static_cast<double>(value);
}

int DepthSource::sampleOf(double depth) {
    if (depth == 0 || !std::isfinite(depth)) {
        ++dropped_;
        return invalidSample_;
    }
    const double scaled = depth * factor_ + 0.5;
    // The sample that stands for no depth is not free for depths.
    const int largest = LARGEST_SAMPLE - (invalidSample_ == LARGEST_SAMPLE ? 1 : 0);
    if (scaled >= largest + 1) {
        ++clipped_;
        return largest;
    }
    const int sample = scaled < 0 ? -1 : static_cast<int>(scaled);
    if (sample >= 0 && sample != invalidSample_) return sample;
    ++clipped_;
    return invalidSample_;
}

void DepthSource::checkSamples() {
    const double invalid = options_.invalid.value_or(0);
    if (!(invalid >= 0 && invalid <= LARGEST_SAMPLE) || invalid != std::floor(invalid)) {
        refuse("the invalid value is not a sample from 0 to 65535");
    }
    std::vector<std::uint16_t> row(depth_.width);
    std::string first;
    for (std::size_t y = 0; y < depth_.height; ++y) {
        const std::size_t before = clipped_;
        samples(y, row.data());
        if (clipped_ == before || !first.empty()) continue;
        first = "row " + std::to_string(y);
    }
    const std::size_t clipped = std::exchange(clipped_, 0);
    dropped_ = 0;
    if (clipped == 0 || options_.allowClipping) return;
    clipped_ = clipped;
    refuse(std::to_string(clipped) + " depths have no sample from 0 to 65535 at " + shortest(scale_) +
           " samples per unit, the first in " + first + ": change 'scale' or set 'allowClipping'");
}

void DepthSource::samples(std::size_t y, std::uint16_t* out) {
    for (std::size_t x = 0; x < depth_.width; ++x) {
        out[x] = static_cast<std::uint16_t>(sampleOf(depthAt(x, y)));
    }
}

void DepthSource::floats(std::size_t y, float* out) {
    const bool real = depth_.dataType == MAT_TYPE::MAT_32F_C1;
    if (real) std::memcpy(out, rowOf(depth_, y), depth_.width * sizeof *out);
    for (std::size_t x = 0; x < depth_.width; ++x) {
        if (!real) out[x] = static_cast<float>(depthAt(x, y));
        // A NaN without a stand-in keeps its bits, which arithmetic would not promise.
        if (std::isfinite(out[x])) {
            out[x] *= unitFactor_;
            continue;
        }
        ++dropped_;
        if (options_.invalid) out[x] = static_cast<float>(*options_.invalid);
    }
}

bool DepthSink::begin(const DepthHeader& header) {
    header_ = header;
    if (!header_.unit) header_.unit = options_.unit;
    if (!header_.scale) header_.scale = options_.scale.value_or(1);
    if (!header_.invalid) header_.invalid = options_.invalid;
    if (!header_.invalid && header.sampleBits < 32) header_.invalid = 0;
    requireKnown(options_.targetUnit);
    requireKnown(options_.unit);
    if (!(*header_.scale > 0) || std::isinf(*header_.scale)) failFormat("the scale is not above 0");
    if (headerOnly_) return false;
    if (options_.targetUnit && !header_.unit) {
        refuse("the unit is not known: give the option 'unit' to convert it");
    }
    if (header.width > LARGEST_SIDE || header.height > LARGEST_SIDE ||
        (header.width > 0 && header.height > options_.maxPixels / header.width)) {
        failFormat("more pixels than allowed: " + std::to_string(header.width) + " x " +
                   std::to_string(header.height));
    }
    if (options_.targetUnit) unitFactor_ = unitFactor(*header_.unit, *options_.targetUnit);
    depth_ = newMat(header.width, header.height, MAT_TYPE::MAT_32F_C1);
    return true;
}

void DepthSink::takeSamples() {
    std::vector<float> depthOf(LARGEST_SAMPLE + 1);
    for (std::size_t sample = 0; sample < depthOf.size(); ++sample) {
        depthOf[sample] = static_cast<float>(static_cast<double>(sample) / *header_.scale) * unitFactor_;
        if (static_cast<double>(sample) == header_.invalid) {
            depthOf[sample] = std::numeric_limits<float>::quiet_NaN();
        }
    }
    // Backwards, because each float overwrites two samples, which must have been read by then.
    const unsigned char* const from = depth_.ptrCPU;
    for (std::size_t i = pixels(); i-- > 0;) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, from + i * sizeof sample, sizeof sample);
        const float depth = depthOf[sample];
        std::memcpy(depth_.ptrCPU + i * sizeof depth, &depth, sizeof depth);
        withDepth_ += std::isnan(depth) ? 0 : 1;
    }
}

void DepthSink::takeFloats() {
    float* const depths = floats();
    for (std::size_t i = 0; i < pixels(); ++i) {
        const bool valid = std::isfinite(depths[i]) && static_cast<double>(depths[i]) != header_.invalid;
        withDepth_ += valid ? 1 : 0;
        if (valid) {
            depths[i] *= unitFactor_;
        } else if (std::isfinite(depths[i])) {
            depths[i] = std::numeric_limits<float>::quiet_NaN();
        }
    }
}

void DepthSink::finish(Mat& depth) {
    deliver(depth_, depth);
}

void DepthSink::describe(DepthInfo& info) const {
    info.encoding = header_.encoding;
    info.width = header_.width;
    info.height = header_.height;
    info.sampleBits = header_.sampleBits;
    info.withDepth = withDepth_;
    info.unit = headerOnly_ || !options_.targetUnit ? header_.unit : options_.targetUnit;
    info.scale = *header_.scale;
    info.invalid = header_.invalid;
    info.rows = header_.rows;
}

}  // namespace vela::io::detail
