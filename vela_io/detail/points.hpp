// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/Failure.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace vela::io::detail {

/// A pixel of a `MAT_32F_C4` cloud.
struct Point {
    float x = 0;
    float y = 0;
    float z = 0;
    std::array<std::uint8_t, 4> color{};  ///< red, green, blue, alpha
};
static_assert(sizeof(Point) == 16);

struct Normal {
    float x = 0;
    float y = 0;
    float z = 0;
};
static_assert(sizeof(Normal) == 12);

/// A batch of points between a Mat and a file, small enough for the first-level cache.
struct PointBlock {
    static constexpr std::size_t CAPACITY = 1024;
    std::size_t count = 0;
    std::array<Point, CAPACITY> points;
    std::array<Normal, CAPACITY> normals;

    /// `size` points whose alpha is that of files without one.
    void clear(std::size_t size) {
        count = size;
        for (std::size_t i = 0; i < size; ++i) {
            points[i].color = {0, 0, 0, 255};
        }
    }
};

/// What a cloud file holds.
struct CloudHeader {
    ENCODING encoding = ENCODING::ASCII;
    std::size_t count = 0;
    std::size_t width = 0;  ///< of the grid; width x height is count
    std::size_t height = 1;
    bool color = false;
    bool alpha = false;
    bool normals = false;
    std::optional<UNIT> unit;
    std::optional<COORDINATE_SYSTEM> axes;
    char separator = ' ';
};

/// A change of unit and axis convention.
class Conversion {
public:
    /// No change where neither target is given. A target without its source is an error that names the
    /// option.
    Conversion(const std::optional<UNIT>& unit, const std::optional<COORDINATE_SYSTEM>& axes,
               const std::optional<UNIT>& targetUnit, const std::optional<COORDINATE_SYSTEM>& targetAxes);

    void apply(PointBlock& block, bool normals) const;

private:
    bool changes_ = false;
    /// Each coordinate comes from one of the source's, with a factor; axis conventions only permute and
    /// mirror.
    std::array<std::size_t, 3> from_{0, 1, 2};
    std::array<float, 3> factor_{1, 1, 1};
    std::array<float, 3> sign_{1, 1, 1};
};

/// Factor from one length unit to another; values without enumerator are an error.
float unitFactor(UNIT from, UNIT to);

/// The points of a Mat in the unit and axes of a file.
class PointSource {
public:
    PointSource(const Mat& cloud, const CloudOptions& options);

    std::size_t count() const { return count_; }  ///< of the points that `next` gives
    std::size_t dropped() const { return cloud_.width * cloud_.height - count_; }
    bool next(PointBlock& block);  ///< false at the end
    void rewind() { place_ = 0; }

private:
    std::size_t countValid() const;

    const Mat& cloud_;
    const Mat* normals_;
    bool keepAll_;
    Conversion conversion_;
    std::size_t count_ = 0;
    std::size_t place_ = 0;  ///< the next pixel, counted row by row
};

/// Collects the points of a file in a Mat. A format calls `begin` once; if that returns true, it fills
/// `block` and calls `add` until every point is in.
class PointSink {
public:
    PointSink(const CloudReadOptions& options, bool headerOnly)
        : options_(options), headerOnly_(headerOnly) {}

    /// Allocates the Mat, so `header.count` must have been checked against the file. Returns false if only
    /// the header is wanted.
    bool begin(const CloudHeader& header);
    PointBlock& block() { return block_; }
    void add();
    void note(const std::string& text);

    /// Hands everything over.
    void finish(Mat& cloud);
    void describe(CloudInfo& info) const;
    const std::string& notes() const { return notes_; }
    const CloudHeader& header() const { return header_; }
    std::size_t invalid() const { return invalid_; }
    std::size_t missing() const { return header_.count - added_; }
    const Progress& progress() const { return options_.progress; }

private:
    const CloudReadOptions& options_;
    bool headerOnly_;
    CloudHeader header_;
    std::optional<Conversion> conversion_;
    Mat cloud_;
    Mat normals_;
    std::size_t added_ = 0;
    std::size_t invalid_ = 0;
    std::string notes_;
    PointBlock block_;
};

}  // namespace vela::io::detail
