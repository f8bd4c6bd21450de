// SPDX-License-Identifier: Apache-2.0
#include "vela_interop/view.hpp"
#include "support/padded_mat.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace vela::interop {
namespace {

template <class T, class M, class = void>
constexpr bool VIEWABLE = false;
template <class T, class M>
constexpr bool VIEWABLE<T, M, std::void_t<decltype(hostView<T>(std::declval<M>()))>> = true;
static_assert(VIEWABLE<float, Mat&> && VIEWABLE<const float, Mat&> && VIEWABLE<const float, const Mat&>);
static_assert(!VIEWABLE<float, const Mat&>, "a const Mat gives no writable pixels");
static_assert(!VIEWABLE<float, Mat> && !VIEWABLE<const float, Mat> && !VIEWABLE<const float, const Mat>);
static_assert(std::is_trivially_copyable_v<ImageView<float>>);

TEST(HostView, SeesAPartOfAnImageByItsRowStep) {
    test::PaddedMat<Vector3<float>> whole(6, 4);
    Mat part = whole.part(1, 2, 3, 2);
    const auto view = hostView<Vector3<float>>(part);
    ASSERT_TRUE(view);
    EXPECT_FALSE(view.isPacked());
    Mat packed(2, 2, MAT_TYPE::MAT_32F_C1);
    EXPECT_TRUE(hostView<float>(packed).isPacked());
    EXPECT_EQ(view.end(0) - view.begin(0), 3);
    for (std::size_t y = 0; y < view.height(); ++y) {
        for (auto* pixel = view.begin(y); pixel != view.end(y); ++pixel)
            pixel->y = 7;
    }
    const Mat& constant = part;
    EXPECT_EQ(hostView<const Vector3<float>>(constant)(2, 1).y, 7);
    EXPECT_EQ(whole.count([](const Vector3<float>& p) { return p.y == 7; }), 6U);
    EXPECT_EQ(whole.at(1, 2).y, 7);
    EXPECT_EQ(whole.at(3, 3).y, 7);
}

TEST(HostView, IsEmptyForOtherTypesSidesAndAlignments) {
    alignas(4) unsigned char bytes[64] = {};
    const auto viewed = [](unsigned char* data, std::size_t height, std::size_t step, MEM mem) {
        Mat mat(2, height, MAT_TYPE::MAT_32F_C1, data, step, mem);
        EXPECT_FALSE(hostView<Vector4<unsigned char>>(mat)) << "the same size, but other pixels";
        return static_cast<bool>(hostView<float>(mat));
    };
    EXPECT_TRUE(viewed(bytes, 2, 8, MEM::CPU));
    EXPECT_FALSE(viewed(bytes + 1, 2, 8, MEM::CPU));
    EXPECT_FALSE(viewed(bytes, 2, 9, MEM::CPU));
    EXPECT_TRUE(viewed(bytes, 1, 9, MEM::CPU)) << "the step of one row means nothing";
    EXPECT_FALSE(viewed(bytes, 2, 8, MEM::GPU));
    Mat empty;
    EXPECT_FALSE(hostView<float>(empty));
}

}  // namespace
}  // namespace vela::interop
