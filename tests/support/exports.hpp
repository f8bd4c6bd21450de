// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/cloud.hpp"
#include "vela_core/utils/depth_export.hpp"

#include <functional>
#include <string>
#include <vector>

namespace vela::test {

/// A file that the library makes, and the bytes that it should have.
struct Export {
    std::string extension;
    std::function<bool(const std::string& path)> run;
    std::string whole;
};

/// Exports of a cloud, indexed by format, and one of as many rows of four depths.
class Exports {
public:
    explicit Exports(unsigned count)
        : cloud_(points(count)),
          floats_(count * std::size_t{4}),
          depth_(4, count, MAT_TYPE::MAT_32F_C1, reinterpret_cast<unsigned char*>(floats_.data()), 16,
                 MEM::CPU) {
        const char* const extensions[] = {".xyz", ".pcd", ".ply", ".vtk"};
        for (const POINT_CLOUD_FORMAT format : {XYZ, PCD, PLY, VTK}) {
            list.push_back(
                {extensions[format],
                 [=](const std::string& path) { return savePointCloudAs(cloud_.mat, format, path, true); },
                 wholeFile(cloud_.points, format, true)});
        }
        for (std::size_t i = 0; i < floats_.size(); ++i) {
            floats_[i] = static_cast<float>(i);
        }
        const std::string bytes(reinterpret_cast<const char*>(floats_.data()),
                                floats_.size() * sizeof(float));
        list.push_back({".pfm", [=](const std::string& path) { return saveDepthAs(depth_, PFM, path, 1); },
                        "Pf\n4 " + std::to_string(count) + "\n-1.000000\n" + bytes});
    }
    Exports(Exports&&) = delete;

    std::vector<Export> list;

private:
    /// A fifth of them must be left out of the files.
    static std::vector<Point3> points(unsigned count) {
        std::vector<Point3> points;
        for (unsigned i = 0; i < count; ++i) {
            const auto value = static_cast<float>(i);
            points.push_back({i % 5 == 0 ? NAN : value, -value / 8, 1e3F * value, rgb(i % 256, 255, 7)});
        }
        return points;
    }

    Cloud cloud_;
    std::vector<float> floats_;
    Mat depth_;
};

}  // namespace vela::test
