// SPDX-License-Identifier: Apache-2.0
#include "support/device.hpp"

#include <cstdio>
#include <string>

namespace vela::test {
namespace {

class MatInfoTest : public DeviceTest {};

TEST_F(MatInfoTest, StartsWithTheNameOrTheAddress) {
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

}  // namespace
}  // namespace vela::test
