// SPDX-License-Identifier: Apache-2.0
// Loops over whole images in host memory: conversion of units and of axes, in place.
#include "support/Session.hpp"
#include "support/scene.hpp"
#include "support/traffic.hpp"
#include "support/values.hpp"

#include <vela_core/geometry/detail/pixel_loop.hpp>
#include <vela_core/vela.hpp>
#include <vela_gpu/kernels/detail/pixel_ops.hpp>

// Built with AVX, Eigen aligns more strictly than in the Point Cloud Library's own binaries.
#if !defined(__AVX__)
#define VELA_BENCH_PCL 1
#include <pcl/common/transforms.h>
#include <pcl/point_types.h>
#endif
#include <Eigen/Core>
#include <opencv2/core.hpp>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::HD;
using bench::INVALID_SHARE;
using bench::Lane;
using bench::Session;

constexpr Resolution UHD = {3840, 2160};

// One rounding for each product or sum, and one for the factor.
constexpr bench::Tolerance ROUNDING = {1e-44, 1e-6};

std::string sizeText(Resolution resolution) {
    return std::to_string(resolution.width) + "x" + std::to_string(resolution.height);
}

MAT_TYPE floatType(int channels) {
    return channels == 1 ? MAT_TYPE::MAT_32F_C1 : channels == 3 ? MAT_TYPE::MAT_32F_C3 : MAT_TYPE::MAT_32F_C4;
}

/// The first channels of a cloud's points; of one channel the depth.
std::vector<float> pixelsOf(Resolution resolution, int channels, double invalidShare, Lane lane) {
    if (channels == 1) return bench::makeDepth(resolution, invalidShare);
    const std::vector<float> cloud = bench::makeCloud(resolution, invalidShare, lane);
    std::vector<float> pixels;
    pixels.reserve(cloud.size());
    for (std::size_t i = 0; i < cloud.size(); i += 4) {
        pixels.insert(pixels.end(), cloud.begin() + static_cast<std::ptrdiff_t>(i),
                      cloud.begin() + static_cast<std::ptrdiff_t>(i) + channels);
    }
    return pixels;
}

/// The loop that the library uses where the processor has no AVX2.
template <class Pixel, class Op>
void applyPortably(Pixel* pixels, std::size_t count, const Op& op) {
    detail::forEachPixel(detail::PixelView<Pixel>{pixels, count, 1, 0}, op);
}

/// An image that all contenders convert in place, alternating between there and back so that its values do
/// not drift.
struct Scaling {
    Scaling(Resolution resolution, int channels, Lane lane)
        : input(pixelsOf(resolution, channels, INVALID_SHARE, lane)), mat(resolution, floatType(channels)) {}

    float* data() const { return mat.getPtr<float>(); }
    void reset() {
        std::copy(input.begin(), input.end(), data());
        metric = false;
    }
    UNIT unit() const { return metric ? UNIT::METER : UNIT::MILLIMETER; }
    UNIT other() const { return metric ? UNIT::MILLIMETER : UNIT::METER; }
    float nextFactor() {
        const float factor = getUnitScale(unit(), other());
        metric = !metric;
        return factor;
    }
    std::string check() const {
        std::vector<float> expected = input;
        const float factor = getUnitScale(UNIT::MILLIMETER, UNIT::METER);
        std::for_each(expected.begin(), expected.end(), [=](float& value) { value *= factor; });
        return bench::differences(data(), expected.data(), expected.size(), ROUNDING);
    }

    std::vector<float> input;
    Mat mat;
    bool metric = false;
};

