// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/Skeleton.hpp"

#include "support/ScratchFolder.hpp"
#include "vela_core/types/detail/enum_cast.hpp"

namespace vela::test {
namespace {

std::string bones() {
    std::string text;
    const auto add = [&](const auto& bones) {
        for (const auto& [first, second] : bones) {
            text += (&first == &bones[0].first ? "" : " ") + std::to_string(detail::toValue(first)) + "-" +
                    std::to_string(detail::toValue(second));
        }
        text += "\n";
    };
    add(BODY_BONES);
    add(BODY_BONES_POSE_34);
    return text;
}

const std::string BONES_AT_THE_START = bones();

TEST(Skeleton, BonesAreListedBeforeTheProgramsGlobals) {
    EXPECT_EQ(BONES_AT_THE_START, contentOf(VELA_TEST_FOLDER "/types/bones.txt"));
}

}  // namespace
}  // namespace vela::test
