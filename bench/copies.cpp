// SPDX-License-Identifier: Apache-2.0
// Stores and copies of whole images in host memory: fill, copy, clone.
#include "support/Session.hpp"
#include "support/scene.hpp"

#include <vela_core/vela.hpp>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::COLUMNS;
using bench::Comparison;
using bench::HD;
using bench::ROWS;
using bench::Session;

using Bytes = std::vector<unsigned char>;

std::string differences(const unsigned char* actual, const Bytes& expected) {
    const auto found = std::mismatch(expected.begin(), expected.end(), actual).first;
    if (found == expected.end()) return {};
    return "byte " + std::to_string(found - expected.begin()) + " is wrong";
}

template <class Pixel>
void fill(Session& session, const std::string& typeName, MAT_TYPE type, int cvType, Pixel value,
          const cv::Scalar& scalar) {
    Mat mat(HD, type);
    const std::size_t count = HD.width * HD.height;
    const std::size_t bytes = count * sizeof(Pixel);
    unsigned char* const data = mat.ptrCPU;
    cv::Mat matrix(ROWS, COLUMNS, cvType, data);
    Bytes expected(bytes);
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(&expected[i * sizeof(Pixel)], &value, sizeof(Pixel));
    }

    Comparison comparison("fill/" + typeName);
    comparison.before([=] { std::memset(data, 0, bytes); })
        .check([&] { return differences(data, expected); })
        .ours([&] { mat.setTo(value, MEM::CPU); })
        .peer("OpenCV", [&] { matrix.setTo(scalar); })
        .peer("std::fill",
              [&] {
                  auto* const pixels = mat.getPtr<Pixel>();
                  std::fill(pixels, pixels + count, value);
              })
        .limit(
            "memset", [=] { std::memset(data, 0x5a, bytes); }, bench::nothingToCheck);
    session.run(comparison);
}

void fillAll(Session& session) {
    using U8 = unsigned char;
    fill<float>(session, "32F_C1", MAT_TYPE::MAT_32F_C1, CV_32FC1, 1.5F, {1.5});
    fill<Vector2<float>>(session, "32F_C2", MAT_TYPE::MAT_32F_C2, CV_32FC2, {1, 2}, {1, 2});
    fill<Vector3<float>>(session, "32F_C3", MAT_TYPE::MAT_32F_C3, CV_32FC3, {1, 2, 3}, {1, 2, 3});
    fill<Vector4<float>>(session, "32F_C4", MAT_TYPE::MAT_32F_C4, CV_32FC4, {1, 2, 3, 4}, {1, 2, 3, 4});
    fill<U8>(session, "8U_C1", MAT_TYPE::MAT_8U_C1, CV_8UC1, 7, {7});
    fill<Vector2<U8>>(session, "8U_C2", MAT_TYPE::MAT_8U_C2, CV_8UC2, {1, 2}, {1, 2});
    fill<Vector3<U8>>(session, "8U_C3", MAT_TYPE::MAT_8U_C3, CV_8UC3, {1, 2, 3}, {1, 2, 3});
    fill<Vector4<U8>>(session, "8U_C4", MAT_TYPE::MAT_8U_C4, CV_8UC4, {1, 2, 3, 4}, {1, 2, 3, 4});
    fill<unsigned short>(session, "US16_C1", MAT_TYPE::MAT_US16_C1, CV_16UC1, 0x1234, {0x1234});
    fill<Vector4<char>>(session, "8S_C4", MAT_TYPE::MAT_8S_C4, CV_8SC4, {1, -2, 3, -4}, {1, -2, 3, -4});
}

/// The bytes of an image; each differs from its neighbours.
Bytes makeBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 31 + i / 251);
    }
    return bytes;
}