void scale(Session& session, const std::string& name, Resolution resolution, int channels, Lane lane) {
    Scaling scaling(resolution, channels, lane);
    // Memory traffic bounds the loop for all values, so the limit uses ordinary ones.
    Scaling ordinary(resolution, channels, Lane::NORMAL);
    Scaling& limiting = lane == Lane::NORMAL ? scaling : ordinary;
    const std::size_t count = scaling.input.size();
    cv::Mat matrix(static_cast<int>(resolution.height), static_cast<int>(resolution.width), CV_32FC(channels),
                   scaling.data());

    Comparison comparison(name + '/' + sizeText(resolution) + VELA_BENCH_VARIANT);
    comparison
        .before([&] {
            scaling.reset();
            limiting.reset();
        })
        .check([&] { return scaling.check(); });
    comparison
        .ours([&] {
            const UNIT from = scaling.unit();
            const UNIT to = scaling.other();
            convertUnit(scaling.mat, from, to, MEM::CPU);
            scaling.metric = !scaling.metric;
        })
        .peer("OpenCV", [&] { matrix.convertTo(matrix, -1, static_cast<double>(scaling.nextFactor())); })
        .peer("Eigen",
              [&] {
                  Eigen::Map<Eigen::ArrayXf> values(scaling.data(), static_cast<Eigen::Index>(count));
                  values *= scaling.nextFactor();
              })
        .peer("portable loop",
              [&] { applyPortably(scaling.data(), count, detail::ScaleAll{scaling.nextFactor()}); });
    bench::addTrafficLimits(
        comparison,
        [&](bench::MultiplyAll multiply) { multiply(limiting.data(), count, limiting.nextFactor()); },
        [&] { return limiting.check(); });
    session.run(comparison);
}

/// Points that all contenders turn in place, alternating between there and back.
struct Turning {
    static constexpr COORDINATE_SYSTEM IMAGE = COORDINATE_SYSTEM::IMAGE;
    static constexpr COORDINATE_SYSTEM WORLD = COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;

    Turning(Resolution resolution, int channels_)
        : channels(channels_),
          input(pixelsOf(resolution, channels, 0, Lane::NORMAL)),
          mat(resolution, floatType(channels)) {}

    float* data() const { return mat.getPtr<float>(); }
    void reset() {
        std::copy(input.begin(), input.end(), data());
        turned = false;
    }
    Matrix4f nextMatrix() {
        turned = !turned;
        return turned ? getCoordinateTransformConversion4f(IMAGE, WORLD)
                      : getCoordinateTransformConversion4f(WORLD, IMAGE);
    }
    std::vector<float> expected() const {
        const Matrix4f matrix = getCoordinateTransformConversion4f(IMAGE, WORLD);
        std::vector<float> points = input;
        for (std::size_t i = 0; i < points.size(); i += static_cast<std::size_t>(channels)) {
            for (int row = 0; row < 3; ++row) {
                double sum = 0;
                for (int column = 0; column < 3; ++column) {
                    sum += static_cast<double>(matrix(row, column)) *
                           static_cast<double>(input[i + static_cast<std::size_t>(column)]);
                }
                points[i + static_cast<std::size_t>(row)] = static_cast<float>(sum);
            }
        }
        return points;
    }
    std::string check(const float* points) const {
        const std::vector<float> wanted = expected();
        return bench::differences(points, wanted.data(), wanted.size(), ROUNDING);
    }

    int channels;
    std::vector<float> input;
    Mat mat;
    cv::Mat transformed;
    bool turned = false;
};

/// The contenders for both three and four floats.
void addCommon(Comparison& comparison, Turning& turning, cv::Mat& matrix) {
    const int channels = turning.channels;
    comparison.before([&] { turning.reset(); }).check([&] { return turning.check(turning.data()); });
    comparison
        .ours([&] {
            const bool turned = turning.turned;
            convertCoordinateSystem(turning.mat, turned ? Turning::WORLD : Turning::IMAGE,
                                    turned ? Turning::IMAGE : Turning::WORLD, MEM::CPU);
            turning.turned = !turned;
        })
        // In place it is much slower, so nobody would use it like that.
        .peer(
            "OpenCV, into another image",
            [&, channels] {
                Matrix4f full = turning.nextMatrix();
                const cv::Mat four(4, 4, CV_32FC1, full.m);
                cv::transform(matrix, turning.transformed, four(cv::Rect(0, 0, channels, channels)));
            },
            [&] { return turning.check(turning.transformed.ptr<float>()); });
    bench::addTrafficLimits(
        comparison,
        [&](bench::MultiplyAll multiply) { multiply(turning.data(), turning.input.size(), -1.0F); },
        bench::nothingToCheck);
}

