// SPDX-License-Identifier: Apache-2.0
#include "vela_interop/opencv.hpp"
#include "support/device.hpp"
#include "vela_interop/view.hpp"

#include <climits>
#include <utility>

namespace vela::interop {
namespace {

constexpr auto VIEW_AS = [](auto&& mat) -> decltype(viewAsCv(std::forward<decltype(mat)>(mat))) {
    return {};
};
constexpr auto MOVE_TO = [](auto&& mat) -> decltype(moveToCv(std::forward<decltype(mat)>(mat))) {
    return {};
};
constexpr auto VIEW_OF = [](auto&& mat) -> decltype(viewOfCv(std::forward<decltype(mat)>(mat))) {
    return {};
};
static_assert(std::is_invocable_v<decltype(VIEW_AS), Mat&> && !std::is_invocable_v<decltype(VIEW_AS), Mat> &&
              !std::is_invocable_v<decltype(VIEW_AS), const Mat&>);
static_assert(std::is_invocable_v<decltype(MOVE_TO), Mat> && !std::is_invocable_v<decltype(MOVE_TO), Mat&>);
static_assert(std::is_invocable_v<decltype(VIEW_OF), cv::Mat&> &&
              !std::is_invocable_v<decltype(VIEW_OF), cv::Mat>);

TEST(OpenCvTypes, MatchInBothDirections) {
    const std::pair<MAT_TYPE, std::string> names[] = {
        {MAT_TYPE::MAT_32F_C1, "CV_32FC1"},  {MAT_TYPE::MAT_32F_C2, "CV_32FC2"},
        {MAT_TYPE::MAT_32F_C3, "CV_32FC3"},  {MAT_TYPE::MAT_32F_C4, "CV_32FC4"},
        {MAT_TYPE::MAT_8U_C1, "CV_8UC1"},    {MAT_TYPE::MAT_8U_C2, "CV_8UC2"},
        {MAT_TYPE::MAT_8U_C3, "CV_8UC3"},    {MAT_TYPE::MAT_8U_C4, "CV_8UC4"},
        {MAT_TYPE::MAT_US16_C1, "CV_16UC1"}, {MAT_TYPE::MAT_8S_C4, "CV_8SC4"}};
    for (const auto& [type, name] : names) {
        ASSERT_TRUE(toCvType(type)) << name;
        EXPECT_EQ(cv::typeToString(*toCvType(type)), name);
        EXPECT_EQ(fromCvType(*toCvType(type)), type) << name;
    }
    for (const int value : {-1, 10})
        EXPECT_FALSE(toCvType(static_cast<MAT_TYPE>(value)));
    for (const int type : {CV_64FC1, CV_16SC1, CV_8UC(5)})
        EXPECT_FALSE(fromCvType(type));
}

TEST(ViewOfCv, SharesAPartOfAnImage) {
    cv::Mat image(20, 30, CV_32FC4, cv::Scalar(1, 2, 3, 4));
    cv::Mat part = image(cv::Rect(6, 4, 10, 5));
    Mat mat = viewOfCv(part);
    const auto view = hostView<Vector4<float>>(mat);
    ASSERT_TRUE(view);
    view(0, 0).x = 50;
    view(9, 4).w = 60;
    EXPECT_EQ(image.at<cv::Vec4f>(4, 6), cv::Vec4f(50, 2, 3, 4));
    EXPECT_EQ(image.at<cv::Vec4f>(8, 15), cv::Vec4f(1, 2, 3, 60));
    EXPECT_FALSE(mat.memoryOwner);

    const cv::Mat again = viewAsCv(mat);
    EXPECT_EQ(again.data, part.data);
    EXPECT_EQ(again.size(), part.size());
    EXPECT_EQ(again.step, part.step);
}

TEST(ViewOfCv, IsEmptyForUnsupportedImages) {
    const int sizes[] = {3, 3, 3};
    for (cv::Mat image : {cv::Mat(3, 3, CV_64F), cv::Mat(3, sizes, CV_32F), cv::Mat()}) {
        EXPECT_FALSE(viewOfCv(image).isInit) << image.dims << " " << image.type();
    }
}

TEST(ViewAsCv, IsEmptyForUnsupportedMats) {
    alignas(4) unsigned char bytes[32] = {};
    const auto wrapped = [&](std::size_t width, std::size_t height, int type, std::size_t step, MEM mem) {
        Mat mat(width, height, static_cast<MAT_TYPE>(type), bytes, step, mem);
        return viewAsCv(mat).empty();
    };
    EXPECT_FALSE(wrapped(2, 2, 0, 8, MEM::CPU));
    EXPECT_TRUE(wrapped(2, 2, 10, 8, MEM::CPU)) << "no such type";
    EXPECT_TRUE(wrapped(2, 2, 0, 9, MEM::CPU)) << "rows do not start on floats";
    EXPECT_TRUE(wrapped(2, 2, 0, 8, MEM::GPU));
    EXPECT_TRUE(wrapped(0, 2, 0, 8, MEM::CPU));
    EXPECT_TRUE(wrapped(1, std::size_t{INT_MAX} + 1, 4, 1, MEM::CPU));
    EXPECT_TRUE(wrapped(std::size_t{INT_MAX} + 1, 1, 4, std::size_t{INT_MAX} + 1, MEM::CPU));
    Mat empty;
    EXPECT_TRUE(viewAsCv(empty).empty());
}

TEST(MoveToCv, KeepsTheBufferUntilTheLastHeaderIsGone) {
    cv::Mat part;
    {
        Mat mat(64, 48, MAT_TYPE::MAT_8U_C3);
        mat.setTo(Vector3<unsigned char>(1, 2, 3));
        const unsigned char* const buffer = mat.ptrCPU;
        cv::Mat image = moveToCv(std::move(mat));
        EXPECT_EQ(image.data, buffer);
        EXPECT_FALSE(mat.isInit);  // NOLINT(bugprone-use-after-move): left empty by contract
        part = image(cv::Rect(10, 10, 5, 5));
        cv::UMat elsewhere = image.getUMat(cv::ACCESS_READ);
        EXPECT_EQ(elsewhere.size(), image.size());
    }
    EXPECT_EQ(part.at<cv::Vec3b>(4, 4), cv::Vec3b(1, 2, 3));
    part.create(100, 100, CV_64F);  // releases ours, takes OpenCV's
    part.at<double>(99, 99) = 1;
}

TEST(MoveToCv, LeavesAReferenceAlone) {
    Mat owner(4, 4, MAT_TYPE::MAT_8U_C1);
    Mat reference(owner);
    EXPECT_TRUE(moveToCv(std::move(reference)).empty());
    EXPECT_TRUE(reference.isInit);  // NOLINT(bugprone-use-after-move): unchanged by contract
    EXPECT_TRUE(moveToCv(Mat()).empty());
}

#ifdef VELA_GPU_SOFTWARE
TEST(MoveToCv, TakesTheDeviceSideAlong) {
    for (const MEM mem : {MEM_BOTH, MEM_MANAGED}) {
        Mat mat(8, 4, MAT_TYPE::MAT_32F_C1, mem);
        const std::size_t before = software_device::liveAllocations();
        cv::Mat image = moveToCv(std::move(mat));
        image.setTo(5);
        EXPECT_EQ(image.at<float>(3, 7), 5);
        EXPECT_EQ(software_device::liveAllocations(), before);
        image.release();
        EXPECT_EQ(software_device::liveAllocations(), before - 1);
    }
}
#endif

}  // namespace
}  // namespace vela::interop
