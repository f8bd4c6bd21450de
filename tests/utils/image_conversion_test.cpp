// SPDX-License-Identifier: Apache-2.0
#include "vela_core/utils/image_conversion.hpp"

#include "support/device.hpp"

namespace vela::test {
namespace {

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
        EXPECT_TRUE(sameBytes(load(destination.whole, MEM::GPU), wanted));
        Mat inPlace(width, 3, S4, source.part.ptrGPU, source.part.stepBytesGPU, MEM::GPU);
        Mat taller(width, 4, S4, MEM::GPU);
        Mat wider(width + 1, 3, S4, MEM::GPU);
        for (Mat* const other : {&taller, &wider, &inPlace}) {
            EXPECT_EQ(convertImage(source.part, *other), OK);
            EXPECT_TRUE(sameBytes(load(*other, MEM::GPU), converted));
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