void copyPacked(Session& session, const std::string& typeName, MAT_TYPE type, int cvType) {
    Mat source(HD, type);
    Mat destination(HD, type);
    const Bytes content = makeBytes(HD.width * HD.height * source.pixelBytes);
    std::copy(content.begin(), content.end(), source.ptrCPU);
    const cv::Mat from(ROWS, COLUMNS, cvType, source.ptrCPU);
    cv::Mat to(ROWS, COLUMNS, cvType, destination.ptrCPU);

    const auto compare = [&](const std::string& name, auto copy) {
        Comparison comparison(name + '/' + typeName);
        comparison.before([&] { std::memset(destination.ptrCPU, 0, content.size()); })
            .check([&] { return differences(destination.ptrCPU, content); })
            .ours(copy)
            .peer("OpenCV", [&] { from.copyTo(to); })
            .limit("memcpy", [&] { std::memcpy(destination.ptrCPU, source.ptrCPU, content.size()); });
        session.run(comparison);
    };
    compare("copyTo", [&] { source.copyTo(destination, COPY_TYPE::CPU_CPU); });
    compare("setFrom", [&] { destination.setFrom(source, COPY_TYPE::CPU_CPU); });
}

/// From rows with a gap after each to packed rows.
void copyWithGaps(Session& session) {
    constexpr std::size_t GAP = 256;
    constexpr std::size_t ROW_BYTES = HD.width * sizeof(Vector4<float>);
    constexpr std::size_t STEP = ROW_BYTES + GAP;
    Bytes buffer = makeBytes(STEP * HD.height);
    Bytes content;
    for (std::size_t y = 0; y < HD.height; ++y) {
        const unsigned char* const row = &buffer[y * STEP];
        content.insert(content.end(), row, row + ROW_BYTES);
    }
    const Mat source(HD, MAT_TYPE::MAT_32F_C4, buffer.data(), STEP, MEM::CPU);
    Mat destination(HD, MAT_TYPE::MAT_32F_C4);
    const cv::Mat from(ROWS, COLUMNS, CV_32FC4, buffer.data(), STEP);
    cv::Mat to(ROWS, COLUMNS, CV_32FC4, destination.ptrCPU);

    Comparison comparison("copyTo/32F_C4_gaps");
    comparison.before([&] { std::memset(destination.ptrCPU, 0, content.size()); })
        .check([&] { return differences(destination.ptrCPU, content); })
        .ours([&] { source.copyTo(destination, COPY_TYPE::CPU_CPU); })
        .peer("OpenCV", [&] { from.copyTo(to); })
        .limit("memcpy by rows", [&] {
            for (std::size_t y = 0; y < HD.height; ++y) {
                std::memcpy(destination.ptrCPU + y * ROW_BYTES, &buffer[y * STEP], ROW_BYTES);
            }
        });
    session.run(comparison);
}

/// A copy into a new buffer; the old one is released first.
void clone(Session& session) {
    Mat source(HD, MAT_TYPE::MAT_32F_C4);
    const Bytes content = makeBytes(HD.width * HD.height * source.pixelBytes);
    std::copy(content.begin(), content.end(), source.ptrCPU);
    const cv::Mat from(ROWS, COLUMNS, CV_32FC4, source.ptrCPU);
    Mat ours;
    cv::Mat theirs;
    std::unique_ptr<unsigned char[]> bare;

    Comparison comparison("clone/32F_C4");
    comparison.ours([&] { ours.clone(source); }, [&] { return differences(ours.ptrCPU, content); })
        .peer(
            "OpenCV",
            [&] {
                theirs.release();
                theirs = from.clone();
            },
            [&] { return differences(theirs.data, content); })
        .limit(
            "new and memcpy",
            [&] {
                bare.reset();
                bare.reset(new unsigned char[content.size()]);
                std::memcpy(bare.get(), source.ptrCPU, content.size());
            },
            [&] { return differences(bare.get(), content); });
    session.run(comparison);
}

void runAll(Session& session) {
    cv::setNumThreads(1);
    fillAll(session);
    copyPacked(session, "32F_C4", MAT_TYPE::MAT_32F_C4, CV_32FC4);
    copyPacked(session, "8U_C3", MAT_TYPE::MAT_8U_C3, CV_8UC3);
    copyWithGaps(session);
    clone(session);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {}, runAll);
}
