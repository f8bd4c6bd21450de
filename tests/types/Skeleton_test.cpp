// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/Skeleton.hpp"

#include "support/ScratchFolder.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

#include <sstream>

namespace vela::test {
namespace {

using detail::toValue;

std::string bones() {
    std::ostringstream text;
    for (const auto& [first, second] : BODY_BONES) {
        text << toValue(first) << " " << toValue(second) << "\n";
    }
    text << "\n";
    for (const auto& [first, second] : BODY_BONES_POSE_34) {
        text << toValue(first) << " " << toValue(second) << "\n";
    }
    return text.str();
}

const std::string BONES_AT_THE_START = bones();  // as one of a program's own globals finds them

TEST(Skeleton, Bones) {
    const std::string wanted = contentOf(VELA_TEST_FOLDER "/types/bones.txt");
    EXPECT_EQ(bones(), wanted);
    EXPECT_EQ(BONES_AT_THE_START, wanted);
}

}  // namespace
}  // namespace vela::test
