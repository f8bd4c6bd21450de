// SPDX-License-Identifier: Apache-2.0
// A series of large pictures: into new memory each time, or into a Mat that is kept.
#include "support/Session.hpp"

#include <vela_core/vela.hpp>

#include <opencv2/core.hpp>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using namespace vela;
using bench::Comparison;
using bench::Session;

/// Above 32 MiB, where the C library gets new pages for each buffer and returns them on release.
constexpr Resolution FRAME = {1920, 1200};
constexpr std::size_t BYTES = FRAME.width * FRAME.height * sizeof(Vector4<float>);

/// Rows name the C library's tunables that they were measured with.
std::string nameOf(const std::string& what) {
    const char* const tunables = std::getenv("GLIBC_TUNABLES");
    return "frame 1920x1200, " + what + (tunables == nullptr ? "" : ", " + std::string(tunables));
}

std::string difference(const void* actual, const Mat& expected) {
    return std::memcmp(actual, expected.ptrCPU, BYTES) == 0 ? "" : "the copy differs";
}

void copyEach(Session& session, const Mat& frame) {
    Mat copy;
    cv::Mat theirs;
    const cv::Mat from(static_cast<int>(FRAME.height), static_cast<int>(FRAME.width), CV_32FC4, frame.ptrCPU);
    const std::unique_ptr<unsigned char[]> room(new unsigned char[BYTES]);
    Comparison fresh(nameOf("clone"));
    fresh.ours([&] { copy.clone(frame); }, [&] { return difference(copy.ptrCPU, frame); })
        .peer(
            "OpenCV",
            [&] {
                theirs.release();
                theirs = from.clone();
            },
            [&] { return difference(theirs.data, frame); })
        .limit(
            "memcpy into a kept buffer", [&] { std::memcpy(room.get(), frame.ptrCPU, BYTES); },
            [&] { return difference(room.get(), frame); });
    session.run(fresh);

    Comparison kept(nameOf("copyTo a kept Mat"));
    kept.ours([&] { frame.copyTo(copy); }, [&] { return difference(copy.ptrCPU, frame); })
        .peer(
            "OpenCV", [&] { from.copyTo(theirs); }, [&] { return difference(theirs.data, frame); })
        .limit(
            "memcpy into a kept buffer", [&] { std::memcpy(room.get(), frame.ptrCPU, BYTES); },
            [&] { return difference(room.get(), frame); });
    session.run(kept);
}

/// The memory of a new Mat costs time when it is first written.
void touchFresh(Session& session) {
    Mat expected(FRAME, MAT_TYPE::MAT_32F_C4);
    expected.setTo(Vector4<float>(1, 2, 3, 4));
    Mat last;
    cv::Mat theirs;
    Comparison comparison(nameOf("alloc and first fill"));
    comparison
        .ours(
            [&] {
                last.alloc(FRAME, MAT_TYPE::MAT_32F_C4);
                last.setTo(Vector4<float>(1, 2, 3, 4));
            },
            [&] { return difference(last.ptrCPU, expected); })
        .peer(
            "OpenCV",
            [&] {
                theirs.release();
                theirs = cv::Mat(static_cast<int>(FRAME.height), static_cast<int>(FRAME.width), CV_32FC4,
                                 cv::Scalar(1, 2, 3, 4));
            },
            [&] { return difference(theirs.data, expected); })
        .limit(
            "memset of a kept buffer", [&] { std::memset(expected.ptrCPU, 0x5a, BYTES); },
            bench::nothingToCheck);
    session.run(comparison);
}

void runAll(Session& session) {
    cv::setNumThreads(1);
    Mat frame(FRAME, MAT_TYPE::MAT_32F_C4);
    frame.setTo(Vector4<float>(1, 2, 3, 4));
    copyEach(session, frame);
    touchFresh(session);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {11, 0.02}, runAll);
}