template <int CHANNELS>
void turnByEigen(Turning& turning) {
    using Full = Eigen::Matrix<float, 4, 4, Eigen::RowMajor>;
    const Matrix4f full = turning.nextMatrix();
    const Eigen::Matrix<float, CHANNELS, CHANNELS> matrix =
        Eigen::Map<const Full>(full.m).topLeftCorner<CHANNELS, CHANNELS>();
    const auto count = static_cast<Eigen::Index>(turning.input.size() / CHANNELS);
    Eigen::Map<Eigen::Matrix<float, CHANNELS, Eigen::Dynamic>> points(turning.data(), CHANNELS, count);
    for (Eigen::Index i = 0; i < count; ++i) {
        points.col(i) = matrix * points.col(i);
    }
}

void turnThree(Session& session, Resolution resolution) {
    Turning turning(resolution, 3);
    cv::Mat matrix(static_cast<int>(resolution.height), static_cast<int>(resolution.width), CV_32FC3,
                   turning.data());
    Comparison comparison("axes/32F_C3/" + sizeText(resolution) + VELA_BENCH_VARIANT);
    addCommon(comparison, turning, matrix);
    comparison.peer("Eigen", [&] { turnByEigen<3>(turning); }).peer("portable loop", [&] {
        const Matrix4f full = turning.nextMatrix();
        const float(&m)[16] = full.m;
        applyPortably(reinterpret_cast<Vector3<float>*>(turning.data()), turning.input.size() / 3,
                      detail::ApplyMatrix3{{m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]}});
    });
    session.run(comparison);
}

void turnFour(Session& session, Resolution resolution) {
    Turning turning(resolution, 4);
    cv::Mat matrix(static_cast<int>(resolution.height), static_cast<int>(resolution.width), CV_32FC4,
                   turning.data());
    Comparison comparison("axes/32F_C4/" + sizeText(resolution) + VELA_BENCH_VARIANT);
    addCommon(comparison, turning, matrix);
    comparison.peer("Eigen", [&] { turnByEigen<4>(turning); }).peer("portable loop", [&] {
        detail::ApplyMatrix4 op{};
        std::copy_n(turning.nextMatrix().m, std::size(op.k), op.k);
        applyPortably(reinterpret_cast<Vector4<float>*>(turning.data()), turning.input.size() / 4, op);
    });
#if defined(VELA_BENCH_PCL)
    // PCL's points are four floats as well; it writes 1 into the fourth.
    pcl::PointCloud<pcl::PointXYZ> cloud(static_cast<std::uint32_t>(resolution.width),
                                         static_cast<std::uint32_t>(resolution.height));
    const auto checkCloud = [&] {
        std::vector<float> points(turning.input);
        for (std::size_t i = 0; i < cloud.size(); ++i) {
            std::copy_n(cloud[i].data, 3, &points[4 * i]);
        }
        return turning.check(points.data());
    };
    comparison.before([&] {
        turning.reset();
        for (std::size_t i = 0; i < cloud.size(); ++i) {
            std::copy_n(&turning.input[4 * i], 3, cloud[i].data);
        }
    });
    comparison.peer(
        "PCL",
        [&] {
            const Matrix4f full = turning.nextMatrix();
            const Eigen::Matrix4f matrix4 =
                Eigen::Map<const Eigen::Matrix<float, 4, 4, Eigen::RowMajor>>(full.m);
            pcl::transformPointCloud(cloud, cloud, matrix4);
        },
        checkCloud);
#endif
    session.run(comparison);
}

void runAll(Session& session) {
    cv::setNumThreads(1);
    for (const Resolution resolution : {HD, UHD}) {
        scale(session, "unit/32F_C1", resolution, 1, Lane::NORMAL);
        scale(session, "unit/32F_C3", resolution, 3, Lane::NORMAL);
        scale(session, "unit/32F_C4", resolution, 4, Lane::NORMAL);
        turnThree(session, resolution);
        turnFour(session, resolution);
    }
    scale(session, "unit/32F_C4_alpha0", HD, 4, Lane::TRANSPARENT);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {}, runAll);
}
