// SPDX-License-Identifier: Apache-2.0
#include "vela_interop/dlpack.hpp"
#include "vela_interop/view.hpp"

#if __has_include(<dlpack/dlpack.h>)
#include <dlpack/dlpack.h>
#endif
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vela::interop {
namespace {

constexpr auto MOVE = [](auto&& mat) -> decltype(moveToDlpack(std::forward<decltype(mat)>(mat))) {
    return {};
};
static_assert(std::is_invocable_v<decltype(MOVE), Mat> && !std::is_invocable_v<decltype(MOVE), Mat&>);

// The offsets of the binary interface on 64-bit machines.
static_assert(sizeof(dl::Tensor) == 48 && offsetof(dl::Tensor, strides) == 32);
static_assert(sizeof(dl::ManagedTensorVersioned) == 80 &&
              offsetof(dl::ManagedTensorVersioned, dl_tensor) == 32);
#ifdef DLPACK_VERSION
static_assert(sizeof(DLTensor) == sizeof(dl::Tensor));
static_assert(offsetof(DLTensor, strides) == offsetof(dl::Tensor, strides));
static_assert(offsetof(DLTensor, dtype) == offsetof(dl::Tensor, dtype));
static_assert(offsetof(DLTensor, byte_offset) == offsetof(dl::Tensor, byte_offset));
static_assert(int{kDLCUDAManaged} == dl::CUDA_MANAGED && int{kDLFloat} == dl::FLOAT &&
              int{kDLInt} == dl::INT);
#endif
#ifdef DLPACK_MAJOR_VERSION
static_assert(sizeof(DLManagedTensorVersioned) == sizeof(dl::ManagedTensorVersioned));
static_assert(offsetof(DLManagedTensorVersioned, deleter) == offsetof(dl::ManagedTensorVersioned, deleter));
static_assert(offsetof(DLManagedTensorVersioned, dl_tensor) ==
              offsetof(dl::ManagedTensorVersioned, dl_tensor));
#endif

TEST(MoveToDlpack, DescribesEveryPixelTypeAndComesBack) {
    const struct {
        MAT_TYPE type;
        int code, bits;
        std::int64_t channels;
    } rows[] = {{MAT_TYPE::MAT_32F_C1, dl::FLOAT, 32, 1}, {MAT_TYPE::MAT_32F_C2, dl::FLOAT, 32, 2},
                {MAT_TYPE::MAT_32F_C3, dl::FLOAT, 32, 3}, {MAT_TYPE::MAT_32F_C4, dl::FLOAT, 32, 4},
                {MAT_TYPE::MAT_8U_C1, dl::UINT, 8, 1},    {MAT_TYPE::MAT_8U_C2, dl::UINT, 8, 2},
                {MAT_TYPE::MAT_8U_C3, dl::UINT, 8, 3},    {MAT_TYPE::MAT_8U_C4, dl::UINT, 8, 4},
                {MAT_TYPE::MAT_US16_C1, dl::UINT, 16, 1}, {MAT_TYPE::MAT_8S_C4, dl::INT, 8, 4}};
    using Sizes = std::vector<std::int64_t>;
    for (const auto& [type, code, bits, channels] : rows) {
        Mat mat(5, 3, type);
        const unsigned char* const buffer = mat.ptrCPU;
        DlpackTensor tensor = moveToDlpack(std::move(mat));
        ASSERT_TRUE(tensor);
        EXPECT_FALSE(mat.isInit);  // NOLINT(bugprone-use-after-move): left empty by contract
        const dl::Tensor& t = tensor->dl_tensor;
        EXPECT_EQ(tensor->version.major, 1U);
        EXPECT_EQ(tensor->flags, 0U);
        EXPECT_EQ(t.data, buffer);
        EXPECT_EQ(t.device.device_type, dl::CPU);
        EXPECT_EQ(t.dtype.code, code);
        EXPECT_EQ(t.dtype.bits, bits);
        EXPECT_EQ(Sizes(t.shape, t.shape + t.ndim), channels == 1 ? Sizes({3, 5}) : Sizes({3, 5, channels}));
        EXPECT_EQ(Sizes(t.strides, t.strides + t.ndim),
                  channels == 1 ? Sizes({5, 1}) : Sizes({5 * channels, channels, 1}));
        const DlpackMat back = viewOfDlpack(std::move(tensor));
        EXPECT_EQ(back.mat.ptrCPU, buffer);
        EXPECT_EQ(back.mat.dataType, type);
    }
}

TEST(MoveToDlpack, RefusesReferencesAndMissingSides) {
    Mat owner(4, 4, MAT_TYPE::MAT_8U_C1);
    Mat reference(owner);
    EXPECT_FALSE(moveToDlpack(std::move(reference)));
    EXPECT_TRUE(reference.isInit);  // NOLINT(bugprone-use-after-move): unchanged by contract
    EXPECT_FALSE(moveToDlpack(Mat(owner), MEM::GPU)) << "no such side";
    EXPECT_FALSE(moveToDlpack(Mat()));
#ifdef VELA_GPU_SOFTWARE
    for (const MEM mem : {MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
        Mat mat(4, 4, MAT_TYPE::MAT_32F_C1, mem);
        EXPECT_FALSE(moveToDlpack(std::move(mat), MEM::GPU)) << static_cast<int>(mem);
        EXPECT_TRUE(mat.isInit);  // NOLINT(bugprone-use-after-move): unchanged by contract
    }
    EXPECT_TRUE(moveToDlpack(Mat(4, 4, MAT_TYPE::MAT_32F_C1, MEM_BOTH))) << "its host side";
#endif
}

/// A tensor inside a larger array: three rows of two pixels of three floats.
class ForeignTensor : public testing::Test {
protected:
    DlpackTensor make() {
        tensor_ = {{1, 3},
                   this,
                   [](auto* t) { ++static_cast<ForeignTensor*>(t->manager_ctx)->returned_; },
                   0,
                   {values_.data(),
                    {dl::CPU, 0},
                    3,
                    {dl::FLOAT, 32, 1},
                    shape_.data(),
                    strides_.data(),
                    2 * sizeof(float)}};
        return DlpackTensor(&tensor_);
    }

    std::array<float, 64> values_{};
    std::array<std::int64_t, 3> shape_ = {3, 2, 3};
    std::array<std::int64_t, 3> strides_ = {10, 3, 1};
    dl::ManagedTensorVersioned tensor_{};
    int returned_ = 0;
};

TEST_F(ForeignTensor, IsSharedAndHandedBackOnce) {
    {
        DlpackMat shared = viewOfDlpack(make());
        const auto view = hostView<Vector3<float>>(shared.mat);
        ASSERT_TRUE(view);
        EXPECT_EQ(view.width(), 2U);
        EXPECT_EQ(view.height(), 3U);
        view(1, 2).z = 4;
        EXPECT_EQ(values_[2 + 2 * 10 + 1 * 3 + 2], 4);
        EXPECT_EQ(returned_, 0);
    }
    EXPECT_EQ(returned_, 1);
}

TEST_F(ForeignTensor, NeedsStridesOnlyForLengthsAboveOne) {
    auto packed = make();
    packed->dl_tensor.strides = nullptr;
    EXPECT_EQ(viewOfDlpack(std::move(packed)).mat.stepBytesCPU, 24U);
    const std::size_t steps[] = {24, 12, 4};
    for (std::size_t i = 0; i < 3; ++i) {
        shape_[i] = 1;
        strides_[i] = -7;
        EXPECT_EQ(viewOfDlpack(make()).mat.stepBytesCPU, steps[i]);
    }
    auto flat = make();
    flat->dl_tensor.ndim = 2;
    EXPECT_EQ(viewOfDlpack(std::move(flat)).mat.dataType, MAT_TYPE::MAT_32F_C1);
    EXPECT_EQ(returned_, 5);
}

TEST_F(ForeignTensor, IsHandedBackIfNoMatCanHoldIt) {
    using Change = void (*)(dl::ManagedTensorVersioned&);
    const std::pair<const char*, Change> changes[] = {
        {"major version", [](auto& t) { t.version.major = 2; }},
        {"read-only", [](auto& t) { t.flags = dl::READ_ONLY; }},
        {"device", [](auto& t) { t.dl_tensor.device.device_type = 10; }},
#ifdef VELA_GPU_SOFTWARE
        {"a GPU, without CUDA", [](auto& t) { t.dl_tensor.device.device_type = dl::CUDA; }},
#endif
        {"one dimension", [](auto& t) { t.dl_tensor.ndim = 1; }},
        {"four dimensions", [](auto& t) { t.dl_tensor.ndim = 4; }},
        {"doubles", [](auto& t) { t.dl_tensor.dtype.bits = 64; }},
        {"vectors", [](auto& t) { t.dl_tensor.dtype.lanes = 2; }},
        {"integers", [](auto& t) { t.dl_tensor.dtype.code = dl::INT; }},
        {"no data", [](auto& t) { t.dl_tensor.data = nullptr; }},
        {"no rows", [](auto& t) { t.dl_tensor.shape[0] = 0; }},
        {"negative width", [](auto& t) { t.dl_tensor.shape[1] = -2; }},
        {"huge", [](auto& t) { t.dl_tensor.shape[1] = std::int64_t{1} << 40; }},
        {"five channels", [](auto& t) { t.dl_tensor.shape[2] = 5; }},
        {"planes", [](auto& t) { t.dl_tensor.strides[2] = 6; }},
        {"gaps between pixels", [](auto& t) { t.dl_tensor.strides[1] = 4; }},
        {"upside down", [](auto& t) { t.dl_tensor.strides[0] = -10; }},
        {"rows that overlap", [](auto& t) { t.dl_tensor.strides[0] = 5; }}};
    int expected = 0;
    for (const auto& [name, change] : changes) {
        shape_ = {3, 2, 3};
        strides_ = {10, 3, 1};
        DlpackTensor tensor = make();
        change(*tensor);
        const DlpackMat shared = viewOfDlpack(std::move(tensor));
        EXPECT_FALSE(shared.mat.isInit || shared.tensor) << name;
        EXPECT_EQ(returned_, ++expected) << name;
    }
    EXPECT_FALSE(viewOfDlpack(nullptr).tensor);
}

}  // namespace
}  // namespace vela::interop
