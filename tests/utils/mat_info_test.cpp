#include "support/device.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_core/types/enum_cast.hpp"
#include "vela_core/utils/image_conversion.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace vela::test {
namespace {

constexpr auto U4 = MAT_TYPE::MAT_8U_C4;
constexpr auto S4 = MAT_TYPE::MAT_8S_C4;

class MatInfoTest : public DeviceTest {};

TEST_F(MatInfoTest, NamesItselfOrGivesItsAddress) {
    Mat mat;
    EXPECT_EQ(mat.getInfos(), "n/a vela::Mat not initialised");
    mat.name = "left";
    EXPECT_EQ(mat.getInfos(), "left vela::Mat not initialised");
    for (const char* const none : {"", static_cast<const char*>(nullptr)}) {
        mat.name = none;
        char address[32];
        std::snprintf(address, sizeof address, "%02lX", reinterpret_cast<unsigned long>(&mat));
        EXPECT_EQ(mat.getInfos(), address + std::string(" vela::Mat not initialised"));
    }
}

TEST_F(MatInfoTest, DescribesTypesSidesAndOwnership) {
    Mat mat(1280, 720, U4, MEM_BOTH);
    mat.name = "A";
    EXPECT_EQ(
        mat.getInfos(),
        "A Ts 0 vela::Mat of size [1280,720], with 4 channels of type uchar allocated on both CPU and GPU "
        "(memory owned).\n");
    Mat reference(mat);
    reference.name = "B";
    reference.timestamp = ~0ULL;
    EXPECT_EQ(reference.getInfos(),
              "B Ts 18446744073709551615 vela::Mat of size [1280,720], with 4 channels of type uchar "
              "allocated on both "
              "CPU and GPU (reference only).\n");
    const char* const elements[] = {
        "1 channels of type float ", "2 channels of type float ", "3 channels of type float ",
        "4 channels of type float ", "1 channels of type uchar ", "2 channels of type uchar ",
        "3 channels of type uchar ", "4 channels of type uchar ", "1 channels of type short ",
        "4 channels of type char ",  "0 channels of type "};
    for (std::int32_t type = -1; type <= 10; ++type) {
        const Mat typed(2, 1, fromValue<MAT_TYPE>(type));
        const char* const element = elements[type < 0 ? 10 : type];
        EXPECT_EQ(typed.getInfos(), std::string("n/a Ts 0 vela::Mat of size [2,1], with ") + element +
                                        "allocated on CPU (memory owned).\n");
    }
    const std::pair<MEM, const char*> sides[] = {
        {MEM::GPU, "GPU"}, {MEM_MANAGED, ""}, {fromValue<MEM>(0), ""}};
    for (const auto& [mem, text] : sides) {
        EXPECT_EQ(
            Mat(2, 1, U4, mem).getInfos(),
            std::string("n/a Ts 0 vela::Mat of size [2,1], with 4 channels of type uchar allocated on ") +
                text + " (memory owned).\n");
    }
}

class ConvertImageTest : public DeviceTest {
protected:
    static Bytes lessHalf(Bytes bytes) {
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(static_cast<std::int8_t>(byte - 128));
        }
        return bytes;
    }
};

TEST_F(ConvertImageTest, TakesHalfOfTheRangeFromEveryChannel) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    for (const std::size_t width : {1, 63, 64, 65, 130}) {
        for (const MEM mem : {MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
            Mat source = filled(width, 5, U4, mem);
            Mat destination;
            EXPECT_EQ(convertImage(source, destination, stream), ERROR_CODE::SUCCESS);
            EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
            EXPECT_EQ(destination.memType, MEM::GPU);
            EXPECT_EQ(destination.dataType, S4);
            EXPECT_EQ(load(destination, MEM::GPU), lessHalf(pattern(width * 20)));
        }
    }
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    Mat three(3, 1, U4, MEM::GPU);
    const unsigned char samples[12] = {0, 128, 255, 1, 127, 129, 0, 0, 0, 0, 0, 0};
    store(three, MEM::GPU, samples);
    Mat result;
    EXPECT_EQ(convertImage(three, result), ERROR_CODE::SUCCESS);
    Vector4<char> first;
    Vector4<char> second;
    result.getValue(0, 0, &first, MEM::GPU);
    result.getValue(1, 0, &second, MEM::GPU);
    const auto number = [](char c) { return static_cast<int>(static_cast<signed char>(c)); };
    EXPECT_TRUE(number(first.x) == -128 && number(first.y) == 0 && number(first.z) == 127 &&
                number(first.w) == -127);
    EXPECT_TRUE(number(second.x) == -1 && number(second.y) == 1);
}

TEST_F(ConvertImageTest, KeepsADestinationThatFits) {
    Mat source = filled(6, 4, U4, MEM::GPU);
    for (const MEM mem : {MEM::GPU, MEM_BOTH}) {
        Mat fits = filled(6, 4, S4, mem);
        unsigned char* const kept = fits.ptrGPU;
        EXPECT_EQ(convertImage(source, fits), ERROR_CODE::SUCCESS);
        EXPECT_TRUE(fits.ptrGPU == kept && fits.memType == mem);
        EXPECT_EQ(load(fits, MEM::GPU), lessHalf(pattern(96)));
    }
    Mat others[] = {Mat(), Mat(6, 4, S4, MEM::CPU), Mat(5, 4, S4, MEM_BOTH), Mat(6, 3, S4, MEM_BOTH),
                    Mat(6, 4, U4, MEM_BOTH)};
    for (Mat& destination : others) {
        EXPECT_EQ(convertImage(source, destination), ERROR_CODE::SUCCESS);
        EXPECT_TRUE(destination.memoryOwner && destination.memType == MEM::GPU && destination.dataType == S4);
        EXPECT_EQ(load(destination, MEM::GPU), lessHalf(pattern(96)));
    }
}

TEST_F(ConvertImageTest, RefusesOtherSources) {
    Mat destination = filled(2, 2, S4, MEM_BOTH);
    Mat sources[] = {Mat(), Mat(2, 2, U4, MEM::CPU), Mat(2, 2, MAT_TYPE::MAT_8U_C3, MEM::GPU),
                     Mat(2, 2, S4, MEM::GPU)};
    for (Mat& source : sources) {
        EXPECT_EQ(convertImage(source, destination), ERROR_CODE::FAILURE);
    }
    EXPECT_EQ(load(destination, MEM::GPU), pattern(16));
}

#ifdef VELA_GPU_SOFTWARE
TEST_F(ConvertImageTest, FailuresOfTheRuntimeDoNotChangeTheResult) {
    Mat source = filled(6, 4, U4, MEM::GPU);
    software_device::failCall("cudaLaunchKernel", 1, cudaErrorLaunchFailure);
    Mat destination;
    EXPECT_EQ(convertImage(source, destination), ERROR_CODE::SUCCESS);
    EXPECT_EQ(load(destination, MEM::GPU), Bytes(96, 0xCD)) << "untouched";
}
#endif

}  // namespace
}  // namespace vela::test
