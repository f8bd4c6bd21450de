// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/io.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vela::io::detail {

constexpr int LARGEST_SAMPLE = 65535;

/// What a depth file holds.
struct DepthHeader {
    ENCODING encoding = ENCODING::BINARY;
    std::size_t width = 0;
    std::size_t height = 0;
    int sampleBits = 16;
    ROW_ORDER rows = ROW_ORDER::TOP_FIRST;
    std::optional<UNIT> unit;
    std::optional<double> scale;
    std::optional<double> invalid;
};

/// The rows of a Mat as samples or floats of a file.
class DepthSource {
public:
    DepthSource(const Mat& depth, const DepthOptions& options);

    /// Samples per unit of the target; what stands for no depth among the samples.
    double scale() const { return scale_; }
    int invalidSample() const { return invalidSample_; }

    /// Checks all pixels before any is written. Throws if the samples cannot hold a depth, unless clipping
    /// is allowed.
    void checkSamples();
    /// `width` samples of 16 bits.
    void samples(std::size_t y, std::uint16_t* out);
    /// `width` floats, in the target unit.
    void floats(std::size_t y, float* out);

    std::size_t dropped() const { return dropped_; }
    std::size_t clipped() const { return clipped_; }

private:
    double depthAt(std::size_t x, std::size_t y) const;
    int sampleOf(double depth);

    const Mat& depth_;
    const DepthOptions& options_;
    float unitFactor_ = 1;
    double scale_ = 1;
    double factor_ = 1;  ///< from the Mat's depth to samples
    int invalidSample_ = 0;
    std::size_t dropped_ = 0;
    std::size_t clipped_ = 0;
};

/// Collects the depths of a file in a Mat. A format calls `begin` once; if that returns true, it fills one of
/// the two buffers, top row first, and calls its `take` function.
class DepthSink {
public:
    DepthSink(const DepthReadOptions& options, bool headerOnly)
        : options_(options), headerOnly_(headerOnly) {}

    /// Allocates the Mat, so the size must have been checked against the file. Returns false if only the
    /// header is wanted.
    bool begin(const DepthHeader& header);

    /// width x height samples, packed. They lie in the Mat itself until `takeSamples` spreads them.
    std::uint16_t* samples() { return reinterpret_cast<std::uint16_t*>(depth_.ptrCPU); }
    void takeSamples();
    float* floats() { return reinterpret_cast<float*>(depth_.ptrCPU); }
    void takeFloats();

    void finish(Mat& depth);
    void describe(DepthInfo& info) const;
    const DepthReadOptions& options() const { return options_; }
    std::size_t pixels() const { return header_.width * header_.height; }
    std::size_t withDepth() const { return withDepth_; }

private:
    const DepthReadOptions& options_;
    bool headerOnly_;
    DepthHeader header_;
    float unitFactor_ = 1;
    Mat depth_;
    std::size_t withDepth_ = 0;
};

}  // namespace vela::io::detail
