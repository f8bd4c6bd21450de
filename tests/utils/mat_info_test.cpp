// SPDX-License-Identifier: Apache-2.0
#include "support/device.hpp"
#include "vela_core/utils/image_conversion.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace vela::test {
namespace {

class MatInfoTest : public DeviceTest {};

TEST_F(MatInfoTest, NamesItselfOrGivesItsAddress) {
    Mat mat;
    EXPECT_EQ(mat.getInfos(), "n/a vela::Mat not initialised");
    for (const char* const none : {"", static_cast<const char*>(nullptr)}) {
        mat.name = none;
        char address[32];
        std::snprintf(address, sizeof address, "%02lX", reinterpret_cast<unsigned long>(&mat));
        EXPECT_EQ(mat.getInfos(), address + std::string(" vela::Mat not initialised"));
    }
}

TEST_F(MatInfoTest, DescribesTypesSidesAndOwnership) {
    const auto described = [](const std::string& element, const std::string& sides) {
        return "n/a Ts 0 vela::Mat of size [2,1], with " + element + "allocated on " + sides +
               " (memory owned).\n";
    };
    const char* const elements[] = {
        "0 channels of type ",       "1 channels of type float ", "2 channels of type float ",
        "3 channels of type float ", "4 channels of type float ", "1 channels of type uchar ",
        "2 channels of type uchar ", "3 channels of type uchar ", "4 channels of type uchar ",
        "1 channels of type short ", "4 channels of type char ",  "0 channels of type "};
    for (std::int32_t type = -1; type <= 10; ++type) {
        EXPECT_EQ(Mat(2, 1, fromValue<MAT_TYPE>(type)).getInfos(), described(elements[type + 1], "CPU"));
    }
    const char* const sides[] = {"", "CPU", "GPU", "both CPU and GPU", ""};
    for (std::int32_t side = 0; side <= 4; ++side) {
        EXPECT_EQ(Mat(2, 1, U4, fromValue<MEM>(side)).getInfos(), described(elements[8], sides[side]));
    }
    Mat owner(1280, 720, U4, MEM_BOTH);
    Mat reference(owner);
    reference.name = "left";
    reference.timestamp = ~0ULL;
    EXPECT_EQ(reference.getInfos(),
              "left Ts 18446744073709551615 vela::Mat of size [1280,720], with 4 channels of type uchar "
              "allocated on both CPU and GPU (reference only).\n");
}

/// The bits of the values minus 128, as signed bytes.
Bytes lessHalf(Bytes bytes) {
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(static_cast<std::int8_t>(byte - 128));
    }
    return bytes;
}

class ConvertImageTest : public DeviceTest {};

TEST_F(ConvertImageTest, Subtracts128FromEveryChannelInTheWindow) {
    for (const std::size_t width : {1U, 64U, 65U}) {
        Window source(width, 3, U4, 1, 1);
        Window destination(width, 3, S4, 0, 2);
        Bytes wanted = load(destination.whole, MEM::GPU);
        const Bytes converted = lessHalf(load(source.part, MEM::GPU));
        destination.put(converted, wanted);
        EXPECT_EQ(convertImage(source.part, destination.part), OK);
        EXPECT_EQ(load(destination.whole, MEM::GPU), wanted);
        Mat inPlace(width, 3, S4, source.part.ptrGPU, source.part.stepBytesGPU, MEM::GPU);
        Mat taller(width, 4, S4, MEM::GPU);
        Mat wider(width + 1, 3, S4, MEM::GPU);
        for (Mat* const other : {&taller, &wider, &inPlace}) {
            EXPECT_EQ(convertImage(source.part, *other), OK);
            EXPECT_EQ(load(*other, MEM::GPU), converted);
        }
    }
}

#ifdef VELA_GPU_SOFTWARE
TEST_F(ConvertImageTest, IsQueuedOnTheStream) {
    Mat source = filled(2, 2, U4, MEM_MANAGED, 1);
    Mat destination = filled(2, 2, S4, MEM_MANAGED, 2);
    const BusyStream stream;
    EXPECT_EQ(convertImage(source, destination, stream), OK);
    EXPECT_FALSE(stream.wasWaitedFor());
    EXPECT_EQ(Bytes(destination.ptrCPU, destination.ptrCPU + 16), pattern(16, 2));
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
    EXPECT_EQ(Bytes(destination.ptrCPU, destination.ptrCPU + 16), lessHalf(pattern(16, 1)));
}
#endif

}  // namespace
}  // namespace vela::test
